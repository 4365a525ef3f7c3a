#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# What mem, clocks, sensors and usage say when drivers fail, close their nodes, go or come again.

load nimba-smi.bash
load nimba-smi-monitor.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

@test "a driver that shows nothing is told" {
    run --separate-stderr on bare-adapter nimba-smi clocks
    [ "$status" = 3 ]
    same "$output" \
'SLOT  ENGINE  VIDEO  MEMORY  CORE  GFX  VOLTAGE  LEVEL
0        n/a    n/a     n/a   n/a  n/a      n/a    n/a'
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-GT-K3): there is no directory $INFO: \
the driver does not show its clocks, or the adapter is gone (see dmesg)"
}

@test "nodes that are closed to the user are named, and the others are shown" {
    machine 'unreadable = ["info/eclk", "hwmon/fan0_input"]' '[adapter.info]' 'vclk = "350\n"' \
        'fan_speed = "9\n"'
    local file=$BATS_FILE_TMPDIR/machine.toml
    cp machine.toml "$file"
    chmod a+rx "$BATS_RUN_TMPDIR" "$BATS_FILE_TMPDIR" 2>/dev/null || true
    chmod a+r "$file"
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine "$file" -- \
        nimba-smi clocks --csv
    [ "$status" = 6 ] || { echo "$status $output $stderr"; return 1; }
    same "$stderr" "nimba-smi: $STEADY: no permission to read $INFO/eclk: run as root"
    [[ ${lines[1]} == "0,0000:01:00.0,,350,"* ]]
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine "$file" -- \
        nimba-smi sensors --csv
    [ "$status" = 6 ]
    [[ ${lines[1]} == "0,0000:01:00.0,"*",,"*",9" ]]
}

@test "accounting that the user cannot switch on leaves engine use unknown" {
    machine '[adapter.info]' 'engine_3d_usage = "0\n"'
    local file=$BATS_FILE_TMPDIR/machine.toml
    cp machine.toml "$file"
    chmod a+rx "$BATS_RUN_TMPDIR" "$BATS_FILE_TMPDIR" 2>/dev/null || true
    chmod a+r "$file"
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine "$file" \
        --drivers plain -- sh -c "chmod 444 \$UMOCKDEV_DIR$INFO/enable_usage
            nimba-smi usage --interval 0.01"
    [ "$status" = 6 ] || { echo "$status $output $stderr"; return 1; }
    same "$stderr" "nimba-smi: $STEADY: no permission to write $INFO/enable_usage: run as root; \
engine use is not counted"
    [[ ${lines[1]} =~ \ n/a\ +n/a\ +n/a\ +(0=.*|n/a)\ +n/a$ ]] || { echo "$output"; return 1; }
}

# faulty ARGUMENT... -- COMMAND...: the command on the steady machine with that fault.
faulty() {
    local -a fault=()
    while [ "$1" != -- ]; do
        fault+=("$1")
        shift
    done
    shift
    run --separate-stderr on steady-adapter sh -c 'nimba-sim fault '"${fault[*]}"' && exec "$@"' sh "$@"
}

@test "faults of nodes cost their own figures alone" {
    needs_live_drivers
    faulty read eclk --directory info -- nimba-smi clocks --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $STEADY: cannot read $INFO/eclk: Input/output error (see dmesg)"
    same "${lines[1]}" "0,0000:01:00.0,,350,1000,600,550,800,balance"
    faulty open temp1_input --directory hwmon --error EACCES -- nimba-smi sensors --csv
    [ "$status" = 6 ]
    same "${lines[1]}" "0,0000:01:00.0,,1600,1600,1600"
    faulty vanish fan_speed --directory info -- nimba-smi sensors --csv
    [ "$status" = 0 ]
    same "${lines[1]}" "0,0000:01:00.0,50,1600,1600,"
    faulty open segment_info --directory info -- nimba-smi mem --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $STEADY: cannot read $INFO/segment_info: Input/output error (see dmesg)"
    [[ ${lines[1]} == "0,0000:01:00.0,0,,"*",,allocations" ]]
}

@test "nodes of several figures that cannot be read are named" {
    needs_live_drivers
    faulty read dvfs_clk_voltage --directory info -- nimba-smi clocks --csv
    [ "$status" = 3 ]
    same "$stderr" \
        "nimba-smi: $STEADY: cannot read $INFO/dvfs_clk_voltage: Input/output error (see dmesg)"
    same "${lines[1]}" "0,0000:01:00.0,550,350,1000,600,,,balance"
    faulty open dvfs_level --directory info --error EACCES -- nimba-smi clocks --csv
    [ "$status" = 6 ]
    same "$stderr" "nimba-smi: $STEADY: no permission to read $INFO/dvfs_level: run as root"
    same "${lines[1]}" "0,0000:01:00.0,550,350,1000,600,550,800,"
    for node in fps_count rxa_blt_scn_cnt; do
        faulty read "$node" --directory info -- nimba-smi usage --interval 0.01
        [ "$status" = 3 ]
        same "$stderr" "nimba-smi: $STEADY: cannot read $INFO/$node: Input/output error (see dmesg)"
    done
}

@test "segments that make no sense are told, and the allocations are summed up" {
    needs_live_drivers
    faulty garbage segment_info --directory info -- nimba-smi mem --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $STEADY: there are no segments in $INFO/segment_info (see dmesg)"
    [[ ${lines[1]} == "0,0000:01:00.0,0,,"*",,allocations" ]]
    # The library has chosen the node by then.
    faulty garbage segment_info --directory info --every 2 -- nimba-smi mem --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $STEADY: the segments cannot be read any more: run the command again"
    [ "${#lines[@]}" = 1 ]
}

@test "numbers that make no sense are told, and short ones are read as far as they go" {
    needs_live_drivers
    machine '[adapter.info]' 'eclk = "0x10\n"' 'vclk = "350\n"'
    run --separate-stderr on ./machine.toml nimba-smi clocks --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $STEADY: there is no number in $INFO/eclk (see dmesg)"
    [[ ${lines[1]} == "0,0000:01:00.0,,350,"* ]]
    faulty garbage temp1_input --directory hwmon -- nimba-smi sensors --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $STEADY: there is no number in \
/sys/bus/pci/devices/0000:01:00.0/hwmon/temp1_input (see dmesg)"
    same "${lines[1]}" "0,0000:01:00.0,,1600,1600,1600"
    faulty short segment_info --directory info --bytes 5 -- nimba-smi mem --csv
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    [[ ${lines[1]} == "0,0000:01:00.0,0,,"*",node" ]]
}

@test "accounting that the driver does not switch on leaves engine use unknown" {
    needs_live_drivers
    faulty write enable_usage --directory info -- nimba-smi usage --interval 0.01 --csv
    [ "$status" = 0 ]
    same "$stderr" \
        "nimba-smi: $STEADY: $INFO/enable_usage stays 0: engine use is not counted"
    [[ ${lines[1]} =~ ^0,0000:01:00\.0,[^,]*,[^,]*,[^,]*,[^,]*,,,,6000,.*,,,,,,,,,,$ ]] ||
        { echo "${lines[1]}"; return 1; }
}

@test "heaps and allocations that cannot be read are named" {
    needs_live_drivers
    local debug=/sys/kernel/debug/dri/0/qv
    # with FAULT...: mem of the first of two adapters with that fault.
    with() {
        run --separate-stderr on two-qv sh -c \
            'nimba-sim fault "$@" --adapter 0; nimba-smi mem --csv --adapter 0' sh "$@"
    }
    with open "heaps/*/info" --error EIO
    [ "$status" = 3 ]
    [[ $stderr == *": cannot read $debug/heaps/heap_"*"/info: Input/output error (see dmesg)" ]]
    same "${lines[2]}" "0,0000:01:00.0,1,,0,,allocations"
    with garbage "heaps/heap_local/info"
    [ "$status" = 3 ]
    [[ $stderr == *": there are no heaps in $debug/heaps (see dmesg)" ]]
    same "${lines[2]}" "0,0000:01:00.0,1,,0,,allocations"
    with list allocations --entries 1
    [ "$status" = 3 ]
    [[ $stderr == *": cannot read $debug/allocations: Input/output error (see dmesg)" ]]
    same "${lines[2]}" "0,0000:01:00.0,1,heap_local,,2147483648,heaps"
}

@test "a heap that cannot be read is not taken for another" {
    needs_live_drivers
    local heap=heaps/heap_pcie_unsnoop
    run --separate-stderr on two-qv sh -c "nimba-sim fault open $heap/info --error EACCES --adapter 0
        nimba-smi mem --csv --adapter 0"
    [ "$status" = 6 ]
    [[ $stderr == *": no permission to read /sys/kernel/debug/dri/0/qv/$heap/info: run as root" ]]
    same "${lines[1]} ${lines[3]}" \
        "0,0000:01:00.0,0,heap_invalid,0,0,heaps 0,0000:01:00.0,2,heap_pcie_unsnoop,,,heaps"
    run --separate-stderr on two-qv sh -c "nimba-sim fault vanish $heap --adapter 0
        nimba-smi mem --csv --adapter 0"
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr${lines[3]}" "0,0000:01:00.0,2,heap_pcie_unsnoop,,,heaps"
}

@test "a node that blocks costs its adapter, and accounting is off all the same" {
    needs_live_drivers
    run --separate-stderr on three-adapters sh -c '
        nimba-sim fault block eclk --directory info --adapter 1 --ms 60000
        nimba-smi --timeout 3 clocks --csv; s=$?
        cat /sys/bus/pci/devices/*/*_info/enable_usage; exit $s'
    [ "$status" = 7 ] || { echo "$stderr"; return 1; }
    [[ $stderr == *"worker lost in gpuinfo_get_jwinfoFD_value_int of eclk: no answer within 3 s; "* ]]
    [[ ${lines[1]} == "0,"* && ${lines[2]} == "2,"* ]]
    same "${lines[3]}${lines[4]}${lines[5]}" 000
}

@test "a watch goes on without an adapter whose worker is lost" {
    needs_live_drivers
    run --separate-stderr on three-adapters bash -c '
        mkfifo lines
        nimba-smi clocks --watch 0.1 --count 20 --json >lines 2>errors &
        exec 7<lines
        read -r line <&7
        for worker in $(cat "/proc/$!/task/$!/children"); do
            tr "\0" " " <"/proc/$worker/cmdline" | grep -q -e "--slot 1 " && kill -s KILL "$worker"
        done
        { echo "$line"; cat <&7; } | jq -c "[.adapters[].slot]" | uniq
        wait "$!"'
    [ "$status" = 7 ]
    same "$output" '[0,1,2]
[0,2]'
    [ "$(grep -c 'worker lost in .*killed by SIGKILL' errors)" = 1 ] || { cat errors; return 1; }
}

@test "an adapter that goes away is told once, and in the documents of its time" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        mkfifo lines
        nimba-smi clocks --watch 0.1 --count 20 --json >lines &
        exec 7<lines
        read -r line <&7
        nimba-sim fault gone
        { echo "$line"; cat <&7; } | jq -c "[.adapters[0].engine_clock, .errors[0].status]" | uniq
        wait "$!"'
    [ "$status" = 3 ]
    [[ ${lines[0]} == "[550,null]" && ${lines[-1]} == "[null,3]" ]] || { echo "$output"; return 1; }
    [ "$(grep -c "there is no directory $INFO" <<<"$stderr")" = 1 ] || { echo "$stderr"; return 1; }
}

@test "a driver that went and came again is read again, and it is said once" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        mkfifo lines
        env --default-signal=INT nimba-smi clocks --watch 0.1 --json >lines &
        exec 7<lines
        until_clock() {
            while read -r line <&7; do
                [ "$(jq .adapters[0].engine_clock <<<"$line")" != "$1" ] || return 0
            done
            echo "never $1"
        }
        until_clock 550
        for time in 1 2; do
            nimba-sim fault gone
            until_clock null
            nimba-sim fault --clear
            until_clock 550
        done
        cat '"$INFO"'/enable_usage
        kill -s INT "$!"
        cat <&7 >/dev/null
        wait "$!"; s=$?
        cat '"$INFO"'/enable_usage; exit "$s"'
    [ "$status" = 3 ] || { echo "$status $output $stderr"; return 1; }
    same "$output" $'1\n0'
    same "$stderr" "nimba-smi: $STEADY: there is no directory $INFO: the driver does not show its \
clocks, or the adapter is gone (see dmesg)
nimba-smi: $STEADY: $INFO came anew while the command ran: it is read again from the next sample on"
}

@test "engine use is never zero for want of accounting" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        while :; do echo 0 >'"$INFO"'/enable_usage; done &
        nimba-smi usage --watch 0.02 --count 40 --json >out; s=$?
        kill "$!"; exit "$s"'
    [ "$status" = 0 ] || { echo "$status $stderr"; return 1; }
    jq -se 'length == 40 and all(.[].adapters[0];
        .engine_3d_percent != 0 and .busy_words[2] != 0)' out || { cat out; return 1; }
}
