#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Each situation: its one line on standard error, its exit status, its entry in the JSON document.

load nimba-smi.bash

# fails_with STATUS LINE COMMAND...: the command has this status and says this line, no more.
fails_with() {
    local expected_status=$1 line=$2
    shift 2
    run --separate-stderr "$@"
    [ "$status" = "$expected_status" ] || { echo "status $status: $stderr"; return 1; }
    same "$stderr" "nimba-smi: $line"
}

@test "1: output that cannot be written" {
    line="cannot write to standard output: No space left on device"
    fails_with 1 "$line" bash -c "nimba-smi --library $STUB list >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --library $STUB list --json >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --library $STUB version >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --library $STUB ps --csv >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --library $STUB alloc >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --library $STUB leaks --count 1 >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --help >/dev/full"
    fails_with 1 "$line" bash -c "nimba-smi --version >/dev/full"
}

@test "1: standard output is closed" {
    fails_with 1 "cannot write to standard output: Bad file descriptor" \
        bash -c "nimba-smi --library $STUB list >&-"
}

@test "closed standard input and standard error harm nothing" {
    run bash -c "nimba-smi --library $STUB --verbose list <&- 2>&-"
    [ "$status" = 0 ]
    [ "${#lines[@]}" = 2 ]
}

@test "1: a reader that is gone, with SIGPIPE ignored" {
    fails_with 1 "cannot write to standard output: Broken pipe" \
        bash -c "trap '' PIPE; exec 3> >(exec true); wait \$!; nimba-smi --library $STUB list >&3"
}

@test "SIGPIPE ends the tool quietly" {
    run --separate-stderr bash -c "exec 3> >(exec true); wait \$!
        exec env --default-signal=PIPE nimba-smi --library $STUB list --json >&3"
    [ "$status" = 141 ]
    same "$stderr" ""
}

@test "2: bad usage" {
    fails_with 2 'there is no command "lists"; see nimba-smi --help' nimba-smi lists
    fails_with 2 "list has no option --frobnicate; see nimba-smi list --help" \
        nimba-smi list --frobnicate
    fails_with 2 'list takes no "version"; see nimba-smi list --help' nimba-smi list version
    fails_with 2 "--library: expected a path; see nimba-smi --help" nimba-smi list --library ""
    fails_with 2 "--worker is for nimba-smi's own use; see nimba-smi --help" nimba-smi --worker
}

@test "2: a timeout that is no time" {
    for seconds in 0 -1 nan inf ten 1e9 0.0001; do
        fails_with 2 "--timeout: expected seconds from 0.001 to 86400, got \"$seconds\"; \
see nimba-smi --help" nimba-smi list "--timeout=$seconds"
    done
    fails_with 2 "--timeout: 1 required SECONDS missing; see nimba-smi --help" \
        nimba-smi list --timeout
}

@test "3: no adapter" {
    export NIMBA_STUB_ADAPTERS=0
    line="no Nimba or QV adapter found: check that the card is seated (lspci) and its driver is \
loaded (dmesg)"
    fails_with 3 "$line" smi list
    same "$output" ""
    fails_with 3 "$line" smi list --json
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.list.1","adapters":[],"foreign_gpu":null,'\
'"errors":[{"status":3,"adapter":null,"call":"gfx_find_adapter","message":"'"$line"'"}]}'
}

@test "3: no adapter, but a GPU of another vendor, which is listed" {
    NIMBA_STUB_ADAPTERS=0 NIMBA_STUB_FOREIGN=1 run --separate-stderr smi list
    [ "$status" = 3 ]
    same "$output" "\
SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER  LUID
-     Gpu2:Nvidia-GPU  0000:01:00.0  3     0x2684  -       0x0:0x10000"
}

@test "3: an adapter that went away after discovery" {
    export NIMBA_STUB_ADAPTERS=2 NIMBA_STUB_GONE=1
    fails_with 3 "adapter 0000:04:00.0 (Gpu1:QV M-30): gone since discovery; run the command \
again" smi list
    same "$output" "\
SLOT  NAME           BUS ID        CARD  DEVICE  DRIVER  LUID
0     Gpu0:Nimba-K1  0000:03:00.0  0     0x1001  va      0x0:0x30000"
}

@test "4: a library that is not there" {
    for command in list version ps alloc leaks; do
        fails_with 4 "cannot load the management library (/nonexistent.so: cannot open shared \
object file: No such file or directory): install it, or name it with --library" \
            nimba-smi "$command" --library /nonexistent.so
    done
}

@test "4: a file that is no library" {
    echo garbage >"$BATS_TEST_TMPDIR/no-library.so"
    run --separate-stderr nimba-smi list --json --library "$BATS_TEST_TMPDIR/no-library.so"
    [ "$status" = 4 ]
    same "$(jq -c '[.errors[] | [.status, .adapter, .call]]' <<<"$output")" '[[4,null,"dlopen"]]'
}

@test "4: version tells the tool's version when there is no library" {
    run --separate-stderr nimba-smi version --library /nonexistent.so
    [ "$status" = 4 ]
    same "$output" "nimba-smi  0.1.0"
    run --separate-stderr nimba-smi version --json --library /nonexistent.so
    same "$(jq -c '[.tool.version, .library, .interface]' <<<"$output")" '["0.1.0",null,null]'
}

@test "4: a library that lacks an entry point" {
    library=$NIMBA_STUBS/stub_without_discovery.so
    fails_with 4 "$(realpath "$library") lacks the entry point gfx_find_adapter: install the \
library that belongs to this nimba-smi" nimba-smi list --library "$library"
}

@test "4: a library of another major interface version" {
    export NIMBA_STUB_MATCH=100
    line="$(realpath "$STUB") has another major interface version: install the nimba-smi that \
belongs to it"
    fails_with 4 "$line" smi list
    same "$output" ""
    fails_with 4 "$line" smi version
    same "${lines[3]}" "handshake  100: the major versions differ"
}

@test "5: no libdrm" {
    export NIMBA_STUB_ADAPTERS=0 NIMBA_STUB_LIBDRM=0
    fails_with 5 "libdrm is missing or unusable, so no GPU can be found: install the package \
libdrm2" smi list
    run --separate-stderr smi list --json
    same "$(jq -c '[.errors[] | [.status, .adapter, .call]]' <<<"$output")" \
        '[[5,null,"gpuinfo_nimba_init"]]'
}

@test "without a reader of the result the status still tells" {
    NIMBA_STUB_ADAPTERS=0 run bash -c "nimba-smi --library $STUB list 2>/dev/full"
    [ "$status" = 3 ]
}
