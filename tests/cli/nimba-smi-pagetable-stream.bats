#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# All entries of a large address space from nimba-smi pagetable. With SANITIZED=1 there are fewer of
# them, and memory is not held to a bound: a sanitizer has memory of its own.

load nimba-smi.bash

setup() {
    cd "$BATS_TEST_TMPDIR" || return
    if [ "${SANITIZED:-0}" = 1 ]; then
        entries=100000
    else
        entries=1000000
    fi
    sed "s/^entries = .*/entries = $entries/" \
        "$NIMBA_BIN/../share/nimba-sim/machines/million-pages.toml" >machine.toml
    grep -q "^entries = $entries$" machine.toml
}

# Runs in the simulated machine. All entries go through a pipe; in the middle of them, when the tool
# waits for its reader, it tells its peak of memory. Then, with a second argument, its worker is
# killed; the rest of the output goes to a file.
streaming() {
    mkfifo pipe
    nimba-smi pagetable --json >pipe 2>complaints &
    local tool=$!
    exec 7<pipe
    head -c "$1" <&7 >first
    sed -n 's/^VmHWM:[^0-9]*\([0-9]*\) kB/\1/p' "/proc/$tool/status" >peak
    if [ -n "${2-}" ]; then
        kill -s KILL "$(cat "/proc/$tool/task/$tool/children")"
    fi
    cat <&7 >rest
    wait "$tool"
}

# stream ARGUMENT...: the same there; 100 bytes of each entry come before the middle.
stream() {
    export -f streaming
    run timeout 100 nimba-sim run --machine ./machine.toml -- \
        bash -c 'streaming "$@"' bash "$((100 * entries))" "$@"
}

@test "a million entries pass through a bounded memory" {
    stream
    [ "$status" = 0 ] || { cat complaints; return 1; }
    (($(cat peak) > 1000))
    [ "${SANITIZED:-0}" = 1 ] || (($(cat peak) < 32768)) || { cat peak; return 1; }
    same "$(tail -n 3 rest)" "$(printf '  "allocations": [],\n  "errors": []\n}')"
    same "$(cat first rest | grep -c '"kind": "page"')" "$entries"
}

@test "a worker that is lost midway leaves a document without its end" {
    stream kill
    [ "$status" = 7 ] || { cat complaints; return 1; }
    [[ $(cat complaints) == "nimba-smi: page tables: worker lost in "*": killed by SIGKILL; "* ]]
    [[ $(tail -n 1 rest) != "}" ]]
}
