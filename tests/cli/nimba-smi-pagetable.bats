#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi pagetable on simulated machines.

load nimba-smi.bash
load live_drivers.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

# What the library prints about page tables that it cannot read.
UNREADABLE="The function is being tested on this Chip"

# make_machine DUMP: machine.toml, a process with this dump of page tables, in TOML's notation, and
# with two allocations.
make_machine() {
    cd "$BATS_TEST_TMPDIR"
    cat >machine.toml <<TOML
description = "One process with page tables"

[[process]]
pid = 4100001
name = "viewer"

[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 0

[[adapter.context]]
pid = 4100001
handle = 1
vm_info = "$1"

[[adapter.allocation]]
handle = 0xa1
device = 1
vm_info = "=====vm node info=====\\ndevice_pid = 4100001\\ngpu_va = 100000000\\nsize = 3000\\n"
TOML
}

TABLES='0:0: entry addr:10000000, buffer:pt0\n1:4: entry addr:10001000, buffer:pt1\n2:2048: entry addr:10002000, buffer:pt2\n'

# tables ARGUMENT...: nimba-smi pagetable on that machine.
tables() {
    on ./machine.toml nimba-smi pagetable "$@"
}

@test "pagetable sums what each process maps" {
    run --separate-stderr on default nimba-smi pagetable
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "\
PID      L0  L1  L2  PAGES L0  PAGES L1  PAGES L2   4 KiB   64 KiB  2 MiB    SEG 0   SEG 1   MAPPED  PROCESS
4100001   1   1   2         0         2        10  20 KiB  320 KiB  4 MiB  4.3 MiB  80 KiB  4.3 MiB  viewer
all       1   1   2         0         2        10  20 KiB  320 KiB  4 MiB  4.3 MiB  80 KiB  4.3 MiB"
    run --separate-stderr on page-tables nimba-smi pagetable --pid 4100002
    [ "$status" = 0 ]
    [[ ${lines[1]} == "4100002   4  40  400  20000 "* ]]
}

@test "pagetable shows the tree, down to a depth" {
    run --separate-stderr on default nimba-smi pagetable --pid 4100001 --tree
    [ "$status" = 0 ]
    same "$output" "\
process 4100001 (viewer)
level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0_0
  level 1  index 4  0x100000000-0x13fffffff  table 0x10001000  buffer pt1_4
    0x100000000-0x1003fffff  2 x 2 MiB  segment 0  -> 0x1000000
    level 2  index 2050  0x100400000-0x1005fffff  table 0x10002000  buffer pt2_2050
      0x100400000-0x10043ffff  4 x 64 KiB  segment 0  -> 0x1400000
      0x100440000-0x10044ffff  1 x 64 KiB  segment 1  -> 0x1440000
    level 2  index 2051  0x100600000-0x1007fffff  table 0x10003000  buffer pt2_2051
      0x100600000-0x100603fff  4 x 4 KiB  segment 1  snooped  -> 0x1600000
      0x100604000-0x100604fff  1 x 4 KiB  segment 0  snooped  -> 0x1604000"
    run --separate-stderr on default nimba-smi pagetable --tree --depth 0
    same "${#lines[@]}" 2
    run --separate-stderr on page-tables nimba-smi pagetable --tree --depth 2 --pid 4100002
    same "${#lines[@]}" 445
}

@test "pagetable finds what maps an address" {
    run --separate-stderr on default nimba-smi pagetable --va 0x100400123
    [ "$status" = 0 ]
    same "$output" "\
process 4100001 (viewer): 0x100400123 is mapped
  level 0  index 0  0x0-0x7fffffffff  table 0x10000000  buffer pt0_0
    level 1  index 4  0x100000000-0x13fffffff  table 0x10001000  buffer pt1_4
      level 2  index 2050  0x100400000-0x1005fffff  table 0x10002000  buffer pt2_2050
        page 0  0x100400000-0x10040ffff  64 KiB  segment 0
  physical address  0x1400123
  allocation        0x2  0x100400000-0x10043ffff  256 KiB  offset 0x123"
    run --separate-stderr on default nimba-smi pagetable --va 0x100400123 --json
    same "$(jq -c '.processes[0] | [.mapped, .page.physical, (.path | length),
        .allocations[0].handle, .allocations[0].offset]' <<<"$output")" \
        '[true,"0x1400123",3,"0x2",291]'
}

@test "an address that is not mapped is an answer" {
    run --separate-stderr on default nimba-smi pagetable --va 0x1004f0000
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$(tail -n 4 <<<"$output")" "\
        the path ends here: its sub-table has no entry for the address
  mapped below      0x100000000-0x10044ffff  4.3 MiB
  mapped above      0x100600000-0x100604fff  20 KiB
  allocation        none has the address"
    run --separate-stderr on default nimba-smi pagetable --va 0 --json
    [ "$status" = 0 ]
    same "$(jq -c '.processes[0] | [.mapped, .page, .below, .above.begin]' <<<"$output")" \
        '[false,null,null,"0x100000000"]'
}

@test "pagetable draws a map, without colours where nobody sees them" {
    run --separate-stderr on default nimba-smi pagetable --map
    [ "$status" = 0 ]
    same "$output" "\
process 4100001 (viewer): 4.3 MiB mapped in 5 stretches of like pages
0x100000000  ########################################       4 MiB  segment 0, 2 MiB pages, allocation 0x1
0x100400000  ##                                           256 KiB  segment 0, 64 KiB pages, allocation 0x2
0x100440000  #                                             64 KiB  segment 1, 64 KiB pages, allocation 0x3
0x100450000  ................                             1.7 MiB  not mapped
0x100600000  #                                             16 KiB  segment 1, 4 KiB pages, snooped, allocation 0x4
0x100604000  #                                              4 KiB  segment 0, 4 KiB pages, snooped, allocation 0x5"
    run --separate-stderr on page-tables nimba-smi pagetable --map --pid 4100002
    ((${#lines[@]} <= 64))
    [[ $output == *"folded"* ]]
    run --separate-stderr on page-tables nimba-smi pagetable --map --json
    same "$(jq -c '[.processes[].patches | length <= 32]' <<<"$output")" '[true,true]'
}

@test "the map is coloured on a terminal, unless NO_COLOR is set" {
    run on default env -u NO_COLOR TERM=xterm script -qec "nimba-smi pagetable --map" /dev/null
    [[ $output == *$'\e[36m####'* ]]
    run on default env NO_COLOR=1 TERM=xterm script -qec "nimba-smi pagetable --map" /dev/null
    [[ $output == *"####"* && $output != *$'\e['* ]]
    run on default env -u NO_COLOR TERM=dumb script -qec "nimba-smi pagetable --map" /dev/null
    [[ $output == *"####"* && $output != *$'\e['* ]]
}

@test "the bars of the map are shortened for a narrow terminal" {
    local map="nimba-smi pagetable --map"
    run on default env NO_COLOR=1 TERM=xterm script -qec "stty cols 90; $map" /dev/null
    [[ ${lines[1]} == "0x100000000  ################       4 MiB  segment 0, "* ]]
    run on default env NO_COLOR=1 TERM=xterm script -qec "stty cols 40; $map" /dev/null
    [[ ${lines[1]} == "0x100000000  ##########       4 MiB  segment 0, "* ]]
}

@test "the SVG picture is well-formed, whatever a process calls itself" {
    cd "$BATS_TEST_TMPDIR"
    run --separate-stderr on page-tables nimba-smi pagetable --svg all.svg
    [ "$status" = 0 ]
    same "$output" ""
    xmllint --noout all.svg
    make_machine "$TABLES"'2:0 Snoop:0 Segment:0 LargePage:0 Addr:1000\n'
    sed -i 's/name = "viewer"/name = "<a\&\\"b\\u001b>"/' machine.toml
    run --separate-stderr tables --svg -
    [ "$status" = 0 ]
    xmllint --noout - <<<"$output"
    [[ $output == *"GPU address space of process 4100001 (&lt;a&amp;&quot;b"* ]]
}

@test "a picture that cannot be written leaves the one before" {
    mkdir "$BATS_TEST_TMPDIR/pictures"
    cd "$BATS_TEST_TMPDIR/pictures"
    echo before >picture.svg
    run --separate-stderr on page-tables bash -c \
        'trap "" XFSZ; ulimit -f 16; nimba-smi pagetable --svg picture.svg'
    [ "$status" = 1 ] || { echo "$status $stderr"; return 1; }
    same "$stderr" "nimba-smi: cannot write picture.svg: File too large"
    same "$(cat picture.svg)" before
    same "$(ls)" picture.svg
    run --separate-stderr on default nimba-smi pagetable --svg absent/picture.svg
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot write absent/picture.svg: No such file or directory"
    run --separate-stderr on default nimba-smi pagetable --svg /dev/full
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot write /dev/full: No space left on device"
    [ -c /dev/full ]
}

@test "--json and --csv have every entry" {
    run --separate-stderr on page-tables nimba-smi pagetable --json
    [ "$status" = 0 ]
    same "$(jq -c '[.schema, .split, (.processes | length), (.entries | length),
        ([.entries[] | select(.kind == "page")] | length), (.allocations | length), .errors]' \
        <<<"$output")" '["nimba-smi.pagetable.1",[9,9,9,9,12],2,23200,22748,36,[]]'
    make_machine "$TABLES"'2:17 Snoop:1 Segment:3 LargePage:0 Addr:1a2b3000\n'
    run --separate-stderr tables --csv
    [ "$status" = 0 ]
    same "$output" "\
space,pid,process,kind,level,index,parent_level,parent_index,va,size,segment,snoop,large_page,address,buffer,handle
0,4100001,viewer,table,0,0,,,0x0,549755813888,,,,0x10000000,pt0,
0,4100001,viewer,table,1,4,,,0x100000000,1073741824,,,,0x10001000,pt1,
0,4100001,viewer,table,2,2048,,,0x100000000,2097152,,,,0x10002000,pt2,
0,4100001,viewer,page,2,17,2,2048,0x100011000,4096,3,1,0,0x1a2b3000,,
,4100001,viewer,allocation,,,,,0x100000000,12288,,,,,,0xa1"
}

@test "addresses beyond 31 bits, and texts in their place, are shown" {
    make_machine "$TABLES"'2:0 Snoop:0 Segment:0 LargePage:0 Addr:fedcba9876543000\n2:1 Snoop:0 Segment:0 LargePage:0 Addr:lost\u001b[2J\n'
    run --separate-stderr tables --tree
    [ "$status" = 0 ]
    same "$(tail -n 2 <<<"$output")" "\
      0x100000000-0x100000fff  1 x 4 KiB  segment 0  -> 0xfedcba9876543000
      0x100001000-0x100001fff  1 x 4 KiB  segment 0  -> \"lost\\x1b[2J\""
    same "$(tables --json | jq -c '[.entries[] | select(.kind == "page").address]')" \
        '["0xfedcba9876543000",null]'
}

@test "an address that the library may have cut is shown as its text" {
    local digits
    digits=$(printf '%044d' 0)
    make_machine "$TABLES""2:0 Snoop:0 Segment:0 LargePage:0 Addr:${digits}1000\\n"
    run --separate-stderr tables --va 0x100000123
    [[ $output == *"physical address  unknown: the driver tells \"${digits}100\""* ]]
    same "$(tables --json | jq -c '[.entries[] | select(.kind == "page").address]')" '[null]'
}

@test "allocations that make no sense are counted, of the processes that are asked for" {
    make_machine "$TABLES"
    sed -i 's/gpu_va = 100000000/gpu_va = zz/' machine.toml
    run --separate-stderr tables --map
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: 1 allocation has an address or a size that makes no sense"
    sed -i 's/device_pid = 4100001/device_pid = 7/' machine.toml
    run --separate-stderr tables --map --pid 4100001
    [ "$status" = 0 ]
    same "$stderr" ""
}

@test "entries that make no sense are counted and left out" {
    make_machine "$TABLES"'2:0 Snoop:0 Segment:0 LargePage:0 Addr:1000\n2:0 Snoop:0 Segment:0 LargePage:0 Addr:2000\n2:-1 Snoop:0 Segment:0 LargePage:0 Addr:1000\n2:512 Snoop:0 Segment:0 LargePage:0 Addr:1000\n2:2000000000: entry addr:1, buffer:b\n2:262144: entry addr:2, buffer:c\n'
    run --separate-stderr tables
    [ "$status" = 0 ]
    same "$stderr" "\
nimba-smi: process 4100001 (viewer): 3 entries lie outside the address space (see --split)
nimba-smi: process 4100001 (viewer): 1 entry belongs to a page-table entry that is not there (see --split)
nimba-smi: process 4100001 (viewer): 1 entry is for addresses that another entry is for (see --split)"
    [[ ${lines[1]} == "4100001   1   1   3      4  4 KiB  4 KiB   4 KiB  viewer" ]]
    for view in --tree --map "--va 0" "--svg -" --json; do
        # shellcheck disable=SC2086
        tables $view >/dev/null 2>&1
    done
}

@test "another split of addresses can be told" {
    make_machine '0:1: entry addr:1, buffer:a\n1:1: entry addr:1, buffer:b\n2:1: entry addr:2, buffer:c\n2:3 Snoop:0 Segment:0 LargePage:0 Addr:1000\n'
    run --separate-stderr tables --tree --split 1,2,3,4,10
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: process 4100001 (viewer): 3 entries belong to page-table entries \
that are not there (see --split)"
    sed -i 's/0:1: entry/0:0: entry/; s/1:1: entry/1:0: entry/' machine.toml
    run --separate-stderr tables --tree --split 1,2,3,4,10
    same "$(tail -n 1 <<<"$output")" "      0x4c00-0x4fff  1 x 1 KiB  segment 0  -> 0x1000"
}

@test "a process without page tables, and no process at all" {
    run --separate-stderr on default nimba-smi pagetable --pid 7 --pid 4100001
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: process 7 has no GPU page tables; nimba-smi pagetable shows those \
that have"
    [[ ${lines[1]} == "4100001 "* ]]
    run --separate-stderr on three-adapters nimba-smi pagetable
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
PID  L0  L1  L2  PAGES  MAPPED  PROCESS
all   0   0   0      0     0 B"
}

@test "numbers in a dump that the library cannot take are named" {
    make_machine "$TABLES"'2:x Snoop:0 Segment:0 LargePage:0 Addr:1000\n'
    run --separate-stderr tables
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" "nimba-smi: a page-table dump of the driver has a number without digits, which \
the library cannot read: look for it in /sys/kernel/debug/dri/0/qv/devices/*/vm_info"
    make_machine "$TABLES"'2:1 Snoop:0 Segment:99999999999 LargePage:0 Addr:1000\n'
    run --separate-stderr tables --json
    [ "$status" = 3 ]
    same "$(jq -c '[(.entries | length), .errors[].status]' <<<"$output")" '[0,3]'
    [[ $stderr == *"a number beyond 32 bits"* ]]
}

@test "a driver without page tables, and one of another vendor, are named" {
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on default sh -c \
        'rm -r "$UMOCKDEV_DIR/sys/kernel/debug/dri/0/qv"; nimba-smi pagetable'
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" "nimba-smi: there is no directory /sys/kernel/debug/dri/0/qv/devices: the driver \
does not show its page tables, or the adapter is gone (see dmesg)"
    run --separate-stderr on no-gpu nimba-smi pagetable
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: page tables can only be read of DRM minor 0, which is not there: its \
driver has to be loaded before those of other GPUs"
    run --separate-stderr on foreign-only nimba-smi pagetable
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: page tables can only be read of DRM minor 0, which is no Nimba or QV \
adapter: its driver has to be loaded before those of other GPUs"
}

@test "page tables that are closed to the user are named, and the library's message is not shown" {
    NIMBA_SIM_DRIVERS=plain run --separate-stderr as_ordinary_user timeout 60 \
        nimba-sim run --machine default -- sh -c \
        'd=$UMOCKDEV_DIR/sys/kernel/debug/dri/0/qv/devices; chmod 0 $d; nimba-smi pagetable; s=$?
        nimba-smi --verbose pagetable 2>&1 | grep -c "'"$UNREADABLE"'"; chmod 700 $d; exit $s'
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    same "$stderr" "nimba-smi: no permission to read /sys/kernel/debug/dri/0/qv/devices: run as root"
    same "$output" 1
}

@test "a full disk is named" {
    for face in "" --json --csv --tree --map "--va 0" "--svg -"; do
        run --separate-stderr on default sh -c "nimba-smi pagetable $face >/dev/full"
        [ "$status" = 1 ] || { echo "$face: $status"; return 1; }
        same "$stderr" "nimba-smi: cannot write to standard output: No space left on device"
    done
}

@test "a library without page tables is named, and serves the other commands" {
    run --separate-stderr smi pagetable
    [ "$status" = 4 ]
    [[ $stderr == "nimba-smi: "*"/stub_library.so lacks the entry point get_pagetable_data: install \
the library that belongs to this nimba-smi" ]]
    run smi list
    [ "$status" = 0 ]
}
