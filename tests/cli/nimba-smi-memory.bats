#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi ps and alloc on simulated machines.

load nimba-smi.bash
load live_drivers.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

# make_machine: machine.toml, a legacy and a VA adapter whose allocations are known. Device 0x30 of
# the first has no context, and device 0x12 has two.
make_machine() {
    cd "$BATS_TEST_TMPDIR"
    cat >machine.toml <<'TOML'
description = "Two adapters with a few allocations"

[[process]]
pid = 4100001
name = "/usr/bin/compositor"

[[process]]
pid = 4100002
name = '=cmd|"A1", with marks'

[[adapter]]
chip = "qv-m30"
bus_id = "0000:01:00.0"
card = 0
driver = "legacy"

[adapter.debug]
"devices/1/1" = "pid = 4100001\nhandle = 10\n"
"devices/2/2" = "pid = 4100002\nhandle = 12\n"
"devices/3/3" = "pid = 4100001\nhandle = 12\n"
"devices/4/4" = "pid = 4100003\nhandle = 14\n"
"allocations/1/info" = "handle=a1\ndevice=10\nsize=1048576\nsegmentid=0\nwidth=512\nheight=512\n"
"allocations/2/info" = "handle=a2\ndevice=10\nsize=3221225472\nsegmentid=1\nat_type=5\n"
"allocations/3/info" = "handle=a3\ndevice=12\nsize=4096\nsegmentid=7\nhw_format=28\n"
"allocations/4/info" = "handle=a4\ndevice=30\nsize=1536\nsegmentid=-1\n"

[[adapter]]
chip = "nimba-k1"
bus_id = "0001:02:00.0"
card = 1

[adapter.debug]
"devices/1/info" = "pid = 4100001\nhandle = 10\n"
"allocations/1/info" = "handle=1\ndevice=16\nsize=2097152\nsegmentid=0\ngpu_virt_addr=68719476736\n"
TOML
}

# memory ARGUMENT...: nimba-smi on that machine.
memory() {
    on ./machine.toml nimba-smi "$@"
}

@test "ps sums the memory of each device, largest first" {
    make_machine
    run --separate-stderr memory ps
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" 'SLOT  DEVICE  PID               ALLOCS  SEG 0  SEG 1  SEG 4+  SEG none   MEMORY  PROCESS
0     0x10    4100001                2  1 MiB  3 GiB     0 B       0 B  3.0 GiB  /usr/bin/compositor
1     0x10    4100001                1  2 MiB    0 B     0 B       0 B    2 MiB  /usr/bin/compositor
0     0x12    4100002, 4100001       1    0 B    0 B   4 KiB       0 B    4 KiB  =cmd|"A1", with marks, /usr/bin/compositor
0     0x30    -                      1    0 B    0 B     0 B   1.5 KiB  1.5 KiB  -
0     0x14    4100003                0    0 B    0 B     0 B       0 B      0 B  -
all                                  5  3 MiB  3 GiB   4 KiB   1.5 KiB  3.0 GiB'
}

@test "ps --json has the whole document" {
    make_machine
    run --separate-stderr memory ps --json --adapter 1
    [ "$status" = 0 ]
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.ps.1","adapters":['\
'{"slot":1,"name":"Gpu1:Nimba-K1","bus_id":"0001:02:00.0"}],"devices":['\
'{"slot":1,"bus_id":"0001:02:00.0","device":"0x10",'\
'"processes":[{"pid":4100001,"name":"/usr/bin/compositor"}],"allocations":1,"bytes":2097152,'\
'"segments":{"0":2097152,"1":0,"2":0,"3":0,"4+":0,"none":0}}],'\
'"total":{"allocations":1,"bytes":2097152,'\
'"segments":{"0":2097152,"1":0,"2":0,"3":0,"4+":0,"none":0}},"errors":[]}'
}

@test "ps --csv quotes what needs it, and --top bounds the rows" {
    make_machine
    run --separate-stderr memory ps --csv --top 3
    [ "$status" = 0 ]
    same "$output" 'slot,bus_id,device,pid,process,allocations,bytes,segment_0,segment_1,'\
'segment_2,segment_3,segment_4+,segment_none
0,0000:01:00.0,0x10,4100001,/usr/bin/compositor,2,3222274048,1048576,3221225472,0,0,0,0
1,0001:02:00.0,0x10,4100001,/usr/bin/compositor,1,2097152,2097152,0,0,0,0,0
0,0000:01:00.0,0x12,"4100002, 4100001","=cmd|""A1"", with marks, /usr/bin/compositor",1,4096,0,0,'\
'0,0,4096,0'
    run --separate-stderr memory ps --top 1
    same "${#lines[@]}" 3
    [[ ${lines[2]} == "all "*" 5 "*"3.0 GiB"* ]]
}

@test "alloc lists every allocation with its totals" {
    make_machine
    run --separate-stderr memory alloc
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" 'SLOT  HANDLE  DEVICE  PID                  SIZE  SEG  SHAPE    FORMAT  TYPE  PROCESS
0     0xa2    0x10    4100001             3 GiB  1    0x0      0       5     /usr/bin/compositor
1     0x1     0x10    4100001             2 MiB  0    0x0      0       0     /usr/bin/compositor
0     0xa1    0x10    4100001             1 MiB  0    512x512  0       0     /usr/bin/compositor
0     0xa3    0x12    4100002, 4100001    4 KiB  7    0x0      28      0     =cmd|"A1", with marks, /usr/bin/compositor
0     0xa4    0x30    -                 1.5 KiB  -    0x0      0       0     -
5 allocations, 3.0 GiB'
}

# handles ARGUMENT...: the handles that alloc lists with these arguments.
handles() {
    memory alloc --json "$@" | jq -r '[.allocations[].handle] | join(" ")'
}

@test "alloc filters and sorts" {
    make_machine
    same "$(handles --pid 4100002)" "0xa3"
    same "$(handles --process compositor)" "0xa2 0x1 0xa1 0xa3"
    same "$(handles --process nobody)" ""
    same "$(handles --device 0x10 --adapter 0)" "0xa2 0xa1"
    same "$(handles --device 48)" "0xa4"
    same "$(handles --segment 0 --sort size:asc)" "0xa1 0x1"
    same "$(handles --segment=-1)" "0xa4"
    same "$(handles --min-size 1MiB)" "0xa2 0x1 0xa1"
    same "$(handles --min-size 4097 --adapter 0000:01:00.0)" "0xa2 0xa1"
    same "$(handles --sort handle:desc --top 2)" "0xa4 0xa3"
    same "$(handles --sort width --top 1)" "0xa1"
    same "$(handles --sort process)" "0xa4 0xa1 0xa2 0x1 0xa3"
}

@test "alloc --json and --csv have every field" {
    make_machine
    run --separate-stderr memory alloc --json --adapter 0001:02:00.0
    [ "$status" = 0 ]
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.alloc.1","adapters":['\
'{"slot":1,"name":"Gpu1:Nimba-K1","bus_id":"0001:02:00.0"}],"allocations":['\
'{"slot":1,"bus_id":"0001:02:00.0","processes":[{"pid":4100001,"name":"/usr/bin/compositor"}],'\
'"handle":"0x1","device":"0x10","width":0,"height":0,"pitch":0,"bit_cnt":0,"secured":0,'\
'"size":2097152,"tile":0,"cpu_visible":0,"cache_type":0,"pool_type":0,"at_type":0,"segmentid":0,'\
'"hw_format":0,"compress_format":0,"bl_slot_index":0,"gpu_virt_addr":"0x0","imported":0,'\
'"fb_offset":0,"share":0}],"matched":{"allocations":1,"bytes":2097152},'\
'"all":{"allocations":1,"bytes":2097152},"errors":[]}'
    run --separate-stderr memory alloc --csv --min-size 2GiB
    same "$output" 'slot,bus_id,pid,process,handle,device,width,height,pitch,bit_cnt,secured,size,'\
'tile,cpu_visible,cache_type,pool_type,at_type,segmentid,hw_format,compress_format,bl_slot_index,'\
'gpu_virt_addr,imported,fb_offset,share
0,0000:01:00.0,4100001,/usr/bin/compositor,0xa2,0x10,0,0,0,0,0,3221225472,0,0,0,0,5,1,0,0,0,0x0,0,'\
'0,0'
}

@test "alloc reads every page" {
    for machine in forty-allocations=40 sixty-devices=600; do
        run --separate-stderr on "${machine%=*}" nimba-smi alloc --json
        [ "$status" = 0 ]
        same "$(jq -c '[(.allocations | length), .all.allocations,
            ([.allocations[].handle] | unique | length)]' <<<"$output")" \
            "[${machine#*=},${machine#*=},${machine#*=}]"
    done
}

@test "contexts beyond those that the interface tells are a remark, and the totals are whole" {
    run --separate-stderr on sixty-devices nimba-smi ps --json
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-GT-K3): 60 device contexts are \
open, of which the library tells 50: the processes of the others are not known"
    same "$(jq -c '[.total.allocations, (.devices | length),
        ([.devices[] | select(.processes == [])] | length), ([.devices[].bytes] | add) == .total.bytes,
        [.errors[].status]]' <<<"$output")" '[600,60,10,true,[0]]'
    run --separate-stderr on fifty-contexts nimba-smi ps --json
    same "$stderr" ""
    same "$(jq '.devices | length' <<<"$output")" 100
}

@test "an adapter without allocations has a total of nothing" {
    run --separate-stderr on fifty-contexts nimba-smi alloc
    [ "$status" = 0 ]
    same "$output" "\
SLOT  HANDLE  DEVICE  PID  SIZE  SEG  SHAPE  FORMAT  TYPE  PROCESS
0 allocations, 0 B"
    run --separate-stderr on three-adapters nimba-smi ps
    [ "$status" = 0 ]
    same "$output" "\
SLOT  DEVICE  PID  ALLOCS  MEMORY  PROCESS
all                     0     0 B"
}

@test "no adapter, another adapter, a machine without adapters" {
    make_machine
    for command in ps alloc; do
        run --separate-stderr memory "$command" --adapter 2
        [ "$status" = 3 ]
        same "$output" ""
        same "$stderr" \
            "nimba-smi: there is no adapter in slot 2; nimba-smi list shows those that are there"
        run --separate-stderr memory "$command" --adapter 09:00.0 --json
        [ "$status" = 3 ]
        same "$(jq -r '.errors[].message' <<<"$output")" \
            "there is no adapter at 0000:09:00.0; nimba-smi list shows those that are there"
        run --separate-stderr on no-gpu nimba-smi "$command"
        [ "$status" = 3 ]
        same "$stderr" "nimba-smi: no Nimba or QV adapter found: check that the card is seated \
(lspci) and its driver is loaded (dmesg)"
    done
}

@test "allocations that are closed to the user are named" {
    make_machine
    sed -i '0,/driver = "legacy"/s//driver = "legacy"\nunreadable = ["debug\/allocations\/2\/info"]/' \
        machine.toml
    NIMBA_SIM_DRIVERS=plain run --separate-stderr as_ordinary_user timeout 60 \
        nimba-sim run --machine /dev/stdin -- nimba-smi ps <machine.toml
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:QV M-30): no permission to read \
/sys/kernel/debug/dri/0/qv/allocations/2/info: run as root"
    same "${lines[1]}" "1     0x10    4100001       1  2 MiB   2 MiB  /usr/bin/compositor"
}

@test "a directory of allocations that is closed to the user is named" {
    make_machine
    NIMBA_SIM_DRIVERS=plain run --separate-stderr as_ordinary_user timeout 60 \
        nimba-sim run --machine forty-allocations -- sh -c \
        'd=$UMOCKDEV_DIR/sys/kernel/debug/dri/0/jw/allocations; chmod 0 $d; nimba-smi alloc; s=$?
        chmod 700 $d; exit $s'
    [ "$status" = 6 ]
    same "$output" ""
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:NimbaK2): no permission to read \
/sys/kernel/debug/dri/0/jw/allocations: run as root"
}

@test "a driver that shows no allocations is named, and one without contexts has nameless rows" {
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on default sh -c \
        'rm -r "$UMOCKDEV_DIR/sys/kernel/debug/dri/0/jw/allocations"; nimba-smi ps'
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-K1): there is no directory \
/sys/kernel/debug/dri/0/jw/allocations: the driver does not show its allocations, or the adapter is \
gone (see dmesg)"
    make_machine
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on ./machine.toml sh -c \
        'rm -r "$UMOCKDEV_DIR/sys/kernel/debug/dri/1/jw/devices"; nimba-smi ps --adapter 1'
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: adapter 0001:02:00.0 (Gpu1:Nimba-K1): there is no directory \
/sys/kernel/debug/dri/1/jw/devices: the driver does not show its device contexts, or the adapter is \
gone (see dmesg)"
    same "$output" "\
SLOT  DEVICE  PID  ALLOCS  SEG 0  MEMORY  PROCESS
1     0x10    -         1  2 MiB   2 MiB  -
all                     1  2 MiB   2 MiB"
}

# one_allocation TEXT: one-allocation.toml, an adapter whose only allocation has this info node, in
# TOML's notation.
one_allocation() {
    cd "$BATS_TEST_TMPDIR"
    printf '%s\n' 'description = "One allocation"' '[[adapter]]' 'chip = "nimba-k1"' \
        'bus_id = "0000:01:00.0"' 'card = 0' '[adapter.debug]' \
        '"devices/1/info" = "pid = 4100001\nhandle = 10\n"' \
        "\"allocations/1/info\" = \"$1\"" >one-allocation.toml
}

@test "numbers that the library cannot take are named" {
    one_allocation 'handle=80000000\n'
    run --separate-stderr on ./one-allocation.toml nimba-smi alloc
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-K1): the driver shows an allocation \
with a handle or device beyond 32 bits, which the library cannot read"
    one_allocation 'handle=1\ndevice=x\n'
    run --separate-stderr on ./one-allocation.toml nimba-smi ps
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-K1): the driver shows an allocation \
with a handle or device without digits, which the library cannot read"
    one_allocation 'handle=1\n'
    sed -i 's/handle = 10/handle = ffffffff/' one-allocation.toml
    run --separate-stderr on ./one-allocation.toml nimba-smi ps
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-K1): the driver shows a device \
context with a handle beyond 32 bits, which the library cannot read"
    same "${lines[1]}" "0     0x0     -         1     0 B  -"
}

@test "a library that ends the worker has its own line repeated, and the accounting is off" {
    one_allocation "width=$(printf '1%.0s' {1..200})\\n"
    run --separate-stderr on ./one-allocation.toml sh -c \
        'nimba-smi alloc; s=$?; cat /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage; exit $s'
    [ "$status" = 7 ]
    [[ $stderr == "nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-K1): worker lost in \
get_allocation_raw_list: killed by SIGABRT; it said \"libnimba_mgmt_interface: "*"\"" ]]
    same "$output" 0
}

@test "usage accounting is off again, also when there is nothing to read" {
    for machine in default forty-allocations; do
        run on "$machine" sh -c 'nimba-smi ps >/dev/null 2>&1
            cat /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage'
        same "$output" 0
    done
}

@test "a driver that blocks is given up" {
    needs_live_drivers
    run --separate-stderr on forty-allocations sh -c \
        'nimba-sim fault block "allocations/*/info" --ms 20000; nimba-smi --timeout 3 alloc'
    [ "$status" = 7 ]
    [[ $stderr == "nimba-smi: adapter 0000:01:00.0 (Gpu0:NimbaK2): worker lost in \
get_allocation_raw_list: no answer within 3.04 s; the driver may be blocked: see dmesg, or allow \
more with --timeout" ]]
}

@test "a node that breaks off and a listing that fails are named" {
    needs_live_drivers
    local nodes=/sys/kernel/debug/dri/0/jw/allocations
    run --separate-stderr on forty-allocations sh -c '
        nimba-sim fault read allocations/7/info --bytes 10; nimba-smi alloc; echo $?
        nimba-sim fault --clear; nimba-sim fault list allocations --entries 20; nimba-smi ps; echo $?'
    same "$output" $'3\n3'
    local told="nimba-smi: adapter 0000:01:00.0 (Gpu0:NimbaK2): cannot read"
    same "$stderr" "$told $nodes/7/info: Input/output error (see dmesg)
$told $nodes: Input/output error (see dmesg)"
}

@test "a machine without the kernel-interface library shows its memory, with a remark" {
    make_machine
    sed -i '1a kernel_interface = []' machine.toml
    run --separate-stderr memory ps --adapter 1
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: adapter 0001:02:00.0 (Gpu1:Nimba-K1): its kernel-interface library \
is missing or unusable; video memory is shown all the same"
    same "${lines[1]}" "1     0x10    4100001       1  2 MiB   2 MiB  /usr/bin/compositor"
}

@test "a process name cannot command the terminal" {
    make_machine
    printf '[[process]]\npid = 4100003\nname = "\\u001b[31mred\\nline"\n' >>machine.toml
    run --separate-stderr memory ps --adapter 0
    [ "$status" = 0 ]
    [[ ${lines[4]} == *'  \x1b[31mred\x0a' ]]
    [[ $(memory ps --adapter 0 --csv | tail -1) == *',\x1b[31mred\x0a,0,'* ]]
    # Of a name of several lines the library tells the first.
    same "$(memory ps --adapter 0 --json | jq '.devices[3].processes[0].name')" \
        '"\u001b[31mred\n"'
}

@test "what the library lists twice counts once" {
    run --separate-stderr smi alloc --json
    [ "$status" = 0 ]
    same "$(jq -c '[[.allocations[] | [.handle, .device, .size]], .all]' <<<"$output")" '[['\
'["0x1","0x10",2147483648],["0x2","0x10",4096],["0xfffffffe","0xffffffff",1]],'\
'{"allocations":3,"bytes":2147487745}]'
}

@test "a chip that the library does not know has no memory to show" {
    NIMBA_STUB_INIT=-1 NIMBA_STUB_DEBUG_DIR='' run --separate-stderr smi ps
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" "nimba-smi: adapter 0000:03:00.0 (Gpu0:Nimba-K1): the library does not know \
where its driver shows its memory: install the library that knows the chip"
}

# calls_of COMMAND...: what is called of the library behind discovery, a call each line.
calls_of() {
    run --separate-stderr smi --verbose --timeout 3 "$@"
    sed -n 's/^stub: \(gfx_global\|get_alloc\|get_dev\|get_mem\)/\1/p' <<<"$stderr" | paste -sd ' '
}

@test "the adapter is left at the end, also when the library fails" {
    same "$(calls_of ps)" "gfx_global_init get_allocation_raw_list get_device_pid_maps \
gfx_global_exit"
    same "$(calls_of leaks --count 2 --interval 0.01)" "gfx_global_init get_memleak_info \
get_device_pid_maps get_memleak_info get_device_pid_maps gfx_global_exit"
    export NIMBA_STUB_DEBUG_DIR=''
    same "$(calls_of alloc)" "gfx_global_init gfx_global_exit"
    unset NIMBA_STUB_DEBUG_DIR
    for how in throw throw-number; do
        export NIMBA_STUB_FAULT=0/get_allocation_raw_list/$how
        same "$(calls_of ps)" "gfx_global_init get_allocation_raw_list gfx_global_exit"
    done
    # What a lost worker leaves on, another one switches off.
    for how in abort hang; do
        export NIMBA_STUB_FAULT=0/get_allocation_raw_list/$how
        same "$(calls_of ps)" "gfx_global_init get_allocation_raw_list gfx_global_init \
gfx_global_exit"
    done
}

@test "options of one command are no options of another" {
    for arguments in "version --csv" "list --top 3" "version --adapter 0" "ps --sort size" \
        "ps --min-size 1" "alloc --interval 1" "leaks --pid 1"; do
        run --separate-stderr smi $arguments
        [ "$status" = 2 ]
        same "${#stderr_lines[@]}" 1
    done
}
