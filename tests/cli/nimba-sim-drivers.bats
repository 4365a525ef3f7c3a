#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The drivers of a simulated machine: faults, what is left of them, and machines without live ones.

load nimba-sim.bash

INFO=/sys/kernel/debug/dri/0/jw/info

# A machine whose driver fails to open a node twice, in the file mine.toml.
make_failing_machine() {
    cat >mine.toml <<'TOML'
description = "Fails"
[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 0
[[fault]]
kind = "open"
path = "info"
error = "EACCES"
first = 2
TOML
}

# without_fuse COMMAND...: where no FUSE file system can be mounted.
without_fuse() {
    unshare -rm sh -c 'mount --bind /dev/null /dev/fuse && exec "$@"' sh "$@"
}

needs_mount_namespace() {
    unshare -rm true || skip "needs a mount namespace"
    [ -e /dev/fuse ] || skip "needs a /dev/fuse that can be hidden"
}

@test "a fault of the machine file befalls the command" {
    needs_live_drivers
    make_failing_machine
    run nimba-sim run -m mine.toml -- sh -c "for i in 1 2 3; do cat $INFO; done"
    [ "${lines[0]}" = "cat: $INFO: Permission denied" ]
    [ "${lines[1]}" = "cat: $INFO: Permission denied" ]
    [ "${lines[2]}" = "VA=1" ]
    [ "${#lines[@]}" = 3 ]
}

@test "faults are switched on, listed and switched off while the command runs" {
    needs_live_drivers
    run nimba-sim run -- sh -ec "
        nimba-sim fault open info --error ENOENT
        nimba-sim fault read 'allocations/*/info' --adapter 0 --bytes 10 --every 2
        nimba-sim fault --list
        cat $INFO || true
        nimba-sim fault --clear
        nimba-sim fault --list
        cat $INFO"
    [ "$status" = 0 ]
    [ "$output" = '[[fault]]
kind = "open"
path = "info"
error = "ENOENT"

[[fault]]
kind = "read"
path = "allocations/*/info"
adapter = 0
error = "EIO"
bytes = 10
every = 2

cat: '$INFO': No such file or directory
VA=1' ]
}

@test "what is listed can stand in a machine file" {
    needs_live_drivers
    make_failing_machine
    nimba-sim run -- sh -ec "nimba-sim fault block --ms 5 --after-ms 7 --for-ms 600000; nimba-sim fault gone
        nimba-sim fault garbage info --seed 4; nimba-sim fault list allocations --entries 3
        nimba-sim fault short info; nimba-sim fault vanish 'devices/*'; nimba-sim fault --list" >>mine.toml
    nimba-sim check mine.toml
    [ "$(grep -c '^\[\[fault' mine.toml)" = 7 ]
}

@test "a fault can be switched on from outside the run" {
    needs_live_drivers
    start "echo ready >said; read -r -t 20 <>never; cat $INFO"
    read -r -t 20 _ <&9
    UMOCKDEV_DIR=$bed nimba-sim fault read info
    echo go >never
    status_of_run
    [ "$status" = 1 ]
    [ "$(cat errors)" = "cat: $INFO: Input/output error" ]
    nothing_is_left
}

@test "a driver goes away and comes back" {
    needs_live_drivers
    run nimba-sim run -- bash -ec "exec 5<$INFO
        nimba-sim fault gone --adapter 0
        cat <&5 || ls -A /sys/kernel/debug/dri; cat $INFO || nimba-sim fault --clear
        cat $INFO"
    [ "${lines[0]}" = "cat: -: No such device" ]
    [ "${lines[1]}" = "cat: $INFO: No such file or directory" ]
    [ "${lines[2]}" = "VA=1" ]
}

@test "2: a fault that makes no sense" {
    fails_with 2 "nimba-sim: fault: key 'kind': expected one of \"open\", \"read\", \"short\", \"block\", \"garbage\", \"write\", \"vanish\", \"list\", \"gone\", got \"odd\"; see nimba-sim --help" \
        nimba-sim fault odd
    fails_with 2 "nimba-sim: fault: key 'first': expected a whole number from 1 to 1000000000, got 0; see nimba-sim --help" \
        nimba-sim fault open info --first 0
    fails_with 2 "nimba-sim: fault: --list and --clear stand alone; see nimba-sim --help" \
        nimba-sim fault open info --list
}

@test "2: drivers of a kind that there is not" {
    line="expected auto, live or plain, got odd; see nimba-sim --help"
    fails_with 2 "nimba-sim: --drivers: $line" nimba-sim run --drivers odd -- touch ran
    fails_with 2 "nimba-sim: NIMBA_SIM_DRIVERS: $line" \
        env NIMBA_SIM_DRIVERS=odd nimba-sim run -- touch ran
    [ ! -e ran ]
    NIMBA_SIM_DRIVERS=odd nimba-sim run --drivers auto -- touch ran
    [ -e ran ]
    NIMBA_SIM_DRIVERS=odd nimba-sim check default
}

@test "4: a fault without a machine, without live drivers, without the adapter" {
    line="nimba-sim: no simulated machine here: this is for commands that \`nimba-sim run\` runs"
    fails_with 4 "$line" nimba-sim fault --list
    fails_with 4 "nimba-sim: the simulated machine has no live drivers: No such file or directory" \
        nimba-sim run --drivers plain -- nimba-sim fault gone
    needs_live_drivers
    fails_with 4 "nimba-sim: the simulated machine has no such adapter" \
        nimba-sim run -- nimba-sim fault gone --adapter 7
}

@test "plain drivers are plain files, of which nothing is said" {
    make_failing_machine
    local -a forms=("nimba-sim run --drivers plain" "env NIMBA_SIM_DRIVERS=plain nimba-sim run")
    for form in "${forms[@]}"; do
        run --separate-stderr $form -m mine.toml -- \
            sh -c "cat $INFO; grep -c \$UMOCKDEV_DIR /proc/self/mountinfo"
        [ "${lines[0]}" = "VA=1" ]
        [ "${lines[1]}" = 0 ]
        [ "$stderr" = "" ]
    done
}

@test "without FUSE the nodes are plain files, and one line says what that means" {
    needs_mount_namespace
    unset NIMBA_SIM_DRIVERS
    run --separate-stderr without_fuse nimba-sim run -- cat "$INFO"
    [ "$status" = 0 ]
    [ "$output" = "VA=1" ]
    [[ "$stderr" == "nimba-sim: no live drivers ("*"): their nodes are plain files, which never change" ]]
    [ "${#stderr_lines[@]}" = 1 ]

    make_failing_machine
    run --separate-stderr without_fuse nimba-sim run -m mine.toml -- cat "$INFO"
    [ "$output" = "VA=1" ]
    [[ "$stderr" == *"): their nodes are plain files, which never change; the machine's faults do nothing" ]]
}

@test "4: live drivers that there cannot be" {
    needs_mount_namespace
    run -4 --separate-stderr without_fuse nimba-sim run --drivers live -- touch ran
    [[ "$stderr" == "nimba-sim: no live drivers ("*")" ]]
    [ "$output" = "" ]
    [ ! -e ran ]
}

@test "a machine without any node has nothing mounted" {
    run --separate-stderr nimba-sim run -m bare-adapter -- sh -c 'grep -c $UMOCKDEV_DIR /proc/self/mountinfo'
    [ "$output" = 0 ]
    [ "$stderr" = "" ]
}

@test "a command that waits for a blocked node ends by signals, and nothing is left" {
    needs_live_drivers
    for signal in TERM:143 KILL:; do
        start "nimba-sim fault block info --ms 3600000; echo ready >said; exec env --default-signal cat $INFO"
        read -r -t 20 _ <&9
        kill -s "${signal%:*}" "$sim"
        status_of_run
        [ "${signal#*:}" = "" ] || [ "$status" = "${signal#*:}" ]
        nothing_is_left_soon
    done
}

@test "a simulated machine that is killed lets nobody hang in its nodes" {
    needs_live_drivers
    start "nimba-sim fault block info --ms 3600000; setsid cat $INFO & echo \$! \$PPID >said; exec sleep 1000"
    read -r -t 20 reader server <&9
    kill -s KILL "$server"
    status_of_run
    [ "$status" = 4 ]
    gone "$reader"
    nothing_is_left
}

@test "nothing stays mounted for those who have a node open" {
    needs_live_drivers
    start "echo ready >said; read -r -t 20 <>never"
    read -r -t 20 _ <&9
    exec 8<"$bed/sys/kernel/debug/dri/0/jw/info"
    echo go >never
    status_of_run
    nothing_is_left
    run -1 cat <&8
    exec 8<&-
    [ "$output" = "cat: -: Transport endpoint is not connected" ]
}

# A run of which nobody is left to tidy up.
kill_a_run_altogether() {
    start 'echo $PPID >said; exec sleep 1000'
    read -r -t 20 server <&9
    kill -s STOP "$server"
    kill -s KILL "$sim"
    kill -s KILL "$server"
    gone "$command"
    gone "$server"
}

@test "what runs leave that were killed altogether, the next one removes" {
    needs_live_drivers
    kill_a_run_altogether
    nimba-sim run -- true
    nothing_is_left_soon
}

@test "what the next run must not unmount, a later one removes" {
    needs_live_drivers
    needs_mount_namespace
    kill_a_run_altogether
    unshare -rm nimba-sim run -- true
    nimba-sim run -- true
    nothing_is_left_soon
}
