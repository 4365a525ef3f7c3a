#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi leaks on simulated machines.

load nimba-smi.bash
load live_drivers.bash

GROWTH='^nimba-smi: adapter 0000:01:00\.0 \(Gpu0:Nimba-GT-K3\): [0-9]+ more allocations of 128x64, 32 '\
'KiB, format 28, type 1 than in the first snapshot, held by /usr/games/maze \(4100003\)$'

@test "the shape that leaks and its process are named, with a status of their own" {
    needs_live_drivers
    run --separate-stderr on leaking nimba-smi leaks --interval 0.2 --count 10 --fail-on-growth 5
    [ "$status" = 8 ] || { echo "$status $stderr"; return 1; }
    [[ $stderr =~ $GROWTH ]]
    [[ ${lines[0]} =~ ^SLOT\ +COUNT\ +CHANGE\ +OLDEST\ +SHAPE\ +SIZE\ +FORMAT\ +TYPE\ +MEMORY\ +HELD\ BY$ ]]
    [[ ${lines[1]} =~ ^0\ +[0-9]+\ +\+[0-9]+\ .*\ 128x64\ +32\ KiB\ +28\ +1\ .*\ /usr/games/maze\ \(4100003\)$ ]]
    same "${lines[-1]}" "10 snapshots"
}

@test "without growth the status is that of a good run" {
    run --separate-stderr on forty-allocations \
        nimba-smi leaks --interval 0.05 --count 3 --fail-on-growth 1
    [ "$status" = 0 ]
    same "$stderr" ""
    same "${lines[-1]}" "3 snapshots"
}

@test "the groups of a machine at rest, as text, JSON and CSV" {
    cd "$BATS_TEST_TMPDIR"
    cat >machine.toml <<'TOML'
description = "Three allocations of two shapes"
[[process]]
pid = 4100001
name = "/usr/bin/viewer"
[[adapter]]
chip = "nimba-k2"
bus_id = "0000:01:00.0"
card = 0
[adapter.debug]
"devices/1/info" = "pid = 4100001\nhandle = 10\n"
"allocations/1/info" = "handle=1\ndevice=16\nwidth=8\nheight=4\nsize=2147483648\nat_type=2\n"
"allocations/2/info" = "handle=2\ndevice=17\nwidth=8\nheight=4\nsize=2147483648\nat_type=2\n"
"allocations/3/info" = "handle=3\ndevice=16\nsize=4096\nhw_format=28\n"
TOML
    run --separate-stderr on ./machine.toml nimba-smi leaks --interval 0.01 --count 3
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  COUNT  CHANGE  OLDEST  SHAPE   SIZE  FORMAT  TYPE  MEMORY  HELD BY
0         2       0       3  8x4    2 GiB  0       2      4 GiB  /usr/bin/viewer (4100001), device 0x11
0         1       0       3  0x0    4 KiB  28      0      4 KiB  /usr/bin/viewer (4100001)
3 snapshots"
    run --separate-stderr on ./machine.toml nimba-smi leaks --interval 0.01 --count 2 --json --top 1
    [ "$status" = 0 ]
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.leaks.1","snapshots":2,"interval_seconds":0.01,'\
'"adapters":[{"slot":0,"name":"Gpu0:NimbaK2","bus_id":"0000:01:00.0","snapshots":2}],"groups":['\
'{"slot":0,"bus_id":"0000:01:00.0","count":2,"change":0,"oldest_hits":2,"width":8,"height":4,'\
'"size":2147483648,"hw_format":0,"at_type":2,"bytes":4294967296,"owners":['\
'{"device":"0x10","processes":[{"pid":4100001,"name":"/usr/bin/viewer"}],"count":1,"change":0},'\
'{"device":"0x11","processes":[],"count":1,"change":0}]}],"errors":[]}'
    run --separate-stderr on ./machine.toml nimba-smi leaks --count 1 --csv
    [ "$status" = 0 ]
    same "$output" 'slot,bus_id,count,change,oldest_hits,width,height,size,hw_format,at_type,bytes,'\
'devices,pids,processes
0,0000:01:00.0,2,0,1,8,4,2147483648,0,2,4294967296,"0x10, 0x11",4100001,/usr/bin/viewer
0,0000:01:00.0,1,0,1,0,0,4096,28,0,4096,0x10,4100001,/usr/bin/viewer'
}

@test "an interrupted run ends in order and prints what it has" {
    make_pid_directory
    for signal in HUP INT TERM; do
        # The library is asked a first time once its process has left its number.
        NIMBA_STUB_FAULT=adapters/get_memleak_info/note env --default-signal=HUP,INT,TERM \
            nimba-smi --library "$STUB" leaks --interval 600 >"$BATS_TEST_TMPDIR/out" 3>&- &
        tool=$!
        within_bounds pids_left 1
        kill -s "$signal" "$tool"
        status=0
        wait "$tool" || status=$?
        [ "$status" = 0 ]
        same "$(tail -1 "$BATS_TEST_TMPDIR/out")" "1 snapshot"
        within_bounds all_gone
        rm "$NIMBA_STUB_PIDS"/*
    done
}

@test "a run that is interrupted before there is anything to compare does not pass" {
    make_pid_directory
    NIMBA_STUB_FAULT=adapters/get_memleak_info/note env --default-signal=HUP,INT,TERM \
        nimba-smi --library "$STUB" leaks --interval 600 --fail-on-growth 1 \
        >"$BATS_TEST_TMPDIR/out" 2>"$BATS_TEST_TMPDIR/err" 3>&- &
    tool=$!
    within_bounds pids_left 1
    kill -s TERM "$tool"
    status=0
    wait "$tool" || status=$?
    [ "$status" = 1 ]
    same "$(tail -1 "$BATS_TEST_TMPDIR/out")" "1 snapshot"
    same "$(cat "$BATS_TEST_TMPDIR/err")" "nimba-smi: the run ended before its second snapshot: \
--fail-on-growth had nothing to compare"
}

# terminal_shows COMMAND: what the command, in the shell's notation, writes to its terminal, with a
# "|" for each time that the line is begun anew.
terminal_shows() {
    SHELL=/bin/bash script -qec "$1" /dev/null </dev/null | sed $'s/\r\x1b\\[K/|/g'
}

@test "the snapshots so far are shown on a terminal, and gone before the result" {
    command -v script >/dev/null || skip "needs script, of bsdutils"
    export TERM=xterm
    local leaks="stty cols 100; nimba-smi --library '$STUB' leaks --interval 0.01 --count 2"
    local totals="3 allocations, 2.0 GiB, no growth"
    same "$(terminal_shows "$leaks >/dev/null")" "|snapshot 1 of 2: $totals|snapshot 2 of 2: $totals|"
    [[ $(terminal_shows "$leaks") == *"$totals|SLOT  COUNT "*"2 snapshots"* ]]
    for quiet in "$leaks 2>/dev/null" "$leaks --verbose" "TERM=dumb; $leaks"; do
        run terminal_shows "$quiet"
        [[ $output == *"2 snapshots"* ]]
        [[ $output != *"|"* ]]
    done
}

@test "a run that is interrupted while the driver blocks ends soon" {
    make_pid_directory
    NIMBA_STUB_FAULT=adapters/get_memleak_info/hang env --default-signal=HUP,INT,TERM \
        nimba-smi --library "$STUB" --timeout 600 leaks >"$BATS_TEST_TMPDIR/out" \
        2>"$BATS_TEST_TMPDIR/err" 3>&- &
    tool=$!
    within_bounds pids_left 1
    kill -s INT "$tool"
    status=0
    wait "$tool" || status=$?
    [ "$status" = 0 ]
    same "$(cat "$BATS_TEST_TMPDIR/out" "$BATS_TEST_TMPDIR/err")" ""
    within_bounds all_gone
}

@test "a signal ends a single look like any other command" {
    make_pid_directory
    NIMBA_STUB_FAULT=adapters/get_memleak_info/hang env --default-signal=HUP,INT,TERM \
        nimba-smi --library "$STUB" --timeout 600 leaks --count 1 3>&- &
    tool=$!
    within_bounds pids_left 1
    kill -s TERM "$tool"
    status=0
    wait "$tool" || status=$?
    [ "$status" = 143 ]
    within_bounds all_gone
}

@test "a signal that was ignored at the start stays ignored" {
    run --separate-stderr bash -c "trap '' INT; (sleep 0.2; kill -INT \$\$) &
        exec nimba-smi --library '$STUB' leaks --interval 0.3 --count 3"
    [ "$status" = 0 ]
    same "${lines[-1]}" "3 snapshots"
}

@test "an adapter that goes away between two snapshots is told, and the run goes on" {
    needs_live_drivers
    run --separate-stderr on leaking sh -c '
        (until nimba-sim commands | grep -q enable_usage; do sleep 0.05; done
         sleep 1; nimba-sim fault gone) & exec nimba-smi leaks --interval 0.4 --count 12'
    [ "$status" = 3 ]
    # Of a snapshot that it goes away in, the contexts may be told as well.
    grep -Eq '^nimba-smi: adapter 0000:01:00\.0 \(Gpu0:Nimba-GT-K3\): there is no directory /sys/kernel/debug/dri/0/jw/allocations:.*\(in [0-9]+ of 12 snapshots\)$' \
        <<<"$stderr" || { echo "$stderr"; return 1; }
    same "${lines[-1]}" "12 snapshots"
    [ "${#lines[@]}" -gt 3 ]
}

@test "a worker that is lost ends the snapshots of its adapter" {
    NIMBA_STUB_ADAPTERS=2 NIMBA_STUB_FAULT=1/get_memleak_info/abort \
        run --separate-stderr smi leaks --interval 0.01 --count 3
    [ "$status" = 7 ]
    same "$stderr" "nimba-smi: adapter 0000:04:00.0 (Gpu1:QV M-30): worker lost in \
get_memleak_info: killed by SIGABRT; run with --verbose to see the library's last messages (at \
snapshot 1 of 3)"
    same "${lines[-1]}" "3 snapshots"
    NIMBA_STUB_FAULT=all/get_memleak_info/abort run --separate-stderr smi leaks --count 3
    [ "$status" = 7 ]
    same "$output" ""
}

@test "a snapshot that fails is not taken for one of nothing" {
    cd "$BATS_TEST_TMPDIR"
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on forty-allocations sh -c \
        'rm "$UMOCKDEV_DIR"/sys/kernel/debug/dri/0/jw/allocations/*7/info
        nimba-smi leaks --count 2 --interval 0.01'
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:NimbaK2): the allocations in \
/sys/kernel/debug/dri/0/jw/allocations cannot be read as a whole: they come and go too fast, or an \
entry has no node; run the command again"
}

@test "usage accounting is off after a run" {
    run on forty-allocations sh -c 'nimba-smi leaks --count 2 --interval 0.01 >/dev/null
        cat /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage'
    same "$output" 0
}

# refuses MESSAGE ARGUMENT...: leaks does not take these arguments.
refuses() {
    local message=$1
    shift
    run --separate-stderr smi leaks "$@"
    [ "$status" = 2 ]
    same "$stderr" "nimba-smi: $message; see nimba-smi --help"
}

@test "values are checked" {
    for seconds in 0 0.009 86401 nan x; do
        refuses "--interval: expected seconds from 0.01 to 86400, got \"$seconds\"" \
            --interval "$seconds"
    done
    for count in 0 x 1.5; do
        refuses "--count: expected a number of snapshots from 1 on, got \"$count\"" --count "$count"
        refuses "--fail-on-growth: expected a number of allocations from 1 on, got \"$count\"" \
            --fail-on-growth "$count"
    done
    refuses "--fail-on-growth needs two snapshots at least: --count 2 or more" --count 1 \
        --fail-on-growth 1
    refuses "--csv and --json exclude each other" --csv --json
}
