#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi dvfs get and set on simulated machines.

load nimba-smi.bash
load nimba-smi-dvfs.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

@test "dvfs get shows every setting, and tells the driver nothing" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-smi dvfs get; log'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "$SETTINGS"
}

@test "dvfs get shows the fields that it is asked for" {
    run --separate-stderr here nimba-smi dvfs get dvfs_level gfx_clock dvfs_level
    [ "$status" = 0 ]
    same "$output" "\
SLOT  FIELD       VALUE
0     dvfs_level  balance
0     gfx_clock   800"
    run --separate-stderr here nimba-smi dvfs get --csv power_gating_3d dvfs_level
    same "$output" "\
slot,bus_id,field,value
0,0000:01:00.0,power_gating_3d,0x64
0,0000:01:00.0,dvfs_level,balance"
    run --separate-stderr here nimba-smi dvfs get --json power_mode dvfs_level memory_clock
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.dvfs.1","adapters":[{"slot":0,'\
'"name":"Gpu0:Nimba-K1","bus_id":"0000:01:00.0","fields":{"power_mode":1,"dvfs_level":"balance",'\
'"memory_clock":1600}}],"errors":[]}'
}

@test "every setting can be set, in the order that --dry-run shows" {
    needs_live_drivers
    run --separate-stderr here_sh "nimba-smi dvfs set $ALL --dry-run; echo; log"
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" "$ALL_LINES"
    run --separate-stderr here_sh "nimba-smi dvfs set $ALL >table; log; nimba-smi dvfs get --csv |
        grep -vE '(video|memory)_clock,' | sed '1d; s/^0,0000:01:00.0,//; s/,/=/' >after"
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "$ALL_LINES"
    same "$(tail -n +2 table | grep -c ' accepted$')" 23
    same "$(sed -n '1p; 8,10p; 23,24p' table)" "\
FIELD                BEFORE   ASKED        RESULT
clock_gating_vpp     0x10     0x0          accepted
dvfs_mode            0x2      0x0          accepted
dvfs_level           balance  performance  accepted
gfx_clock            800      1234         accepted
gfx_voltage          900      999          accepted"
    same "$(sed -n '1p; 4p; 6p; 9p; 17p; 19p; 22,23p' after)" "\
power_mode=0x1f
power_gating_vpp=0xffff
clock_gating_vcp=0x8000
dvfs_level=performance
vpp_high_threshold=0xffffffff
vcp0_low_threshold=0xa
gfx_clock=1234
gfx_voltage=999"
}

@test "only what changes is written" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-smi dvfs set dvfs_mode=2 dvfs_level=lowpower gfx_check_size=64; log
        nimba-sim commands --clear; nimba-smi dvfs set dvfs_level=1; log'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "\
FIELD           BEFORE   ASKED     RESULT
dvfs_mode       0x2      0x2       unchanged: already so
dvfs_level      balance  lowpower  accepted
gfx_check_size  0x40     0x40      unchanged: already so
dvfs_level: lowpower
FIELD       BEFORE    ASKED     RESULT
dvfs_level  lowpower  lowpower  unchanged: already so"
}

@test "what the driver does not take is told field by field" {
    needs_live_drivers
    run --separate-stderr here_sh \
        'nimba-smi dvfs set gfx_clock=5000 dvfs_level=performance dvfs_mode=7; s=$?; log; exit $s'
    [ "$status" = 9 ]
    same "$stderr" "\
nimba-smi: $ADAPTER: the driver did not take dvfs_mode=0x7; rejected: still 0x2
nimba-smi: $ADAPTER: the driver did not take gfx_clock=5000; changed to 1200 by the driver"
    same "$output" "\
FIELD       BEFORE   ASKED        RESULT
dvfs_mode   0x2      0x7          rejected: still 0x2
dvfs_level  balance  performance  accepted
gfx_clock   800      5000         changed to 1200 by the driver
dvfs_mode: 0x7 -> EINVAL
dvfs_level: performance
dvfs_clk_voltage: c 0 5000 -> EINVAL"
    run --separate-stderr here nimba-smi dvfs set gfx_clock=5000 gfx_voltage=800 --json
    [ "$status" = 9 ]
    same "$(jq -c '[.schema, .adapter.bus_id, .fields, .errors[].status]' <<<"$output")" \
        '["nimba-smi.dvfs-set.1","0000:01:00.0",[{"field":"gfx_clock","before":800,"asked":5000,'\
'"after":800,"result":"rejected"},{"field":"gfx_voltage","before":900,"asked":800,"after":800,'\
'"result":"accepted"}],9]'
}

@test "nothing is written when one of the settings makes no sense" {
    needs_live_drivers
    run --separate-stderr here_sh 'for wrong in speed=1 video_clock=1 dvfs_mode=0x100000000 \
        power_gating_3d=65536 dvfs_level=3 gfx_clock=1.5 dvfs_level; do
            nimba-smi dvfs set power_mode=5 $wrong || echo $?
        done; nimba-smi dvfs set power_mode=5 power_mode=6 || echo $?; log'
    same "$(sort -u <<<"$output")" 2
    same "${#lines[@]}" 8
    same "$stderr" "\
nimba-smi: FIELD=VALUE: there is no field \"speed\"; nimba-smi dvfs get shows all; see nimba-smi --help
nimba-smi: FIELD=VALUE: video_clock can only be read; see nimba-smi --help
nimba-smi: FIELD=VALUE: dvfs_mode: expected a number from 0 to 0xffffffff, got \"0x100000000\"; see nimba-smi --help
nimba-smi: FIELD=VALUE: power_gating_3d: expected a number from 0 to 0xffff, got \"65536\"; see nimba-smi --help
nimba-smi: FIELD=VALUE: dvfs_level: expected balance, lowpower, performance, or 0 to 2, got \"3\"; see nimba-smi --help
nimba-smi: FIELD=VALUE: gfx_clock: expected a decimal number from -2147483648 to 2147483647, got \"1.5\"; see nimba-smi --help
nimba-smi: FIELD=VALUE: expected FIELD=VALUE, got \"dvfs_level\"; see nimba-smi --help
nimba-smi: power_mode is set twice; see nimba-smi --help"
}

@test "what the driver does not give is not available, and not set" {
    needs_live_drivers
    sed -i 's/^card = 0$/&\nmissing = ["info\/dvfs_clk_voltage", "info\/vclk", "info\/power_mode"]/' \
        machine.toml
    run --separate-stderr here nimba-smi dvfs get power_mode dvfs_mode gfx_clock video_clock
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" "\
SLOT  FIELD        VALUE
0     power_mode   not available
0     dvfs_mode    0x2
0     gfx_clock    not available
0     video_clock  not available"
    run --separate-stderr here nimba-smi dvfs get video_clock memory_clock --json
    same "$(jq -c '.adapters[0].fields' <<<"$output")" '{"video_clock":null,"memory_clock":1600}'
    run --separate-stderr here_sh 'nimba-smi dvfs set dvfs_mode=1 power_mode=1; s=$?; log; exit $s'
    [ "$status" = 9 ]
    same "$output" ""
    same "$stderr" "nimba-smi: $ADAPTER: the driver does not give power_mode; nothing was written"
    run --separate-stderr here nimba-smi dvfs set --dry-run power_mode=1
    [ "$status" = 9 ]
    same "$output" ""
}

@test "a driver without settings at all is named" {
    needs_live_drivers
    sed -i 's/^card = 0$/&\nmissing = ["info"]/' machine.toml
    for command in "get --csv" "save -"; do
        run --separate-stderr here nimba-smi dvfs $command
        [ "$status" = 3 ]
        same "$stderr" \
            "nimba-smi: $ADAPTER: the driver shows no settings, or the adapter is gone (see dmesg)"
    done
    same "$output" ""
}

@test "settings that are closed to the user are named, and nothing is written" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine default \
        --drivers plain -- sh -c "chmod 444 \$UMOCKDEV_DIR$INFO/dvfs_level; before=\$(cat $INFO/dvfs_level)
        nimba-smi dvfs set dvfs_level=performance power_mode=7; s=\$?
        [ \"\$before\" = \"\$(cat $INFO/dvfs_level)\" ] && cat $INFO/power_mode; exit \$s"
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    same "$stderr" "nimba-smi: $ADAPTER: no permission to write $INFO/dvfs_level: run as root; \
nothing was written"
    same "$output" "power_mode:0x1"
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine default \
        --drivers plain -- sh -c "chmod 0 \$UMOCKDEV_DIR$INFO/dvfs_level; nimba-smi dvfs get dvfs_level dvfs_mode"
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    same "$stderr" "nimba-smi: $ADAPTER: no permission to read $INFO/dvfs_level: run as root"
    [[ ${lines[1]} == "0     dvfs_level  not available" && ${lines[2]} == "0     dvfs_mode   0x"* ]]
}

@test "a node that cannot be read is named" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-sim fault read dvfs_level --directory info --error EIO
        nimba-smi dvfs get dvfs_level dvfs_mode; echo $?; nimba-smi dvfs set dvfs_level=1; s=$?; log; exit $s'
    [ "$status" = 3 ]
    same "$output" "\
SLOT  FIELD       VALUE
0     dvfs_level  not available
0     dvfs_mode   0x2
3"
    same "$stderr" "\
nimba-smi: $ADAPTER: cannot read $INFO/dvfs_level: Input/output error (see dmesg)
nimba-smi: $ADAPTER: the driver does not give dvfs_level; nothing was written
nimba-smi: $ADAPTER: cannot read $INFO/dvfs_level: Input/output error (see dmesg)"
}

@test "a node that makes no sense is named, and no state without it is saved" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-sim fault garbage dvfs_level --directory info
        nimba-sim fault short dvfs_clk_voltage --directory info --bytes 3
        nimba-smi dvfs get dvfs_level dvfs_mode gfx_clock; echo $?; nimba-smi dvfs set dvfs_level=1; echo $?
        nimba-smi dvfs save state.json; s=$?; log; ls state.json 2>/dev/null; exit $s'
    [ "$status" = 3 ]
    same "$output" "\
SLOT  FIELD       VALUE
0     dvfs_level  not available
0     dvfs_mode   0x2
0     gfx_clock   800
3
9"
    same "$stderr" "\
nimba-smi: $ADAPTER: there are no settings in $INFO/dvfs_level (see dmesg)
nimba-smi: $ADAPTER: the driver does not give dvfs_level; nothing was written
nimba-smi: $ADAPTER: there are no settings in $INFO/dvfs_level (see dmesg)"
}

@test "a write that fails is no success" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-sim fault write dvfs_level --directory info --error EIO
        nimba-smi dvfs set dvfs_level=1 dvfs_mode=0'
    [ "$status" = 9 ]
    same "$stderr" \
        "nimba-smi: $ADAPTER: the driver did not take dvfs_level=lowpower; rejected: still balance"
    same "$output" "\
FIELD       BEFORE   ASKED     RESULT
dvfs_mode   0x2      0x0       accepted
dvfs_level  balance  lowpower  rejected: still balance"
}

@test "a driver that goes is named" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-sim fault vanish dvfs_mode --directory info
        nimba-smi dvfs set dvfs_mode=1; echo $?; nimba-sim fault gone --adapter 0; nimba-smi dvfs get'
    [ "$status" = 3 ] || { echo "$status $stderr"; return 1; }
    same "${lines[0]}" 9
    same "$(sed -n 1p <<<"$stderr")" \
        "nimba-smi: $ADAPTER: the driver does not give dvfs_mode; nothing was written"
}

@test "a driver that blocks costs the worker, and it is said that it may have written" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-sim fault block dvfs_level --directory info --ms 60000
        nimba-smi --timeout 3 dvfs get'
    [ "$status" = 7 ] || { echo "$status $stderr"; return 1; }
    same "$output" ""
    [[ $stderr == "nimba-smi: $ADAPTER: worker lost in get_data_from_dvfs_register: no answer \
within 3 s; "* ]]
    # The fourth time is behind the checks.
    run --separate-stderr here_sh 'nimba-sim fault block dvfs_level --directory info --ms 60000 \
        --every 4; nimba-smi --timeout 3 dvfs set dvfs_level=1 --json'
    [ "$status" = 7 ] || { echo "$status $stderr"; return 1; }
    same "$(jq -c '[.fields, .errors[].status]' <<<"$output")" '[[],7,0]'
    [[ $stderr == *"nimba-smi: $ADAPTER: some of the settings may have been written; nimba-smi dvfs \
get shows what they are" ]]
}

@test "a signal waits for what was begun" {
    needs_live_drivers
    # The worker is at the driver when the signal comes, and has written nothing yet.
    run --separate-stderr here_sh '
        in_the_driver() {
            for worker in $(cat "/proc/$1/task/$1/children"); do
                tr "\\0" " " <"/proc/$worker/cmdline" | grep -q -e "--slot 0 " &&
                    find "/proc/$worker/fd" -lname "*/dvfs_level" 2>/dev/null | grep -q . && return
            done
            false
        }
        nimba-sim fault block dvfs_level --directory info --ms 8000 --first 1
        env --default-signal=INT nimba-smi --timeout 60 dvfs set power_mode=7 dvfs_level=1 &
        until in_the_driver "$!" 2>/dev/null; do sleep 0.02; done
        kill -s STOP "$!"
        kill -s INT "$!"
        log
        while in_the_driver "$!" 2>/dev/null; do sleep 0.02; done
        kill -s CONT "$!"
        wait "$!"; echo "$?"; log'
    same "$output$stderr" "\
130
power_mode: 0x7
dvfs_level: lowpower"
}

@test "one of several adapters has to be chosen to be changed" {
    needs_live_drivers
    write_adapter machine.toml qv-m30 0000:02:00.0 1
    run --separate-stderr here_sh 'for command in "dvfs set dvfs_level=1" "dvfs save state" "flag set 1" \
        "flag clear 1"; do nimba-smi --json $command || echo $?; done; log; ls state 2>/dev/null'
    same "$output" $'2\n2\n2\n2'
    same "$(sort -u <<<"$stderr")" "nimba-smi: there are 2 adapters: choose one with --adapter; \
nimba-smi list shows them"
    run --separate-stderr here_sh 'nimba-smi dvfs set --adapter 1 dvfs_level=1 >/dev/null
        nimba-smi dvfs set dvfs_level=2 --adapter 0000:01:00.0 >/dev/null
        nimba-smi dvfs get dvfs_level; nimba-sim commands | wc -l
        nimba-smi dvfs get dvfs_level --adapter 1 --csv'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" "\
SLOT  FIELD       VALUE
0     dvfs_level  performance
1     dvfs_level  lowpower
2
slot,bus_id,field,value
1,0000:02:00.0,dvfs_level,lowpower"
    run --separate-stderr here nimba-smi dvfs set --adapter 2 dvfs_level=1
    [ "$status" = 3 ]
    same "$stderr" \
        "nimba-smi: there is no adapter in slot 2; nimba-smi list shows those that are there"
}

@test "a full disk is named" {
    for command in get "get --csv" "get --json" "set dvfs_level=balance" "set dvfs_level=1 --dry-run"; do
        run --separate-stderr here sh -c "nimba-smi dvfs $command >/dev/full"
        [ "$status" = 1 ] || { echo "$command: $status"; return 1; }
        same "$stderr" "nimba-smi: cannot write to standard output: No space left on device"
    done
}

@test "no adapter at all" {
    for command in get "set dvfs_level=1" "save state.json" "set dvfs_level=1 --dry-run"; do
        run --separate-stderr on no-gpu nimba-smi dvfs $command
        [ "$status" = 3 ]
        same "$output" ""
        [[ $stderr == "nimba-smi: no Nimba or QV adapter found: "* ]]
    done
}

@test "a library without these settings is named, and serves the other commands" {
    for command in "dvfs get" "flag get"; do
        run --separate-stderr smi $command
        [ "$status" = 4 ]
        [[ $stderr == *"/stub_library.so lacks the entry point gpuinfo_select_new_chip: install the \
library that belongs to this nimba-smi" ]]
    done
    run smi list
    [ "$status" = 0 ]
}
