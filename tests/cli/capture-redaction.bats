#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi capture --redact on simulated machines.

load nimba-smi.bash

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

@test "names are replaced wherever they stand, and alike" {
    cat >machine.toml <<'TOML'
description = "Two contexts of one program, and texts with its name"
[[process]]
pid = 4100001
name = "/opt/secret dir/very-secret-program"
comm = "very-secret-pro"
[[process]]
pid = 4100002
name = "very-secret-program"
[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 0
[adapter.debug]
"devices/1/info" = "pid = 4100001\nhandle = 10\nname = very-secret-program\n"
"devices/2/info" = "pid = 4100002\nhandle = 11\n"
[adapter.info]
release_date = "made for very-secret-program\n"
vbios_version = "owner very-secret-program=1\n"
TOML
    mkdir -p home/.local/share
    printf '%s\n' '; by bob' '[very-secret-program] ; bob' 'FullPath = /opt/secret dir/very-secret-program' \
        'PreferGpuName = Gpu0:Nimba-K1 ; bob' 'PreferGpuBusID = secret' 'GpuPrefer = 1 ; bob' \
        >home/.local/share/wmt_gfx_util.ini
    HOME=$PWD/home on ./machine.toml nimba-smi capture --redact machine.tar.zst
    mkdir out
    tar --zstd -xf machine.tar.zst -C out
    run grep -rE 'secret|bob' out
    same "$output" ""
    HOME=$PWD/home run -4 on ./machine.toml nimba-smi --library /opt/secret/libmissing.so capture --redact other.tar.zst
    mkdir other
    tar --zstd -xf other.tar.zst -C other
    run grep -rE 'secret|bob' other
    same "$output" ""
    mkdir -p secret/bob
    echo junk >secret/bob/libbad.so
    HOME=$PWD/home LD_LIBRARY_PATH=$PWD/secret/bob run -4 on ./machine.toml \
        nimba-smi --library libbad.so capture --redact third.tar.zst
    mkdir third
    tar --zstd -xf third.tar.zst -C third
    run grep -rE 'secret|bob' third
    same "$output" ""
    [[ $(jq -r '.problems[]' third/manifest.json) =~ /name-[0-9a-f]{8}/libbad\.so ]]
    local name
    name=$(cat out/samples/0/nodes/proc/4100001/comm)
    [[ $name =~ ^name-[0-9a-f]{8}$ ]]
    same "$(tr -d '\0' <out/samples/0/nodes/proc/4100002/cmdline)" "$name"
    [[ $(tr -d '\0' <out/samples/0/nodes/proc/4100001/cmdline) =~ ^/name-[0-9a-f]{8}/name-[0-9a-f]{8}/$name$ ]]
    same "$(cat out/samples/0/nodes/sys/bus/pci/devices/0000:01:00.0/jw_info/release_date)" "made for $name"
    same "$(grep -v FullPath out/preferences.ini)" "[$name]
PreferGpuName = Gpu0:Nimba-K1
PreferGpuBusID = 
GpuPrefer = 1"
    HOME=$PWD/home on ./machine.toml nimba-smi capture --redact again.tar.zst
    [ "$(tar --zstd -xOf again.tar.zst samples/0/nodes/proc/4100001/comm)" != "$name" ]
}

@test "words of the documents stay in a redacted capture, whatever programs are called" {
    python3 -c 'import jsonschema' 2>/dev/null || skip "needs python3-jsonschema"
    {
        printf '%s\n' 'description = "Programs that are called like words of the documents"' \
            '[[adapter]]' 'chip = "nimba-k1"' 'bus_id = "0000:01:00.0"' 'card = 0' '[adapter.debug]'
        local pid=4100000 name
        for name in /opt/invalid/MiB/legacy node heaps balance /0x10/va lanes match gauge ok machine size GPU; do
            pid=$((pid + 1))
            printf '"devices/%s/info" = "pid = %s\\nhandle = %s\\n"\n' "$pid" "$pid" "$pid"
            printf '[[process]]\npid = %s\nname = "%s"\n' "$pid" "$name" >>processes
        done
        cat processes
    } >machine.toml
    run on ./machine.toml sh -c 'nimba-smi capture machine.tar.zst && nimba-smi capture --redact redacted.tar.zst'
    [ "$status" = 0 ] || { echo "$output"; return 1; }
    mkdir plain redacted
    tar --zstd -xf machine.tar.zst -C plain
    tar --zstd -xf redacted.tar.zst -C redacted
    cat redacted/documents/*.json redacted/samples/0/overview.json |
        "$BATS_TEST_DIRNAME/validate-json" "$BATS_TEST_DIRNAME/../../docs/nimba-smi.schema.json"
    local words='.adapters[0] | [.memory.source, .memory.unit, .driver, .name, .clocks.dvfs_level,
        .memory.segments[].name, (.summary | .driver_version, .firmware_name, .display_types[])]'
    same "$(jq "$words" redacted/samples/0/overview.json)" "$(jq "$words" plain/samples/0/overview.json)"
    run grep -r gauge redacted
    same "$output" ""
}
