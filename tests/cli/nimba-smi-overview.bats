#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi without a command: the overview of the adapters and their processes.

load nimba-smi.bash
load nimba-smi-monitor.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

# headings: how many blocks the overview on standard input has.
headings() {
    grep -c '^-- [012]  '
}

# An adapter of which every figure is known: the engines in use, a third of the memory, two processes.
known_machine() {
    machine 'link_width = 8' '[adapter.board]' 'driver_version = "1.2.a"' 'firmware_version = "8.f.0.1c"' \
        'firmware_name = "K5 board"' 'pcie_gen = 4' \
        '[adapter.activity]' 'load = 50' 'swing = 0' 'flips = 120' 'blits = 120' \
        'engines = [90, 30, 60, 50, 20, 40, 10, 70]' \
        '[adapter.cooling]' 'ambient = 30' 'rise = 40' \
        '[[adapter.segment]]' 'total = 3000000000' 'used = 1000000000' \
        '[[adapter.context]]' 'pid = 4100001' 'handle = 1' \
        '[[adapter.allocation]]' 'handle = 1' 'device = 1' 'size = 5242880'
    sed -i '1a [[process]]\npid = 4100001\nname = "/usr/bin/maze"' machine.toml
}

@test "the overview has a block for each adapter and the table of the processes" {
    for machine in default showcase three-adapters two-and-foreign; do
        run --separate-stderr on "$machine" nimba-smi
        [ "$status" = 0 ] || { echo "$machine: $stderr"; return 1; }
        same "$stderr" ""
        same "$(headings <<<"$output")" \
            "$(on "$machine" nimba-smi list --json | jq '.adapters | length')"
        grep -q '^-- Processes -*$' <<<"$output"
        # It fits 80 columns, as plain text.
        ! LC_ALL=C grep -E '^.{80}|[^ -~]' <<<"$output"
    done
}

@test "figures of a known machine are exact" {
    needs_live_drivers
    known_machine
    run --separate-stderr on ./machine.toml nimba-smi
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" \
'-- 0  Gpu0:NimbaK5 --------------------------------------- 0000:01:00.0, card 0
 Driver       1.2.a (va)               Memory  ########..................   33%
 Firmware     8.f.0.1c, K5 board               958.4 MiB of 2.8 GiB
 PCIe link    gen 4, 8 lanes           3D      ###########...............   45%
 Temperature  50 C, fans 1600 1600     Video   #######...................   30%
 Power level  balance                  VPP     ###.......................   15%
 Clocks       engine 550, video 350, memory 1000, core 600, gfx 550

-- Processes ------------------------------------------------------------------
 SLOT      PID  MEMORY  ALLOCS  PROCESS
 0     4100001   5 MiB       1  /usr/bin/maze'
}

@test "a GPU of another vendor is one line" {
    run --separate-stderr on two-and-foreign nimba-smi
    [ "$(grep -c 'of another vendor and not examined$' <<<"$output")" = 1 ]
    run --separate-stderr on foreign-only nimba-smi
    [ "$status" = 3 ]
    [ "${#lines[@]}" = 1 ]
    [[ ${lines[0]} == *", of another vendor and not examined" ]]
}

@test "without an adapter the doctor is recommended" {
    run --separate-stderr on no-gpu nimba-smi
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" "nimba-smi: no Nimba or QV adapter found: check that the card is seated (lspci) \
and its driver is loaded (dmesg)
nimba-smi: run nimba-smi doctor: it says what is missing, and how to mend it"
    run --separate-stderr on no-gpu sh -c 'nimba-smi --json | jq -c "[.schema, .adapters, [.errors[].status]]"'
    same "$output" '["nimba-smi.overview.1",[],[3,0]]'
    run --separate-stderr nimba-smi --library /nowhere.so
    [ "$status" = 4 ]
    [[ ${stderr##*$'\n'} == "nimba-smi: run nimba-smi doctor: "* ]]
    # Who chose an adapter that is not there is told where to look instead.
    run --separate-stderr on steady-adapter nimba-smi -i 1
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: there is no adapter in slot 1; nimba-smi list shows those that are there"
}

@test "a driver that shows nothing is told of once for each directory, and the doctor recommended" {
    local adapter="nimba-smi: adapter 0000:01:00.0 (Gpu0:Nimba-GT-K3): there is no directory"
    run --separate-stderr on bare-adapter nimba-smi
    [ "$status" = 3 ]
    same "$stderr" "$adapter $INFO: the driver does not show its figures, or the adapter is gone (see \
dmesg)
$adapter /sys/kernel/debug/dri/0/jw/allocations: the driver does not show its allocations, or the \
adapter is gone (see dmesg)
nimba-smi: run nimba-smi doctor: it says what is missing, and how to mend it"
    run --separate-stderr on no-library nimba-smi
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 (Gpu0:QV M-30): its kernel-interface library is \
missing or unusable: bandwidth and busy words are not available"
}

@test "one adapter is chosen by slot or bus id" {
    for choice in 1 0000:02:00.0; do
        run --separate-stderr on three-adapters sh -c 'bus=$(nimba-smi list -i 1 --csv | sed -n "2s/^1,[^,]*,\([^,]*\),.*/\1/p")
            nimba-smi --adapter "$bus" --csv | cut -d, -f1; nimba-smi -i 1 --csv | cut -d, -f1'
        [ "$status" = 0 ] || { echo "$stderr"; return 1; }
        same "$output" $'slot\n1\nslot\n1'
    done
}

@test "the document has the figures of the commands that show them alone" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        nimba-smi --json >all
        for part in clocks sensors; do
            diff <(jq -S ".adapters[0].$part" all) \
                <(nimba-smi $part --json | jq -S ".adapters[0] | del(.slot, .name, .bus_id)")
        done
        diff <(jq -S ".adapters[0].processes.devices | map(.device)" all) \
            <(nimba-smi ps --json | jq -S ".devices | map(.device)")
        diff <(jq -S ".adapters[0].memory.segments | map(.total_bytes)" all) \
            <(nimba-smi mem --json | jq -S ".adapters[0].segments | map(.total_bytes)")
        jq -c "[.schema, (.adapters[0] | keys_unsorted)]" all'
    [ "$status" = 0 ] || { echo "$output$stderr"; return 1; }
    same "$output" '["nimba-smi.overview.1",["slot","name","bus_id","card","vendor_id",'\
'"device_id","driver","luid","answered","summary","memory","clocks","sensors","usage","processes"]]'
}

@test "a watch repeats the overview below the time, with frames from the second on" {
    needs_live_drivers
    run --separate-stderr on steady-adapter nimba-smi --watch 0.5 --count 2
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    [ "$(grep -cE '^[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}$' <<<"$output")" = 2 ]
    [ "$(headings <<<"$output")" = 2 ]
    [ "$(grep -cE '^ Frames       1[12][0-9]\.[0-9] flips/s, [0-9]+\.[0-9] blits/s$' <<<"$output")" = 1 ] ||
        { echo "$output"; return 1; }
    run --separate-stderr on steady-adapter nimba-smi --watch 0.1 --count 2 --csv
    [ "${#lines[@]}" = 3 ]
    [[ ${lines[0]} == time,slot,bus_id,name,card,driver,driver_version,* ]]
    [[ ${lines[2]} == 20*T*Z,0,0000:01:00.0,Gpu0:NimbaK5,0,va,* ]]
    run --separate-stderr on steady-adapter sh -c \
        'nimba-smi --watch 0.1 --count 3 --json | jq -c ".adapters | length"'
    same "$output" $'1\n1\n1'
}

@test "--top bounds the rows of the processes" {
    run --separate-stderr on fifty-contexts nimba-smi --top 2
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "${lines[-1]}" " and 98 more"
    [ "$(sed -n '/^-- Processes/,$p' <<<"$output" | wc -l)" = 5 ]
}

@test "--units is for the sizes of text alone" {
    known_machine
    run --separate-stderr on ./machine.toml sh -c 'for unit in B KiB MiB GiB kB MB GB; do
        nimba-smi --units $unit | sed -n "s/.*  \(.*\) of .*/\1/p"; done'
    same "$output" "\
1005000000 B
981445.3 KiB
958.4 MiB
0.9 GiB
1005000 kB
1005 MB
1.0 GB"
    run --separate-stderr on ./machine.toml sh -c 'nimba-smi mem --units MiB; nimba-smi mem --csv --units MiB'
    [[ ${lines[1]} == "0     0        958.4 MiB  2861.0 MiB  33%  "* ]] || { echo "$output$stderr"; return 1; }
    grep -q '^0,0000:01:00.0,0,,[0-9]*,3000000000,node$' <<<"$output" || { echo "$output"; return 1; }
    run --separate-stderr on ./machine.toml sh -c 'nimba-smi ps --units kB; nimba-smi alloc --units kB'
    same "$(grep -c '5242.9 kB' <<<"$output")" 4
    run --separate-stderr nimba-smi --units bytes
    [ "$status" = 2 ]
}

@test "a node that blocks costs its adapter's figures, and the others are whole" {
    needs_live_drivers
    run --separate-stderr on three-adapters sh -c '
        nimba-sim fault block eclk --directory info --adapter 1 --ms 60000
        nimba-smi --timeout 3; s=$?
        cat /sys/bus/pci/devices/*/*_info/enable_usage; exit $s'
    [ "$status" = 7 ] || { echo "$stderr"; return 1; }
    [[ $stderr == *"worker lost in get_adapter_summary: no answer within "* ]] || { echo "$stderr"; return 1; }
    [ "$(headings <<<"$output")" = 3 ]
    [ "$(grep -c '^ Driver  ' <<<"$output")" = 2 ]
    [ "$(grep -c '^ n/a          It gave no answer: standard error says why$' <<<"$output")" = 1 ]
    [ "$(grep -cE '^ +1  +n/a  +n/a  +n/a  +n/a$' <<<"$output")" = 1 ] || { echo "$output"; return 1; }
    same "$(tail -n 3 <<<"$output")" $'0\n0\n0'
}

@test "a node that fails costs its figure alone" {
    needs_live_drivers
    run --separate-stderr on steady-adapter sh -c '
        nimba-sim fault read vclk --directory info && exec nimba-smi'
    [ "$status" = 3 ]
    [[ $stderr == *"cannot read $INFO/vclk: Input/output error (see dmesg)"* ]]
    grep -qx ' Clocks       engine 550, video n/a, memory 1000, core 600, gfx 550' <<<"$output" ||
        { echo "$output"; return 1; }
}

@test "an ordinary user sees what is open, and why the rest is not" {
    machine 'unreadable = ["info/vclk", "hwmon/fan0_input"]' '[adapter.info]' 'eclk = "550\n"' \
        'mclk = "1000\n"' 'coreclk = "600\n"'
    local file=$BATS_FILE_TMPDIR/machine.toml
    cp machine.toml "$file"
    chmod a+rx "$BATS_RUN_TMPDIR" "$BATS_FILE_TMPDIR" 2>/dev/null || true
    chmod a+r "$file"
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine "$file" -- nimba-smi
    [ "$status" = 6 ] || { echo "$status $output $stderr"; return 1; }
    [[ $stderr == *"no permission to read $INFO/vclk: run as root"* ]]
    [[ $stderr == *"no permission to read "*"/fan0_input: run as root"* ]]
    grep -q '^ Clocks       engine 550, video n/a, memory 1000, core 600, gfx ' <<<"$output"
    grep -q '^ Temperature  [0-9]* C, fan [0-9]* ' <<<"$output" || { echo "$output"; return 1; }
}

# on_terminal COLUMNS VARIABLE... -- ARGUMENT...: nimba-smi on the known machine, with a terminal that
# has so many columns as its standard output.
on_terminal() {
    local columns=$1
    shift
    local -a variables=()
    while [ "$1" != -- ]; do
        variables+=("$1")
        shift
    done
    shift
    on ./machine.toml script -qefc "stty cols $columns; env -u NO_COLOR -u LC_ALL ${variables[*]} nimba-smi $*" \
        /dev/null </dev/null | tr -d '\r'
}

@test "a terminal has colours and blocks if it can show them" {
    command -v script >/dev/null || skip "there is no script(1)"
    known_machine
    escape=$'\e'
    run on_terminal 80 TERM=xterm LC_ALL=C.UTF-8 --
    [[ $output == *"$escape["* && $output == *█* && $output == *─* ]] || { echo "$output"; return 1; }
    run on_terminal 80 TERM=xterm LC_ALL=C --
    [[ $output == *"$escape["* && $output != *█* && $output == *"##"* ]]
    run on_terminal 80 TERM=xterm NO_COLOR=1 LC_ALL=C.UTF-8 --
    [[ $output != *"$escape"* && $output == *█* ]]
    run on_terminal 80 TERM=dumb LC_ALL=C.UTF-8 --
    [[ $output != *"$escape"* ]]
}

@test "the overview is as wide as the terminal, from 40 to 120 columns" {
    command -v script >/dev/null || skip "there is no script(1)"
    known_machine
    for columns in 20:39 40:39 79:78 80:79 100:99 200:119; do
        run on_terminal "${columns%:*}" TERM=dumb LC_ALL=C --
        same "$(wc -L <<<"$output")" "${columns#*:}"
    done
}

@test "options that make no sense together are refused" {
    run --separate-stderr nimba-smi --csv --json
    [ "$status" = 2 ]
    run --separate-stderr nimba-smi --count 3
    [ "$status" = 2 ]
    same "$stderr" "nimba-smi: --count needs --watch; see nimba-smi --help"
    run --separate-stderr nimba-smi version --csv
    [ "$status" = 2 ]
    same "$stderr" "nimba-smi: version has no option --csv; see nimba-smi version --help"
    run --separate-stderr nimba-smi -i 0 list
    [ "$status" = 2 ]
    same "$stderr" "nimba-smi: -i is in front of list: a command's options are behind it; see nimba-smi --help"
}

@test "a watch ends in order when it is told to, and when its reader goes" {
    needs_live_drivers
    run --separate-stderr on steady-adapter bash -c '
        mkfifo lines
        env --default-signal=TERM nimba-smi --watch 600 --json >lines &
        read -r line <lines
        kill -s TERM "$!"
        wait "$!" && jq -c ".adapters | length" <<<"$line"
        cat '"$INFO"'/enable_usage
        env --default-signal=PIPE nimba-smi --watch 0.02 --csv | head -n 2 | wc -l
        echo "${PIPESTATUS[0]}"; cat '"$INFO"'/enable_usage'
    same "$output$stderr" $'1\n0\n2\n141\n0'
}
