#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi capture on simulated machines, and nimba-sim replay of what it wrote.

load nimba-smi.bash
load live_drivers.bash
load ordinary_user.bash

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

# The text of an entry of the archive.
entry() {
    tar --zstd -xOf "$1" "$2"
}

# refused LINE FILE: replaying the file fails with this line, and starts nothing.
refused() {
    run --separate-stderr timeout 60 nimba-sim replay "$2" -- touch started
    [ "$status" = 3 ] || { echo "status $status: $stderr"; return 1; }
    same "$stderr" "nimba-sim: $2: $1"
    same "$output" ""
    [ ! -e started ]
}

@test "a machine of each kind is the same machine when it is replayed" {
    needs_live_drivers
    local machines
    # The others differ from one of these in numbers alone.
    machines=$(printf '%s\n' steady-desktop three-and-foreign two-qv qv-m40-heaps seven-segments \
        page-tables bare-adapter closed-nodes control-only fallback-library library-of-size-zero \
        no-library no-version unknown-chip no-gpu)
    # All of them would take minutes with the sanitizers.
    [ "${SANITIZED:-0}" = 0 ] || machines=steady-desktop
    xargs -P 3 -n 1 "$BATS_TEST_DIRNAME/replay-compare" <<<"$machines" >differences 2>&1 ||
        { cat differences; return 1; }
}

@test "a capture is its owner's alone, and tells what it has" {
    run --separate-stderr on steady-adapter nimba-smi capture machine.tar.zst
    [ "$status" = 0 ]
    same "$stderr" ""
    [[ $output =~ ^machine\.tar\.zst:\ 1\ sample,\ [0-9]+\ nodes,\ 0\ not\ read$ ]]
    same "$(stat -c %a machine.tar.zst)" 600
    same "$(ls -A -I 'separate-stderr*')" machine.tar.zst
    same "$(tar --zstd -tf machine.tar.zst | tail -n 1)" manifest.json
    same "$(entry machine.tar.zst manifest.json | jq -c '[.format, .version, .redacted,
        .drm.devices[0].version.name, .adapters[0].name, .adapters[0].kernel_interface.file]')" \
        '["nimba-capture",1,false,"jw","Gpu0:NimbaK5","libnimbahwbridge_v2.so.0.0.0"]'
    same "$(entry machine.tar.zst samples/0/nodes/sys/kernel/debug/dri/0/jw/info)" "VA=1"
    run --separate-stderr on steady-adapter nimba-smi capture --json machine.tar.zst
    same "$(jq -c '[.file, .samples, .redacted, .unread, .errors, .adapters]' <<<"$output")" \
        '["machine.tar.zst",1,false,[],[],[{"slot":0,"bus_id":"0000:01:00.0","name":"Gpu0:NimbaK5"}]]'
}

@test "each sample has engine use, which is that of the machine when it is replayed" {
    needs_live_drivers
    # shellcheck disable=SC2016 # for the other shell
    local asked='
        steady="del(.time) | walk(if type == \"number\" then round elif type == \"object\"
            then with_entries(select(.key | test(\"_count$|_per_second$\") | not)) else . end)"
        nimba-smi usage --interval 0.1 --json | jq "$steady"
        nimba-smi info --json | jq "$steady"'
    on steady-adapter bash -c "$asked
        nimba-smi capture --samples 2 --interval 0.1 machine.tar.zst >&2" >original
    nimba-sim replay machine.tar.zst -- bash -c "$asked" >replayed
    diff original replayed
    same "$(jq -s '.[0].adapters[0].engine_3d_percent' original)" 45
    local sample
    for sample in 0 1; do
        same "$(entry machine.tar.zst samples/$sample/nodes/sys/bus/pci/devices/0000:01:00.0/jw_info/engine_3d_usage)" 45
        same "$(entry machine.tar.zst samples/$sample/nodes/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage)" 1
        same "$(entry machine.tar.zst samples/$sample/sample.json | jq -c '.counters[0].usage')" '[45,30,20]'
    done
}

@test "nothing is read that the library does not read" {
    needs_live_drivers
    on busy nimba-smi capture machine.tar.zst
    same "$(entry machine.tar.zst documents/doctor.json | jq -c '.checks | map(.group) | unique')" \
        '["adapter","library","machine"]'
    run bash -c "tar --zstd -tf machine.tar.zst | grep -vE '^(manifest\.json|dmidecode\.txt|preferences\.ini\
|documents/(version|dvfs|alloc|leaks|pagetable|doctor)\.json|samples/0/(sample|overview)\.json|samples/0/nodes/(proc/(gpuinfo_[0-9]+|[0-9]+/(comm|cmdline))\
|sys/bus/pci/devices/[0-9a-f:.]+/(current_link_width|(jw|qv)_info/[a-z_0-9]+|hwmon/hwmon[0-9]/(temp1|fan[01])_input)\
|sys/kernel/debug/dri/[0-9]+/(jw|qv)/(info|(allocations|devices|heaps)/[^/]+/[^/]+)))$'"
    same "$output" ""
}

@test "what could not be read costs itself alone, and fails in the replay as it did" {
    needs_live_drivers
    on default sh -c '
        nimba-sim fault block eclk --directory info --ms 600000
        nimba-sim fault open allocations --error EACCES
        nimba-smi capture --timeout 3 machine.tar.zst >said 2>errors; echo $? >status'
    same "$(cat status)" 7
    same "$(cat errors)" "\
nimba-smi: no permission to read /sys/kernel/debug/dri/0/jw/allocations: run as root
nimba-smi: no answer from /sys/bus/pci/devices/0000:01:00.0/jw_info/eclk: the driver may be blocked (see \
dmesg), or allow more with --timeout"
    same "$(entry machine.tar.zst manifest.json | jq -c '.errors | map([.path, .error])')" \
        '[["/sys/bus/pci/devices/0000:01:00.0/jw_info/eclk","deadline"],'\
'["/sys/kernel/debug/dri/0/jw/allocations","EACCES"]]'
    run --separate-stderr nimba-sim replay machine.tar.zst -- \
        sh -c 'nimba-smi sensors && ! nimba-smi clocks --timeout 3; nimba-smi alloc'
    [ "$status" = 6 ]
    [[ ${stderr_lines[0]} == *"worker lost in gpuinfo_get_jwinfoFD_value_int of eclk: no answer within 3 s"* ]]
    [[ ${stderr_lines[1]} == *"no permission to read /sys/kernel/debug/dri/0/jw/allocations: run as root" ]]
}

@test "DRM nodes that cannot be opened were not read, and the driver's nodes are all the same" {
    run --separate-stderr on closed-nodes nimba-smi capture --json machine.tar.zst
    [ "$status" = 3 ]
    same "${stderr_lines[1]}" "nimba-smi: cannot read /dev/dri/renderD128 and 1 more node: EIO (see dmesg)"
    same "$(jq -c '.unread' <<<"$output")" '[{"sample":0,"path":"/dev/dri/renderD128","error":"EIO"},'\
'{"sample":0,"path":"/dev/dri/card0","error":"EIO"}]'
    [ "$(entry machine.tar.zst samples/0/nodes/sys/bus/pci/devices/0000:01:00.0/jw_info/eclk)" -gt 0 ]
    run --separate-stderr on closed-render nimba-smi capture --json machine.tar.zst
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: cannot read /dev/dri/renderD128: EIO (see dmesg)"
    same "$(jq -c '.unread | map(.path)' <<<"$output")" '["/dev/dri/renderD128"]'
}

@test "sensors are those of the first directory of their name, whatever files are called so" {
    # shellcheck disable=SC2016 # for the other shell
    NIMBA_SIM_DRIVERS=plain run on steady-adapter bash -c '
        hwmon=$(find "${UMOCKDEV_DIR%/*}" -path "*hwmon/*hwmon0" | head -n 1)
        : >"${hwmon%/*}/hwmon"
        nimba-smi capture machine.tar.zst'
    [ "$status" = 0 ]
    same "$(entry machine.tar.zst samples/0/sample.json | jq -c '.nodes[] | select(.path | endswith("/hwmon")).entries')" \
        '["hwmon0"]'
    same "$(entry machine.tar.zst samples/0/nodes/sys/bus/pci/devices/0000:01:00.0/hwmon/hwmon0/temp1_input)" "50 *C"
}

@test "a machine without libdrm's devices, or without the library, is captured all the same" {
    run --separate-stderr on no-gpu nimba-smi capture machine.tar.zst
    [ "$status" = 3 ]
    [ -s machine.tar.zst ]
    run --separate-stderr on default nimba-smi --library libmissing.so capture other.tar.zst
    [ "$status" = 4 ]
    [[ $stderr == "nimba-smi: cannot load the management library "* ]]
    run --separate-stderr nimba-sim replay other.tar.zst -- nimba-smi list --json
    same "$(jq -c '.adapters | map(.name)' <<<"$output")" '["Gpu0:Nimba-K1"]'
}

@test "a series plays, as fast as it is told, and holds its last sample" {
    needs_live_drivers
    on default nimba-smi capture --samples 3 --interval 0.5 machine.tar.zst
    same "$(entry machine.tar.zst manifest.json | jq '.samples | length')" 3
    local first last
    first=$(entry machine.tar.zst samples/0/nodes/proc/gpuinfo_0 | grep -c .)
    [ "$first" -gt 0 ]
    last=$(entry machine.tar.zst samples/2/nodes/sys/bus/pci/devices/0000:01:00.0/jw_info/eclk)
    export last
    # shellcheck disable=SC2016 # for the other shell
    run timeout 60 nimba-sim replay --speed 100 machine.tar.zst -- bash -c '
        end=$((SECONDS + 50))
        until [ "$(cat /sys/bus/pci/devices/0000:01:00.0/jw_info/eclk)" = "$last" ]; do
            ((SECONDS < end)) || exit 1
        done
        nimba-smi usage --interval 0.2 --json | jq ".adapters[0].flips_per_second | round"'
    [ "$status" = 0 ]
    same "$output" 60
}

@test "a replay leaves nothing behind, and lets nobody change the machine" {
    needs_live_drivers
    on default nimba-smi capture machine.tar.zst
    # shellcheck disable=SC2016 # for the other shell
    run --separate-stderr nimba-sim replay machine.tar.zst -- bash -c '
        echo "${UMOCKDEV_DIR%/*} $HOME"; nimba-smi dvfs set dvfs_level=performance >&2'
    [ "$status" = 9 ]
    local -a places
    read -ra places <<<"$output"
    [[ ${places[1]} == "${places[0]}"/home ]]
    [ ! -e "${places[0]}" ]
    refused "No such file or directory" missing.tar.zst
    run nimba-sim replay machine.tar.zst
    [ "$status" = 2 ]
}

@test "a terminal is told how far it is, and a signal ends a series with the samples that are complete" {
    needs_live_drivers
    # In the second sample a node does not answer.
    # shellcheck disable=SC2016 # for the other shell
    run --separate-stderr on default bash -c '
        nimba-sim fault block release_date --directory info --ms 600000 --every 2
        TERM=xterm script -qefc "echo \$\$ >pid; exec nimba-smi capture --timeout 10 --samples 3 \
            --interval 0.1 machine.tar.zst" shown </dev/null >/dev/null &
        end=$((SECONDS + 50))
        until grep -q "sample 2 of 3, [0-9]* nodes" shown; do
            ((SECONDS < end)) || exit 1
            sleep 0.05
        done
        kill -TERM "$(cat pid)"
        wait $!'
    [ "$status" = 143 ]
    same "$(entry machine.tar.zst manifest.json | jq -c '[(.samples | length), .errors]')" '[1,[]]'
    same "$(find . -name '.nimba-smi.*')" ""
    run nimba-sim replay machine.tar.zst -- true
    [ "$status" = 0 ]
}

@test "a speed is a number" {
    on steady-adapter nimba-smi capture machine.tar.zst
    local speed
    for speed in nan -nan inf 0 -1 1e-9 1001 "" x 0x10; do
        run --separate-stderr timeout 60 nimba-sim replay --speed "$speed" machine.tar.zst -- touch started
        [ "$status" = 2 ] || { echo "$speed: status $status"; return 1; }
        same "$stderr" "nimba-sim: --speed: expected a number from 0.001 to 1000, got $speed; see nimba-sim --help"
    done
    [ ! -e started ]
}

@test "a replay has its command's status, passes signals on, and leaves nothing behind" {
    on steady-adapter nimba-smi capture machine.tar.zst
    run nimba-sim replay machine.tar.zst -- sh -c 'exit 42'
    [ "$status" = 42 ]
    run -127 nimba-sim replay machine.tar.zst -- nimba-missing-command
    # shellcheck disable=SC2016 # for the other shell
    nimba-sim replay machine.tar.zst -- bash -c '
        trap "exit 7" TERM
        echo "${UMOCKDEV_DIR%/*}" >place; mv place started
        while :; do sleep 0.05; done' &
    within_bounds [ -e started ]
    kill -TERM $!
    status=0
    wait $! || status=$?
    [ "$status" = 7 ]
    [ ! -e "$(cat started)" ]
}

@test "a process that the archive does not have is not this machine's" {
    cat >machine.toml <<'TOML'
description = "A context of a process that every machine has"
[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 0
[adapter.debug]
"devices/1/info" = "pid = 1\nhandle = 10\n"
TOML
    # What this machine's process is called gets into the archive, and out of it again.
    NIMBA_SIM_DRIVERS=plain on ./machine.toml nimba-smi capture machine.tar.zst
    mkdir tree
    tar --zstd -xf machine.tar.zst -C tree
    jq '.nodes |= map(select(.path | startswith("/proc/1/") | not))' tree/samples/0/sample.json >lacking
    mv lacking tree/samples/0/sample.json
    rm -r tree/samples/0/nodes/proc/1
    (cd tree && find samples -type f) >names
    tar -C tree --zstd -cf lacking.tar.zst -T names manifest.json
    local drivers=plain
    [ "${NIMBA_SIM_DRIVERS-}" = plain ] || drivers="plain live"
    for drivers in $drivers; do
        # shellcheck disable=SC2016 # for the other shell
        run --separate-stderr timeout 60 nimba-sim replay --drivers "$drivers" lacking.tar.zst -- sh -c '
            nimba-smi ps --json | jq -c "[.. | .processes? | arrays] | unique"
            for asked in 1 01 1,1; do ps -p "$asked" -o comm=; echo "$?"; done
            cat /proc/1/comm; echo "$?"'
        same "$output" '[[{"pid":1,"name":null}]]
1
1
1
1'
    done
}

@test "a library in the place of one of the system's is not shown to commands" {
    on steady-adapter nimba-smi capture machine.tar.zst
    mkdir tree
    tar --zstd -xf machine.tar.zst -C tree
    jq '.adapters[0].kernel_interface.file = "libc.so.6"' tree/manifest.json >lie
    mv lie tree/manifest.json
    (cd tree && find samples -type f) >names
    tar -C tree --zstd -cf lying.tar.zst -T names manifest.json
    run --separate-stderr nimba-sim replay lying.tar.zst -- nimba-smi list --json
    [ "$status" = 0 ]
    same "$stderr" ""
}

@test "archives from elsewhere are refused in one line" {
    on steady-adapter nimba-smi capture machine.tar.zst
    head -c 2000 machine.tar.zst >truncated.tar.zst
    refused "it is no capture, or damaged, or it ends early" truncated.tar.zst
    mkdir tree
    tar --zstd -xf machine.tar.zst -C tree
    tar -C tree --zstd --transform 's,^manifest.json,../../escaped,' -Pcf leaving.tar.zst \
        samples/0/sample.json manifest.json
    refused 'a capture has no entry "../../escaped"' leaving.tar.zst
    tar -C tree --zstd --transform 's,^manifest.json,/tmp/escaped,' -Pcf absolute.tar.zst manifest.json
    refused 'a capture has no entry "/tmp/escaped"' absolute.tar.zst
    ln -sf /etc/passwd tree/dmidecode.txt
    tar -C tree --zstd -cf linked.tar.zst dmidecode.txt
    refused 'entry "dmidecode.txt" is no regular file' linked.tar.zst
    rm tree/dmidecode.txt
    truncate -s 200M tree/dmidecode.txt
    tar -C tree --zstd -cf bomb.tar.zst dmidecode.txt
    refused "it unpacks to more than its size allows" bomb.tar.zst
    truncate -s 1T tree/dmidecode.txt
    printf x >>tree/dmidecode.txt
    tar -C tree --sparse --format=posix --zstd -cf sparse.tar.zst dmidecode.txt
    refused "it unpacks to more than its size allows" sparse.tar.zst
    mkfifo pipe
    refused "it is no regular file" pipe
    : >empty
    refused "it is no capture, or damaged, or it ends early" empty
    jq '.samples += [{"time": "t", "seconds": 9}]' tree/manifest.json >lie
    mv lie tree/manifest.json
    tar -C tree --zstd --no-recursion -cf lying.tar.zst samples manifest.json
    refused 'entry "samples/" is no regular file' lying.tar.zst
    (cd tree && find samples -type f) >names
    tar -C tree --zstd -cf lying.tar.zst -T names manifest.json
    refused "manifest.json tells other samples than there are" lying.tar.zst
    [ ! -e escaped ] && [ ! -e ../../escaped ] && [ ! -e /tmp/escaped ]
}

@test "a file that cannot be written is told in one line, and there is none" {
    run --separate-stderr on default nimba-smi capture missing/machine.tar.zst
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: missing/machine.tar.zst: cannot write it: No such file or directory"
    run --separate-stderr on default nimba-smi capture /dev/full
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: /dev/full: it is no regular file"
    # shellcheck disable=SC2016 # for the other shell
    run unshare -rm sh -c 'mkdir small; mount -t tmpfs -o size=4k none small || exit 77
        nimba-sim run --machine busy -- nimba-smi capture small/machine.tar.zst
        echo "status $?"; ls -A small'
    [ "$status" != 77 ] || skip "nothing can be mounted here"
    [[ "$output" == *"nimba-smi: small/machine.tar.zst: cannot write it: No space left on device
status 1" ]]
}
