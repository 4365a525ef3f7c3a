#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-sim as a user types it: statuses, messages, signals, and what is left behind.
bats_require_minimum_version 1.5.0

load ordinary_user.bash

: "${NIMBA_BIN:?the directory of the built programs}"
PATH=$NIMBA_BIN:$PATH

teardown_file() {
    drop_ordinary_user_copy
}

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    mkfifo said never
    exec 9<>said # stays open, so that nothing said between two readings is lost
}

# Ends the background run of a test that failed.
teardown() {
    if [ -n "${sim-}" ] && kill -s KILL "$sim" 2>/dev/null; then
        rm -rf "$(dirname "${bed:?}")"
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
# process says who it is before it begins. Sets sim, command and bed: the process ids of nimba-sim and
# of the command, and the directory of the test bed.
start() {
    nimba-sim run -- bash -c 'echo $$ "$UMOCKDEV_DIR" >said; '"$1" >output 2>errors &
    sim=$!
    read -r -t 20 command bed <&9
    [ -d "$bed" ]
}

# The status that the background run ends with.
status_of_run() {
    status=0
    wait "$sim" || status=$?
}

nothing_is_left() {
    gone "$command"
    [ ! -e "$bed" ]
    [ ! -e "$(dirname "$bed")" ]
}

@test "the command's exit status is that of the run" {
    nimba-sim run -- true
    run nimba-sim run -- sh -c 'exit 7'
    [ "$status" = 7 ]
    run nimba-sim run -- sh -c 'exit 255'
    [ "$status" = 255 ]
}

@test "a command that a signal ended gives 128 plus the signal" {
    run nimba-sim run -- sh -c 'kill -TERM $$'
    [ "$status" = 143 ]
    run nimba-sim run -- sh -c 'kill -KILL $$'
    [ "$status" = 137 ]
}

@test "the command has the standard streams and its arguments as they are" {
    run --separate-stderr bash -c \
        "echo in | nimba-sim run -- sh -c 'cat; echo \"\$1|\$2\"; echo err >&2' sh 'two words' --machine"
    [ "$output" = "$(printf 'in\ntwo words|--machine')" ]
    [ "$stderr" = err ]
}

@test "127: a command that is not there" {
    fails_with 127 "nimba-sim: no-such-command: No such file or directory" \
        nimba-sim run -- no-such-command
    fails_with 127 "nimba-sim: ./absent: No such file or directory" nimba-sim run -- ./absent
}

@test "126: a command that cannot be executed" {
    touch data
    fails_with 126 "nimba-sim: ./data: Permission denied" nimba-sim run -- ./data
    fails_with 126 "nimba-sim: data: Permission denied" \
        env "PATH=$BATS_TEST_TMPDIR:$PATH" nimba-sim run -- data
}

@test "2: bad usage" {
    fails_with 2 "nimba-sim: A subcommand is required; see nimba-sim --help" nimba-sim
    fails_with 2 "nimba-sim: COMMAND is required; see nimba-sim --help" nimba-sim run
    fails_with 2 "nimba-sim: FILE is required; see nimba-sim --help" nimba-sim check
    fails_with 2 "nimba-sim: The following argument was not expected: --wrong; see nimba-sim --help" \
        nimba-sim machines --wrong
}

@test "3: a machine that there is not" {
    fails_with 3 \
        "nimba-sim: no machine is called 'nope'; \`nimba-sim machines\` lists those that there are" \
        nimba-sim run --machine nope -- touch ran
    [ ! -e ran ]
    fails_with 3 "nimba-sim: ./nope: cannot be read: No such file or directory" \
        nimba-sim run --machine ./nope -- touch ran
    [ ! -e ran ]
}

@test "3: a machine file that makes no sense" {
    printf 'description = "x"\n[[adapter]]\nchip = "qv-m20"\nbus_id = "1"\ncard = 0\n' >bad.toml
    message="bad.toml:4: key 'adapter[0].bus_id': expected \"dddd:bb:dd.f\", got \"1\""
    fails_with 3 "nimba-sim: $message" nimba-sim check bad.toml
    fails_with 3 "nimba-sim: $message" nimba-sim run --machine bad.toml -- touch ran
    [ ! -e ran ]
}

@test "4: an installation without its libraries" {
    mkdir -p tree/bin tree/share/nimba-sim/machines
    cp "$NIMBA_BIN/nimba-sim" tree/bin
    printf 'description = "x"\n[[kernel_interface]]\nfile = "libdrm_mv9.so.0.0.0"\n' >mine.toml
    missing="$(realpath tree)/libexec/nimba-sim/gfx_get_struct_size/libdrm_mv9.so.0.0.0"
    fails_with 4 "nimba-sim: $missing is missing: the installation is not complete" \
        tree/bin/nimba-sim run --machine mine.toml -- touch ran
    [ ! -e ran ]
}

@test "1: output that cannot be written" {
    line="nimba-sim: cannot write to standard output: No space left on device"
    fails_with 1 "$line" bash -c "nimba-sim machines >/dev/full"
    fails_with 1 "$line" bash -c "nimba-sim machines --json >/dev/full"
    fails_with 1 "$line" bash -c "nimba-sim check default >/dev/full"
    fails_with 1 "$line" bash -c "nimba-sim --help >/dev/full"
}

@test "check says what a good machine file is" {
    printf 'description = "Nothing at all"\n' >mine.toml
    run --separate-stderr nimba-sim check mine.toml
    [ "$status" = 0 ]
    [ "$output" = "mine.toml: Nothing at all" ]
    [ "$stderr" = "" ]
    nimba-sim check default
}

@test "machines lists names and descriptions, also as JSON" {
    run nimba-sim machines
    [ "$status" = 0 ]
    [[ "$output" == *"default               One Nimba K1 with an NVIDIA GPU beside it"* ]]
    names=$(printf '%s\n' "${lines[@]}" | cut -d ' ' -f 1)
    run nimba-sim machines --json
    [ "$status" = 0 ]
    [ "$(jq -r '.[].name' <<< "$output")" = "$names" ]
    [ "$(jq -r '.[] | select(.name == "no-gpu").description' <<< "$output")" = \
        "No graphics device at all" ]
    for file in $(jq -r '.[].file' <<< "$output"); do
        nimba-sim check "$file"
    done
}

@test "help tells the exit statuses, version the version" {
    run nimba-sim --help
    [ "$status" = 0 ]
    for words in "128+N  signal N" "127    " "126    " "2      bad usage" \
        "3      no such machine, or a bad machine file" \
        "4      the simulated machine could not be made"; do
        [[ "$output" == *"$words"* ]]
    done
    run nimba-sim --version
    [ "$status" = 0 ]
    [[ "$output" =~ ^nimba-sim\ [0-9]+\.[0-9]+\.[0-9]+$ ]]
}

@test "the environment is extended, not replaced" {
    # A nimba-sim that is built with the address sanitizer needs that option for itself here.
    sanitizer=verify_asan_link_order=0
    run env LD_PRELOAD=libm.so.6 LD_LIBRARY_PATH=/mine ASAN_OPTIONS=$sanitizer TMPDIR=/tmp \
        nimba-sim run -- bash -c 'echo "$LD_PRELOAD"; echo "$LD_LIBRARY_PATH"; echo "$ASAN_OPTIONS"
                                  echo "$TMPDIR"; echo "${PATH##*:}"'
    [ "${lines[0]}" = "libumockdev-preload.so.0 libm.so.6" ]
    [[ "${lines[1]}" == /*/lib:/mine ]]
    [ "${lines[2]}" = "$sanitizer:verify_asan_link_order=0" ]
    [ "${lines[3]}" = /tmp ]
    [ "${lines[4]}" = "$(realpath "$NIMBA_BIN")" ]
}

@test "nothing is left when the command has ended" {
    start 'exit 3'
    status_of_run
    [ "$status" = 3 ]
    nothing_is_left
}

@test "signals that are sent to nimba-sim reach the command, and nothing is left" {
    for signal in TERM:143 INT:130 HUP:129 QUIT:131 USR1:138; do
        # Shells start background jobs with SIGINT and SIGQUIT ignored; the command wants them.
        start 'exec env --default-signal=INT,QUIT bash -c "echo ready >said; exec sleep 1000"'
        read -r -t 20 _ <&9
        kill -s "${signal%:*}" "$sim"
        status_of_run
        [ "$status" = "${signal#*:}" ] || { echo "$signal gave $status"; return 1; }
        nothing_is_left
    done
}

@test "a command may catch a signal and end as it likes" {
    start 'trap "echo caught; exit 9" TERM; echo ready >said; while :; do read -r -t 1 <>never; done'
    read -r -t 20 _ <&9
    kill -s TERM "$sim"
    status_of_run
    [ "$status" = 9 ]
    [ "$(cat output)" = caught ]
    nothing_is_left
}

@test "processes that the command leaves behind are ended" {
    nimba-sim run -- bash -c 'sleep 1000 & echo $! >child
        setsid bash -c "sleep 1000 & echo \$! >grandchild"'
    gone "$(cat child)"
    gone "$(cat grandchild)"
}

@test "the command does not outlive nimba-sim" {
    start 'exec sleep 1000'
    kill -s KILL "$sim"
    gone "$command"
    rm -r "$(dirname "$bed")"
}

@test "permissions that the command takes away do not keep anything" {
    start 'mkdir "$UMOCKDEV_DIR/sys/x"; touch "$UMOCKDEV_DIR/sys/x/y"; chmod 0 "$UMOCKDEV_DIR/sys/x"'
    status_of_run
    [ "$status" = 0 ]
    nothing_is_left
}

@test "an ordinary user can run machines, unreadable ones too" {
    run as_ordinary_user nimba-sim run -- cat /sys/kernel/debug/dri/0/jw/info
    [ "$status" = 0 ]
    [ "$output" = "VA=1" ]
    run as_ordinary_user nimba-sim run --machine unreadable -- bash -c 'echo "$UMOCKDEV_DIR"
        cat /sys/kernel/debug/dri/0/jw/info
        ls /sys/bus/pci/devices/0000:01:00.0/jw_info'
    [ "$status" = 2 ]
    [ "${lines[1]}" = "cat: /sys/kernel/debug/dri/0/jw/info: Permission denied" ]
    [ "${lines[2]}" = \
        "ls: cannot open directory '/sys/bus/pci/devices/0000:01:00.0/jw_info': Permission denied" ]
    [ ! -e "$(dirname "${lines[0]}")" ]
}

@test "runs at the same time have their own machines" {
    nimba-sim run --machine two-qv -- bash -c 'echo up >said; ls /dev/dri' >first &
    sim=$!
    nimba-sim run --machine no-gpu -- bash -c 'read -r -t 20 <&9; ls /dev/dri' >second
    wait "$sim"
    [ "$(tr '\n' ' ' <first)" = "card0 card1 renderD128 renderD129 " ]
    [ "$(cat second)" = "" ]
}

@test "a machine inside a machine is the inner one" {
    run nimba-sim run -- nimba-sim run --machine no-gpu -- ls -A /dev/dri
    [ "$status" = 0 ]
    [ "$output" = "" ]
    run nimba-sim run --machine no-gpu -- nimba-sim run -- ls -A /dev/dri
    [ "$status" = 0 ]
    [ "$(tr '\n' ' ' <<< "$output")" = "card0 card1 renderD128 renderD129 " ]
}
