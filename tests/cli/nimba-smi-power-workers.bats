#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Libraries that lack what segments, clocks, sensors, counters and settings need, or die over it.

load nimba-smi.bash

STUB=$NIMBA_STUBS/stub_with_power.so
SECOND="adapter 0000:04:00.0 (Gpu1:QV M-30)"
ADVICE="run with --verbose to see the library's last messages"

@test "a library without segments, clocks, sensors and counters is named" {
    for command in mem clocks sensors usage "clocks --watch 0.01 --count 2"; do
        run --separate-stderr timeout 60 nimba-smi --library "$NIMBA_STUBS/stub_library.so" $command
        [ "$status" = 4 ] || { echo "$command: $status $stderr"; return 1; }
        [[ $stderr == *"/stub_library.so lacks the entry point gpuinfo_set_enable_usage: install the \
library that belongs to this nimba-smi" ]]
    done
}

@test "a library that has them serves all of the commands" {
    for command in mem clocks sensors "usage --interval 0.01" "dvfs get" "flag get"; do
        run --separate-stderr smi $command
        [[ $status == [03] && ${#lines[@]} -gt 1 ]] || { echo "$command: $status $stderr"; return 1; }
    done
    run --separate-stderr smi sensors --csv
    same "$output" "\
slot,bus_id,temperature_celsius,fan0,fan1,fan_speed
0,0000:03:00.0,7,7,7,7"
}

# loses CALL PLACE COMMAND...: a library that aborts in the call costs one of three adapters, and it
# is said where it was lost.
loses() {
    local call=$1 place=$2
    shift 2
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FAULT=1/$call/abort run --separate-stderr smi "$@" --json
    [ "$status" = 7 ] || { echo "$call: $status $stderr"; return 1; }
    grep -qFx "nimba-smi: $SECOND: worker lost in $place: killed by SIGABRT; $ADVICE" \
        <<<"$stderr" || { echo "$stderr"; return 1; }
    same "$(jq -c '[.adapters[].slot]' <<<"$output")" '[0,2]'
}

@test "a library that dies over one adapter leaves the others, whatever the call" {
    for call in segment_init get_segment_info; do
        loses "$call" "$call" mem
    done
    loses gpuinfo_get_jwinfoFD_value_int "gpuinfo_get_jwinfoFD_value_int of eclk" clocks
    loses gpuinfo_get_data_from_dvfs_register gpuinfo_get_data_from_dvfs_register clocks
    loses gpuinfo_get_temparature_value_int gpuinfo_get_temparature_value_int sensors
    loses gpuinfo_get_hwmonFD_value_int "gpuinfo_get_hwmonFD_value_int of fan0_input" sensors
    for call in gpuinfo_set_enable_usage fps_init gpuinfo_get_fps_count get_fps_info \
        bandwidth_init get_bandwidth_info gfxbusy_init get_gpubusy_info; do
        loses "$call" "$call" usage --interval 0.01
    done
    loses gpuinfo_select_new_chip gpuinfo_select_new_chip flag get
    loses get_data_from_dvfs_register get_data_from_dvfs_register dvfs get
}

@test "the library's frame rates are of the time between two readings" {
    NIMBA_STUB_ADAPTERS=1 run --separate-stderr smi --json
    same "$(jq '.adapters[0].usage.flips_per_second' <<<"$output")" null
    NIMBA_STUB_ADAPTERS=1 run --separate-stderr smi --watch 0.01 --count 3 --json
    same "$(jq -c '.adapters[0].usage | [.flips_per_second, .average_per_second]' <<<"$output")" "\
[null,null]
[7,7]
[7,7]"
    NIMBA_STUB_ADAPTERS=1 run --separate-stderr smi usage --interval 0.01 --json
    same "$(jq '.adapters[0].flips_per_second' <<<"$output")" 7
}

@test "a watch goes on without the adapter, and tells once that it was lost" {
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FAULT=1/gpuinfo_get_temparature_value_int/abort \
        run --separate-stderr smi sensors --watch 0.01 --count 3 --csv
    [ "$status" = 7 ]
    same "$stderr" "nimba-smi: $SECOND: worker lost in gpuinfo_get_temparature_value_int: killed by \
SIGABRT; $ADVICE"
    same "$(cut -d, -f2- <<<"$output" | sort | uniq -c | sed 's/^ *//')" "\
3 0,0000:03:00.0,7,7,7,7
3 2,0001:8f:1f.7,7,7,7,7
1 slot,bus_id,temperature_celsius,fan0,fan1,fan_speed"
}

@test "an adapter that is gone is looked for again by every sample of a watch" {
    make_pid_directory
    NIMBA_STUB_ADAPTERS=2 NIMBA_STUB_GONE=1 NIMBA_STUB_FAULT=1/gfx_find_adapter/note \
        run --separate-stderr smi sensors --watch 0.01 --count 3 --csv
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: $SECOND: gone since discovery; run the command again"
    pids_left 3
}
