#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Segments, clocks, sensors and use of the adapters: once and in a watch.

load nimba-smi.bash
load nimba-smi-monitor.bash

# masked: standard input with T for every time.
masked() {
    sed -E 's/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]{12}Z/T/; s/^[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3} /T /'
}

@test "mem shows the segments of the node, each for itself, and their sum" {
    run --separate-stderr on seven-segments nimba-smi mem
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" \
'SLOT  SEGMENT     USED     TOTAL  USE                        SOURCE
0     0        1000 MB   8000 MB  12%  ##..................  segment_info
0     1         200 MB   4000 MB   5%  #...................  segment_info
0     2          30 MB   2000 MB   1%  #...................  segment_info
0     3           4 MB   1000 MB   0%  #...................  segment_info
0     4          50 MB    500 MB  10%  ##..................  segment_info
0     5           6 MB     60 MB  10%  ##..................  segment_info
0     6           0 MB      7 MB   0%  ....................  segment_info
0     all      1290 MB  15567 MB   8%  #...................  segment_info'
}

@test "mem shows the heaps of other chips" {
    run --separate-stderr on qv-m30-heaps nimba-smi mem --csv
    [ "$status" = 0 ]
    same "$output" \
'slot,bus_id,segment,name,used_bytes,total_bytes,source
0,0000:01:00.0,0,heap_invalid,0,0,heaps
0,0000:01:00.0,1,heap_local,268435456,2147483648,heaps
0,0000:01:00.0,2,heap_pcie_unsnoop,50331648,1073741824,heaps
0,0000:01:00.0,3,heap_pcie_snoop,8388608,536870912,heaps'
}

@test "without node and heaps mem sums the allocations up, and sizes are not available" {
    machine 'missing = ["info/segment_info"]' '[[adapter.context]]' 'pid = 4100001' 'handle = 1' \
        '[[adapter.allocation]]' 'handle = 1' 'device = 1' 'size = 5242880' 'segmentid = 1'
    run --separate-stderr on ./machine.toml nimba-smi mem
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output$stderr" \
'SLOT  SEGMENT   USED  TOTAL  USE    SOURCE
0     0        0 MiB    n/a  n/a    allocations
0     1        5 MiB    n/a  n/a    allocations
0     2        0 MiB    n/a  n/a    allocations
0     3        0 MiB    n/a  n/a    allocations
0     all      5 MiB    n/a  n/a    allocations'
    run --separate-stderr on ./machine.toml sh -c 'nimba-smi mem --json |
        jq -c ".adapters[0] | [.source, .unit, .segments[1], .sum]"'
    same "$output" '["allocations","MiB",{"segment":"1","name":null,"used_bytes":5242880,'\
'"total_bytes":null},{"used_bytes":5242880,"total_bytes":null}]'
}

@test "a size that the node does not give is not taken for zero" {
    machine '[adapter.info]' \
        'segment_info = "segment_id:0,total_size:8000000,used_size:2000000\nsegment_id:1,total_size:x\n"'
    run --separate-stderr on ./machine.toml nimba-smi mem --csv
    same "$output" \
'slot,bus_id,segment,name,used_bytes,total_bytes,source
0,0000:01:00.0,0,,2000000000,8000000000,node
0,0000:01:00.0,1,,,,node'
}

# Nodes with texts of their own, and without what they should have.
odd_machine() {
    machine "$@" '[adapter.info]' 'eclk = "0\n"' 'vclk = "-7\n"' 'coreclk = "12 MHz\n"' \
        'dvfs_clk_voltage = "gfx_clock:0\n"' 'dvfs_level = "dvfs_level:odd\n"' 'fan_speed = ""' \
        '[adapter.hwmon]' 'temp1_input = "0 *C\n"' 'fan0_input = "0\n"' 'fan1_input = "none\n"'
}

@test "clocks and sensors that are zero are shown, and those that are not there are not available" {
    odd_machine 'missing = ["info/mclk"]'
    run --separate-stderr on ./machine.toml nimba-smi clocks
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output$stderr" \
'SLOT  ENGINE  VIDEO  MEMORY  CORE  GFX  VOLTAGE  LEVEL
0          0     -7     n/a    12    0      n/a    n/a'
    run --separate-stderr on ./machine.toml nimba-smi sensors
    [ "$status" = 3 ]
    same "$output" \
'SLOT  TEMPERATURE  FAN 0  FAN 1  FAN SPEED
0             0 C      0    n/a        n/a'
    same "$stderr" "nimba-smi: $STEADY: there is no number in \
/sys/bus/pci/devices/0000:01:00.0/hwmon/fan1_input (see dmesg)"
}

@test "figures have units in their names and null where there is none" {
    odd_machine 'missing = ["info/mclk"]'
    run --separate-stderr on ./machine.toml sh -c 'nimba-smi clocks --json | jq -c "del(.time)"'
    same "$output" '{"schema":"nimba-smi.clocks.1","adapters":[{"slot":0,"name":"Gpu0:NimbaK5",'\
'"bus_id":"0000:01:00.0","engine_clock":0,"video_clock":-7,"memory_clock":null,"core_clock":12,'\
'"gfx_clock":0,"gfx_voltage":null,"dvfs_level":null}],"errors":[]}'
    run --separate-stderr on ./machine.toml nimba-smi sensors --csv
    same "$output" \
'slot,bus_id,temperature_celsius,fan0,fan1,fan_speed
0,0000:01:00.0,0,0,,'
}

@test "clocks and sensors of a steady adapter are those of its driver" {
    needs_live_drivers
    run --separate-stderr on steady-adapter nimba-smi clocks --csv
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "${lines[1]}" "0,0000:01:00.0,550,350,1000,600,550,800,balance"
    run --separate-stderr on steady-adapter nimba-smi sensors --csv
    same "${lines[1]}" "0,0000:01:00.0,50,1600,1600,1600"
}

# within PERCENT FIGURE JQ-PATH FILE: the figure of every line is that near.
within() {
    jq -se "length > 0 and all(.[]; ($3) as \$it | \$it != null and
        (\$it - $2 | if . < 0 then -. else . end) <= $2 * $1 / 100)" "$4" >/dev/null ||
        { echo "$3"; cat "$4"; return 1; }
}

@test "usage agrees with the rates of the machine, in a single sample and in a watch" {
    needs_live_drivers
    on steady-adapter nimba-smi usage --interval 0.5 --json >single
    on steady-adapter nimba-smi usage --watch 0.5 --count 4 --json >watch
    [ "$(wc -l <watch)" = 4 ]
    for file in single watch; do
        within 5 120 .adapters[0].flips_per_second "$file"
        # Blits are read behind the time that comes with flips.
        within 60 120 .adapters[0].blits_per_second "$file"
        within 30 240 .adapters[0].frames_per_second "$file"
        within 30 240 .adapters[0].average_per_second "$file"
        within 5 45 .adapters[0].engine_3d_percent "$file"
        within 5 30 .adapters[0].engine_vcp_percent "$file"
        within 5 15 .adapters[0].engine_vpp_percent "$file"
        within 5 6000 '.adapters[0].bandwidth_words[0]' "$file"
        within 5 1000 '.adapters[0].bandwidth_words[10]' "$file"
        within 5 45 '.adapters[0].busy_words[2]' "$file"
        jq -se 'all(.[].adapters[0]; .busy_words[0] == null and .busy_words[6] == null)' "$file"
    done
}

@test "rates of one second that cannot be computed are not available" {
    needs_live_drivers
    machine '[adapter.info]' 'fps_count = "10 5000\n"'
    run --separate-stderr on ./machine.toml sh -c 'nimba-smi usage --interval 0.1 --json |
        jq -c ".adapters[0] | [.flips_per_second, .blits_per_second, .average_per_second]"'
    same "$output" "[null,null,null]"
}

@test "without the driver's counts the frame rate is the library's" {
    needs_live_drivers
    for node in fps_count rxa_blt_scn_cnt; do
        sed "s|^card = 0|&\nmissing = [\"info/$node\"]|" \
            "$NIMBA_BIN/../share/nimba-sim/machines/steady-adapter.toml" >"$node.toml"
    done
    on ./fps_count.toml nimba-smi usage --watch 0.5 --count 2 --json >out
    within 5 120 .adapters[0].flips_per_second out
    jq -se 'all(.[].adapters[0]; .blits_per_second == null and .frames_per_second == null)' out
    on ./rxa_blt_scn_cnt.toml nimba-smi usage --interval 0.5 --json >out
    within 5 120 .adapters[0].flips_per_second out
    jq -e '.adapters[0] | .blits_per_second == null and .average_per_second == null' out
}

@test "without a kernel-interface library the driver's own counts are shown" {
    needs_live_drivers
    { echo 'kernel_interface = []'; grep -v '^#' "$NIMBA_BIN/../share/nimba-sim/machines/steady-adapter.toml"; } \
        >machine.toml
    run --separate-stderr on ./machine.toml nimba-smi usage --interval 0.3
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: $STEADY: its kernel-interface library is missing or unusable: \
bandwidth and busy words are not available"
    [[ ${lines[1]} =~ ^0\ +1[12][0-9]\.[0-9]\ .*%\ +n/a\ +n/a$ ]] || { echo "${lines[1]}"; return 1; }
}

@test "a watch shows a line for each sample, below one header" {
    run --separate-stderr on three-adapters nimba-smi sensors --watch 0.05 --count 2
    [ "$status" = 0 ]
    [ "${#lines[@]}" = 7 ]
    [[ ${lines[0]} == "TIME          SLOT  TEMPERATURE  "* ]]
    [[ ${lines[1]} =~ ^[0-9:.]{12}\ \ 0\ .*\ C ]]
    [[ ${lines[6]} =~ ^[0-9:.]{12}\ \ 2\ .*\ C ]]
    run --separate-stderr on three-adapters nimba-smi mem --watch 0.05 --count 2 --csv --adapter 0
    [[ ${lines[0]} == "time,slot,bus_id,segment,name,used_bytes,total_bytes,source" ]]
    [[ $(masked <<<"${lines[1]}") == "T,0,0000:01:00.0,0,,"*",node" ]]
    run --separate-stderr on three-adapters sh -c 'nimba-smi clocks --watch 0.05 --count 3 --json |
        jq -c "[.schema, (.adapters | length)]"'
    same "$output" '["nimba-smi.clocks.1",3]
["nimba-smi.clocks.1",3]
["nimba-smi.clocks.1",3]'
}

@test "accounting that another tool switched off is on again for the next sample" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        mkfifo lines
        nimba-sim commands --clear
        nimba-smi usage --watch 0.3 --count 3 --json >lines &
        exec 7<lines
        read -r line <&7; echo "$line" >out
        nimba-smi ps >/dev/null
        nimba-sim commands >commands
        cat <&7 >>out
        wait "$!" && cat /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" 0
    # The other tool has switched it off while the watch went on.
    grep -q 'enable_usage ok "0' commands || { cat commands; return 1; }
    [ "$(wc -l <out)" = 3 ]
    within 5 45 .adapters[0].engine_3d_percent out
}

@test "a stop signal ends a watch in order" {
    needs_live_drivers
    for signal in HUP INT TERM; do
        run --separate-stderr on steady-adapter env --default-signal=HUP,INT,TERM bash -c '
            rm -f lines; mkfifo lines
            env --default-signal=HUP,INT,TERM nimba-smi clocks --watch 600 --json >lines &
            read -r line <lines
            kill -s "$1" "$!"
            wait "$!" && echo "$line" | jq -c ".adapters | length"
            cat /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage' bash "$signal"
        same "$output$stderr" $'1\n0'
    done
}

@test "a single sample that is interrupted ends by the signal, and prints nothing" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        env --default-signal=INT nimba-smi usage --interval 600 &
        until [ "$(cat '"$INFO"'/enable_usage)" = 1 ]; do sleep 0.02; done
        kill -s INT "$!"; wait "$!"; echo "$?"; cat '"$INFO"'/enable_usage'
    same "$output$stderr" $'130\n0'
}

@test "a reader that goes ends a watch, and accounting is off" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        env --default-signal=PIPE nimba-smi clocks --watch 0.02 --csv | head -n 2 | wc -l
        echo "${PIPESTATUS[0]}"; cat '"$INFO"'/enable_usage'
    same "$output$stderr" $'2\n141\n0'
    # To one that ignores the signal it is an error.
    run --separate-stderr on steady-adapter bash -c '
        trap "" PIPE; nimba-smi clocks --watch 0.02 --csv | head -n 1 | wc -l; echo "${PIPESTATUS[0]}"'
    same "$output" $'1\n1'
    same "$stderr" "nimba-smi: cannot write to standard output: Broken pipe"
    run --separate-stderr on steady-adapter sh -c 'nimba-smi clocks --watch 0.02 --csv >/dev/full'
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot write to standard output: No space left on device"
}

@test "without an adapter there is a document that says why" {
    for watch in "" "--watch 1"; do
        run --separate-stderr on no-gpu nimba-smi mem $watch
        [ "$status" = 3 ]
        same "$output" ""
        run --separate-stderr on no-gpu sh -c "nimba-smi sensors $watch --json |
            jq -c '[.adapters, .errors[0].status]'"
        same "$output" "[[],3]"
    done
    run --separate-stderr on steady-adapter nimba-smi usage --adapter 1
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: there is no adapter in slot 1; nimba-smi list shows those that are there"
}
