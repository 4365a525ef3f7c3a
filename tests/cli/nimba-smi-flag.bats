#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi flag on simulated machines.

load nimba-smi.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

ADAPTER="adapter 0000:01:00.0 (Gpu0:Nimba-K1)"
NODE=/sys/bus/pci/devices/0000:01:00.0/jw_info/misc_ctl_flag

# with_flag SCRIPT: the shell script on a machine whose control flag is 5.
with_flag() {
    on default bash -c "echo 5 >$NODE; nimba-sim commands --clear; $1"
}

@test "flag set and flag clear tell what was read back" {
    needs_live_drivers
    run --separate-stderr with_flag "nimba-smi flag get; nimba-smi flag set 0x10; cat $NODE
        nimba-smi flag clear 4; cat $NODE"
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "\
SLOT  FLAG
0     0x5
BEFORE  ASKED  RESULT
0x5     0x15   accepted
21
BEFORE  ASKED  RESULT
0x15    0x11   accepted
17"
    run --separate-stderr with_flag 'nimba-smi flag set 2 --json; nimba-smi flag get --json'
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.flag-set.1","adapter":{"slot":0,'\
'"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0"},"before":5,"asked":7,"after":7,'\
'"result":"accepted","errors":[]}
{"schema":"nimba-smi.flag.1","adapters":[{"slot":0,"name":"Gpu0:Nimba-K1",'\
'"bus_id":"0000:01:00.0","flag":7}],"errors":[]}'
}

@test "all 32 bits can be set and cleared, each with one command" {
    needs_live_drivers
    run --separate-stderr with_flag 'nimba-smi flag set 0xffffffff; nimba-smi flag clear 0x7fffffff
        nimba-smi flag get; nimba-sim commands --json | jq -r ".[].text"'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$(sed '/^$/d' <<<"$output")" "\
BEFORE  ASKED       RESULT
0x5     0xffffffff  accepted
BEFORE      ASKED       RESULT
0xffffffff  0x80000000  accepted
SLOT  FLAG
0     0x80000000
-1
-2147483648"
}

@test "bits that are so already are not written" {
    needs_live_drivers
    run --separate-stderr with_flag \
        'nimba-smi flag set 4; nimba-smi flag clear 2; nimba-sim commands'
    [ "$status" = 0 ]
    same "$output" "\
BEFORE  ASKED  RESULT
0x5     0x5    unchanged: already so
BEFORE  ASKED  RESULT
0x5     0x5    unchanged: already so"
}

@test "a flag that the driver does not take is told" {
    needs_live_drivers
    run --separate-stderr with_flag \
        'nimba-sim fault write misc_ctl_flag --directory info --error EIO; nimba-smi flag set 2'
    [ "$status" = 9 ]
    same "$stderr" "nimba-smi: $ADAPTER: the driver did not take the flag 0x7; rejected: still 0x5"
    same "$output" "\
BEFORE  ASKED  RESULT
0x5     0x7    rejected: still 0x5"
}

@test "a flag that cannot be read is left alone" {
    needs_live_drivers
    run --separate-stderr with_flag \
        'nimba-sim fault read misc_ctl_flag --directory info --error EIO
        nimba-smi flag get; echo $?; nimba-smi flag set 2; s=$?; nimba-sim commands; exit $s'
    [ "$status" = 3 ]
    same "$output" "\
SLOT  FLAG
0     not available
3"
    same "$stderr" "\
nimba-smi: $ADAPTER: cannot read $NODE: Input/output error (see dmesg)
nimba-smi: $ADAPTER: cannot read $NODE: Input/output error (see dmesg)"
    run --separate-stderr with_flag \
        'nimba-sim fault vanish misc_ctl_flag --directory info; nimba-smi flag get --json | jq -c .adapters[0].flag
        nimba-smi flag clear 1'
    [ "$status" = 9 ]
    same "$output" null
    same "$stderr" "\
nimba-smi: $ADAPTER: the driver has no $NODE
nimba-smi: $ADAPTER: the driver has no $NODE"
}

@test "a flag that is no decimal number is left alone" {
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on default sh -c \
        "echo 0x5 >$NODE; nimba-smi flag get; nimba-smi flag set 2; s=\$?; cat $NODE; exit \$s"
    [ "$status" = 9 ]
    same "$output" "\
SLOT  FLAG
0     not available
0x5"
    same "$stderr" "\
nimba-smi: $ADAPTER: there is no number in $NODE
nimba-smi: $ADAPTER: there is no number in $NODE"
}

@test "a flag that is closed to the user is named, and not written" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine default \
        --drivers plain -- sh -c "echo 5 >$NODE; chmod 444 \$UMOCKDEV_DIR$NODE; nimba-smi flag set 2; s=\$?
        cat $NODE; exit \$s"
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    same "$output" 5
    same "$stderr" \
        "nimba-smi: $ADAPTER: no permission to write $NODE: run as root; nothing was written"
}

@test "bits that make no sense are refused" {
    for bits in 0 -1 0x100000000 x ""; do
        run --separate-stderr on default nimba-smi flag set "$bits"
        [ "$status" = 2 ] || { echo "$bits: $status $stderr"; return 1; }
        same "$output" ""
    done
    run --separate-stderr on default nimba-smi flag
    [ "$status" = 2 ]
    same "$stderr" "nimba-smi: flag needs get, set or clear; see nimba-smi --help"
}
