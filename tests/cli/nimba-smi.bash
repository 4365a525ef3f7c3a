# SPDX-License-Identifier: MIT
# What the nimba-smi suites share. NIMBA_BIN and NIMBA_STUBS come from the build.

bats_require_minimum_version 1.5.0

: "${NIMBA_BIN:?the directory of the built programs}"
: "${NIMBA_STUBS:?the directory of the built stub libraries}"
PATH=$NIMBA_BIN:$PATH
STUB=$NIMBA_STUBS/stub_library.so

load live_drivers.bash

# nimba-smi on the library that misbehaves on demand, bounded in case it waits for ever.
smi() {
    timeout 60 nimba-smi --library "$STUB" "$@"
}

# on MACHINE COMMAND...: the command on that machine, bounded in case it waits for ever.
on() {
    local machine=$1
    shift
    timeout 60 nimba-sim run --machine "$machine" -- "$@"
}

# Compares byte by byte and shows the difference.
same() {
    diff <(printf '%s\n' "$1") <(printf '%s\n' "$2")
}

# A directory that processes of the stub library leave their numbers in.
make_pid_directory() {
    export NIMBA_STUB_PIDS=$BATS_TEST_TMPDIR/pids
    mkdir "$NIMBA_STUB_PIDS"
}

# Succeeds once the condition does; fails when it does not within 20 s.
within_bounds() {
    local end=$((SECONDS + 20))
    until "$@"; do
        ((SECONDS < end)) || return 1
        sleep 0.02
    done
}

pids_left() {
    local -a files=("$NIMBA_STUB_PIDS"/*)
    [ "${#files[@]}" = "$1" ] && [ -e "${files[0]}" ]
}

# All of the processes that left their number have ended. Those that outlived their parent may still
# wait to be noticed by whoever inherited them.
all_gone() {
    local file
    for file in "$NIMBA_STUB_PIDS"/*; do
        ended "${file##*/}" || return 1
    done
}

ended() {
    local state
    state=$(sed -n 's/^State:\t\(.\).*/\1/p' "/proc/$1/status" 2>/dev/null) || true
    [ -z "$state" ] || [ "$state" = Z ]
}
