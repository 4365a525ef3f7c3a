#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi with the installed library on simulated machines.

load nimba-smi.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

NO_ADAPTER="nimba-smi: no Nimba or QV adapter found: check that the card is seated (lspci) and its \
driver is loaded (dmesg)"

@test "an adapter with another vendor's GPU beside it" {
    run --separate-stderr on default nimba-smi list
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER  LUID
0     Gpu0:Nimba-K1    0000:01:00.0  0     0x1001  va      0x0:0x10000
-     Gpu2:Nvidia-GPU  0000:02:00.0  1     0x2684  -       0x0:0x20000"
}

@test "two adapters, one with the legacy driver" {
    run --separate-stderr on two-qv nimba-smi list
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  NAME          BUS ID        CARD  DEVICE  DRIVER  LUID
0     Gpu0:QV M-30  0000:01:00.0  0     0x2030  va      0x0:0x10000
1     Gpu1:QV M-20  0000:03:00.0  1     0x2020  legacy  0x0:0x30000"
}

@test "three adapters of both families" {
    run --separate-stderr on three-adapters nimba-smi list
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  NAME              BUS ID        CARD  DEVICE  DRIVER  LUID
0     Gpu0:NimbaK2      0000:01:00.0  0     0x1002  va      0x0:0x10000
1     Gpu1:QV M-40      0000:02:00.0  1     0x2040  va      0x0:0x20000
2     Gpu2:Nimba-GT-K3  0001:03:00.0  2     0x1003  legacy  0x1:0x30000"
}

@test "two adapters and another vendor's GPU, as JSON" {
    run --separate-stderr on two-and-foreign nimba-smi list --json
    [ "$status" = 0 ]
    same "$(jq -c . <<<"$output")" '{"schema":"nimba-smi.list.1","adapters":['\
'{"slot":0,"name":"Gpu0:Nimba-GT-K3t","bus_id":"0000:01:00.0","card":0,"vendor_id":"0x4e4d",'\
'"device_id":"0x1013","driver":"va","luid":{"low":0,"high":65536}},'\
'{"slot":1,"name":"Gpu1:NimbaK5","bus_id":"0000:02:00.0","card":1,"vendor_id":"0x4e4d",'\
'"device_id":"0x1005","driver":"va","luid":{"low":0,"high":131072}}],'\
'"foreign_gpu":{"name":"Gpu2:Nvidia-GPU","bus_id":"0000:03:00.0","card":2,"vendor_id":"0x10de",'\
'"device_id":"0x2684","luid":{"low":0,"high":196608}},"errors":[]}'
}

@test "another vendor's GPU alone is listed, and no adapter was found" {
    run --separate-stderr on foreign-only nimba-smi list
    [ "$status" = 3 ]
    same "$stderr" "$NO_ADAPTER"
    same "$output" "\
SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER  LUID
-     Gpu2:Nvidia-GPU  0000:01:00.0  0     0x2684  -       0x0:0x10000"
}

@test "no GPU at all" {
    run --separate-stderr on no-gpu nimba-smi list
    [ "$status" = 3 ]
    same "$stderr" "$NO_ADAPTER"
    same "$output" ""
    run --separate-stderr on no-gpu nimba-smi version
    [ "$status" = 0 ]
    same "$stderr" ""
}

@test "version finds the library beside the tool" {
    run --separate-stderr on default nimba-smi version --json
    [ "$status" = 0 ]
    same "$(jq -c '[.library.version, .interface]' <<<"$output")" \
        '["0.1.0",{"version":22,"client_version":22,"match_code":200,"match":"match"}]'
    path=$(jq -r .library.path <<<"$output")
    same "${path##*/}" libnimba_mgmt_interface.so.0.1.0
    [ -f "$path" ]
}

@test "list leaves the driver's usage accounting alone" {
    node=/sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage
    run on default sh -c "echo 1 >$node; nimba-smi list >/dev/null; cat $node"
    [ "$status" = 0 ]
    same "$output" 1
}

@test "an info node for root alone leaves an ordinary user with a hint" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine unreadable -- nimba-smi list
    [ "$status" = 6 ]
    same "$stderr" "nimba-smi: no permission to read /sys/kernel/debug/dri/0/jw/info, so the \
driver kind is unknown: run as root"
    same "$output" "\
SLOT  NAME          BUS ID        CARD  DEVICE  DRIVER   LUID
0     Gpu0:NimbaK5  0000:01:00.0  0     0x1005  unknown  0x0:0x10000"
}

@test "nodes for others leave an ordinary user with a hint, and what can be read is listed" {
    # The nodes of the first device: the render node is for its group, the primary node for nobody.
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run -- sh -c \
        'cd "$UMOCKDEV_DIR/dev/dri" && chmod 0060 renderD128 && chmod 0000 card0 && nimba-smi list'
    [ "$status" = 6 ]
    same "$stderr" "nimba-smi: no permission to open /dev/dri/renderD128: join the group \
\"$(as_ordinary_user id -gn)\" or run as root"
    same "$output" "\
SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER  LUID
-     Gpu2:Nvidia-GPU  0000:02:00.0  1     0x2684  -       0x0:0x20000"
}

@test "a device with one node that may be opened needs no hint" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run -- sh -c \
        'chmod 0000 "$UMOCKDEV_DIR/dev/dri/card0" && nimba-smi list'
    [ "$status" = 0 ]
    same "$stderr" ""
    [ "${#lines[@]}" = 3 ]
}

@test "a driver that blocks is given up" {
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on default sh -c 'info=$UMOCKDEV_DIR/sys/kernel/debug/dri/0/jw/info &&
        rm "$info" && mkfifo "$info" && nimba-smi --timeout 3 list'
    [ "$status" = 7 ]
    same "$stderr" "nimba-smi: discovery: worker lost in gfx_find_adapter at adapter 0000:01:00.0: \
no answer within 3 s; the driver may be blocked: see dmesg, or allow more with --timeout"
    same "$output" ""
}

@test "an adapter whose driver blocks is named, and the one before it is listed" {
    NIMBA_SIM_DRIVERS=plain run --separate-stderr on two-qv sh -c 'info=$UMOCKDEV_DIR/sys/kernel/debug/dri/1/qv/info &&
        rm "$info" && mkfifo "$info" && nimba-smi --timeout 3 list --json'
    [ "$status" = 7 ]
    same "$(jq -c '.adapters' <<<"$output")" '[{"slot":0,"name":"Gpu0:QV M-30",'\
'"bus_id":"0000:01:00.0","card":0,"vendor_id":"0x5156","device_id":"0x2030","driver":"va",'\
'"luid":{"low":0,"high":65536}}]'
    same "$(jq -c '[.errors[] | [.status, .adapter, .call]]' <<<"$output")" \
        '[[7,"0000:03:00.0","gfx_find_adapter"]]'
    same "$stderr" "nimba-smi: discovery: worker lost in gfx_find_adapter at adapter 0000:03:00.0: \
no answer within 3 s; the driver may be blocked: see dmesg, or allow more with --timeout"
}

@test "adapters without a primary node have the card that sysfs tells, and no driver kind" {
    run --separate-stderr on two-qv sh -c 'rm "$UMOCKDEV_DIR"/dev/dri/card* && nimba-smi list'
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  NAME          BUS ID        CARD  DEVICE  DRIVER   LUID
0     Gpu0:QV M-30  0000:01:00.0  0     0x2030  unknown  0x0:0x10000
1     Gpu1:QV M-20  0000:03:00.0  1     0x2020  unknown  0x0:0x30000"
}

@test "a foreign GPU that is closed to the user needs no hint" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run -- sh -c \
        'cd "$UMOCKDEV_DIR/dev/dri" && chmod 0000 renderD129 card1 && nimba-smi list'
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  NAME           BUS ID        CARD  DEVICE  DRIVER  LUID
0     Gpu0:Nimba-K1  0000:01:00.0  0     0x1001  va      0x0:0x10000"
}

@test "a directory of nodes that is closed to the user is one line" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run -- sh -c \
        'chmod 0000 "$UMOCKDEV_DIR/dev/dri" && nimba-smi list; status=$?
        chmod 0700 "$UMOCKDEV_DIR/dev/dri"; exit $status'
    [ "$status" = 6 ]
    same "$stderr" "nimba-smi: no permission to look into /dev/dri, so no GPU can be found: run as \
root"
    same "$output" ""
}

UNLISTED="is there but not listed: its driver does not answer, or the library does not know the \
chip (see dmesg)"

@test "an adapter that does not answer is named" {
    run --separate-stderr on closed-nodes nimba-smi list
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 $UNLISTED"
    same "$output" ""
    run --separate-stderr on no-version nimba-smi list
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: adapter 0000:01:00.0 $UNLISTED"
    [ "${#lines[@]}" = 2 ]
}

@test "adapters beyond the devices that are examined are named" {
    # Which three are examined goes by the order of a directory.
    run --separate-stderr on three-and-foreign nimba-smi list --json
    [ "$status" = 0 ]
    same "$(jq '.adapters | length' <<<"$output")" "$(jq '3 - (.errors | length)' <<<"$output")"
    for bus_id in 0000:01:00.0 0000:02:00.0 0000:03:00.0; do
        same "$(jq --arg id "$bus_id" '[(.adapters[].bus_id | select(. == $id)),
            (.errors[].message | select(contains($id)))] | length' <<<"$output")" 1
    done
    run --separate-stderr on many-devices nimba-smi list
    [ "${#stderr_lines[@]}" = 1 ]
    [[ $stderr == "nimba-smi: there are 6 DRM devices, of which 3 are examined: "*" not listed; \
unload the driver of another to make room" ]]
}

@test "the JSON document is whole on every machine" {
    machines=$(nimba-sim machines | awk '{ print $1 }')
    [ "$(wc -l <<<"$machines")" -ge 20 ]
    for machine in $machines; do
        run --separate-stderr on "$machine" nimba-smi list --json
        [ "$status" = 0 ] || [ "$status" = 3 ] || { echo "$machine: $status $stderr"; return 1; }
        same "$machine $(jq -r '.schema, (.adapters | type), (.errors | type)' <<<"$output" |
            paste -sd ' ')" "$machine nimba-smi.list.1 array array"
    done
}

@test "a machine without libdrm" {
    echo garbage | tee "$BATS_TEST_TMPDIR/libdrm.so" >"$BATS_TEST_TMPDIR/libdrm.so.2"
    LD_LIBRARY_PATH=$BATS_TEST_TMPDIR run --separate-stderr nimba-smi list
    [ "$status" = 5 ]
    same "$stderr" "nimba-smi: libdrm is missing or unusable, so no GPU can be found: install the \
package libdrm2"
}
