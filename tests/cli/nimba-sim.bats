#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-sim as a user types it: the command that it runs, signals, and what is left behind.

load ordinary_user.bash
load nimba-sim.bash

teardown_file() {
    drop_ordinary_user_copy
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

@test "the command's arguments are nobody else's, whatever they look like" {
    run --separate-stderr nimba-sim run -- printf '<%s>' '[]' '[a,b]' -- -m nope --help ''
    [ "$output" = "<[]><[a,b]><--><-m><nope><--help><>" ]
    [ "$stderr" = "" ]
}

@test "the command gets the signal dispositions, mask and file mode mask of nimba-sim" {
    look='grep -E "^Sig(Blk|Ign|Cgt)" /proc/self/status; umask'
    for flags in "--default-signal" "--ignore-signal=USR1,CHLD --block-signal=TERM"; do
        expected=$(umask 0777; exec env --default-signal $flags sh -c "$look")
        run --separate-stderr env --default-signal $flags \
            sh -c 'umask 0777; exec nimba-sim run -- sh -c "$1"' sh "$look"
        [ "$output" = "$expected" ] || { echo "$output instead of $expected"; return 1; }
        [ "$stderr" = "" ]
    done
}

@test "closed standard descriptors are the null device, not a socket of the machine" {
    bash -c 'nimba-sim run -- bash -c "readlink /proc/\$\$/fd/{0,1,2} >seen; :" <&- >&- 2>&-'
    [ "$(cat seen)" = "$(printf '/dev/null\n/dev/null\n/dev/null')" ]
    nimba-sim run -- ls /dev/dri <&- >&-
}

@test "a script without an interpreter line is run by the shell" {
    printf 'echo "script $1"; exit 8\n' >script
    chmod +x script
    run --separate-stderr nimba-sim run -- ./script 'two words'
    [ "$status" = 8 ]
    [ "$output" = "script two words" ]
    run --separate-stderr env "PATH=$PWD:$PATH" nimba-sim run -- script one
    [ "$output" = "script one" ]
}

@test "without PATH the command is looked for where the system's programs are" {
    sim=$(type -P nimba-sim)
    run --separate-stderr env -u PATH "$sim" run -- sh -c 'echo "$PATH"'
    sim=
    [ "$status" = 0 ]
    bin=$(realpath "$NIMBA_BIN")
    [ "$output" = "${bin%/*}/libexec/nimba-sim/bin:$(env -u PATH "$(type -P getconf)" PATH):$bin:/usr/sbin" ]
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
                                  echo "$TMPDIR"; echo "$PATH"'
    [ "${lines[0]}" = "libumockdev-preload.so.0 libm.so.6" ]
    [[ "${lines[1]}" == /*/lib:/mine ]]
    [ "${lines[2]}" = "$sanitizer:verify_asan_link_order=0" ]
    [ "${lines[3]}" = /tmp ]
    [[ "${lines[4]}" == *":$(realpath "$NIMBA_BIN"):/usr/sbin" ]]
}

@test "nothing is left when the command has ended" {
    start 'exit 3'
    status_of_run
    [ "$status" = 3 ]
    nothing_is_left
}

@test "signals that are sent to nimba-sim reach the command, and nothing is left" {
    for signal in TERM:143 INT:130 HUP:129 QUIT:131 USR1:138 ALRM:142 XCPU:152 IO:157 PWR:158 SYS:159 RTMIN+3:165; do
        # Shells start background jobs with SIGINT and SIGQUIT ignored; the command wants them.
        # No shell is in between: some ignore SIGQUIT.
        echo ready >text
        start 'exec env --default-signal=INT,QUIT tail -n 1 -f text >said'
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

@test "processes that nimba-sim was given by its caller live on" {
    bash -c 'sleep 1000 & echo $! >child; exec nimba-sim run -- true'
    kill -s TERM "$(cat child)"
}

@test "the command does not outlive nimba-sim" {
    start 'exec sleep 1000'
    kill -s KILL "$sim"
    nothing_is_left_soon
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
