# SPDX-License-Identifier: MIT
# What the nimba-sim suites share. NIMBA_BIN comes from the build.

bats_require_minimum_version 1.5.0

: "${NIMBA_BIN:?the directory of the built programs}"
PATH=$NIMBA_BIN:$PATH

load live_drivers.bash

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    mkfifo said never
    exec 9<>said # stays open, so that nothing said between two readings is lost
}

# Ends the background run of a test that failed.
teardown() {
    if [ -n "${sim-}" ]; then
        kill -s KILL "$sim" 2>/dev/null || true
    fi
}

# fails_with STATUS LINE COMMAND...: the command has this status and says this line, no more.
fails_with() {
    local expected_status=$1 line=$2
    shift 2
    run "-$expected_status" --separate-stderr "$@"
    [ "$status" = "$expected_status" ] || { echo "status $status: $stderr"; return 1; }
    [ "$stderr" = "$line" ] || { echo "said: $stderr"; return 1; }
    [ "$output" = "" ]
}

# gone PID: waits until the process is no more, 20 seconds at most.
gone() {
    local tries
    for ((tries = 0; tries < 400; ++tries)); do
        kill -0 "$1" 2>/dev/null || return 0
        sleep 0.05
    done
    echo "process $1 is still there"
    return 1
}

# start SCRIPT: runs the shell script on the default machine in the background. The script's own
# process says who it is before it begins, in a test bed that is there; a short script may be over,
# and its test bed gone, by the time that this is read. Sets sim, command and bed: the process ids of
# nimba-sim and of the command, and the directory of the test bed.
start() {
    nimba-sim run -- bash -c '[ -d "$UMOCKDEV_DIR" ] && echo $$ "$UMOCKDEV_DIR" >said; '"$1" \
        >output 2>errors &
    sim=$!
    read -r -t 20 command bed <&9
}

# The status that the background run ends with.
status_of_run() {
    status=0
    wait "$sim" || status=$?
}

# make_tree: an installation of nimba-sim without its libraries, in the directory tree.
make_tree() {
    mkdir -p tree/bin tree/share/nimba-sim/machines
    cp "$NIMBA_BIN/nimba-sim" tree/bin
}

# Runs the shell script with standard error in the output, where limits of files do not count.
with_messages() {
    run --separate-stderr bash -c "($1) 2>&1 | cat; exit \${PIPESTATUS[0]}"
}

no_run_directory_is_left() {
    # The message names it; other runs may be there at the same time.
    [[ "$output" =~ (/[a-z/]+/nimba-sim\.[A-Za-z0-9]{6})/ ]]
    [ ! -e "${BASH_REMATCH[1]}" ]
}

nothing_is_left() {
    gone "$command"
    [ ! -e "${bed%/*}" ]
    ! grep -F "${bed%/*}" /proc/self/mountinfo
}

# When nimba-sim itself was killed, others tidy up: 20 seconds at most.
nothing_is_left_soon() {
    local tries
    for ((tries = 0; tries < 400; ++tries)); do
        [ -e "${bed%/*}" ] || break
        sleep 0.05
    done
    nothing_is_left
}
