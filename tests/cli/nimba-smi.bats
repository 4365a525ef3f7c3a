#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# What nimba-smi prints and returns, on a library whose adapters are known.

load nimba-smi.bash

@test "list prints a table of the adapters" {
    NIMBA_STUB_ADAPTERS=3 run --separate-stderr smi list
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
SLOT  NAME               BUS ID        CARD  DEVICE  DRIVER   LUID
0     Gpu0:Nimba-K1      0000:03:00.0  0     0x1001  va       0x0:0x30000
1     Gpu1:QV M-30       0000:04:00.0  1     0x2030  unknown  0x0:0x40000
2     Gpu2:Nimba-GT-K3t  0001:8f:1f.7  12    0x1013  va       0x1:0x8f1f07"
}

@test "list gives a GPU of another vendor a row of its own" {
    NIMBA_STUB_FOREIGN=1 run --separate-stderr smi list
    [ "$status" = 0 ]
    same "$output" "\
SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER  LUID
0     Gpu0:Nimba-K1    0000:03:00.0  0     0x1001  va      0x0:0x30000
-     Gpu2:Nvidia-GPU  0000:01:00.0  3     0x2684  -       0x0:0x10000"
}

@test "a third adapter that shares its slot with another vendor's GPU keeps its own identity" {
    pci=$BATS_TEST_TMPDIR/pci
    mkdir -p "$pci/drm/card12" "$pci/drm/card12-HDMI-A-1" "$pci/drm/renderD140"
    echo 0x1013 >"$pci/device"
    export NIMBA_STUB_PCI_DIR=$pci
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FOREIGN=1 run --separate-stderr smi list
    [ "$status" = 0 ]
    same "$output" "\
SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER   LUID
0     Gpu0:Nimba-K1    0000:03:00.0  0     0x1001  va       0x0:0x30000
1     Gpu1:QV M-30     0000:04:00.0  1     0x2030  unknown  0x0:0x40000
2     -                0001:8f:1f.7  12    0x1013  va       0x1:0x8f1f07
-     Gpu2:Nvidia-GPU  0000:01:00.0  3     0x2684  -        0x0:0x10000"
}

@test "list --json prints the whole document" {
    NIMBA_STUB_FOREIGN=1 run --separate-stderr smi list --json
    [ "$status" = 0 ]
    same "$output" '{
  "schema": "nimba-smi.list.1",
  "adapters": [
    {
      "slot": 0,
      "name": "Gpu0:Nimba-K1",
      "bus_id": "0000:03:00.0",
      "card": 0,
      "vendor_id": "0x4e4d",
      "device_id": "0x1001",
      "driver": "va",
      "luid": {
        "low": 0,
        "high": 196608
      }
    }
  ],
  "foreign_gpu": {
    "name": "Gpu2:Nvidia-GPU",
    "bus_id": "0000:01:00.0",
    "card": 3,
    "vendor_id": "0x10de",
    "device_id": "0x2684",
    "luid": {
      "low": 0,
      "high": 65536
    }
  },
  "errors": []
}'
}

@test "options may stand before the command or behind it" {
    same "$(smi --json list | jq -c '[.adapters[].name]')" '["Gpu0:Nimba-K1"]'
    same "$(smi list --json | jq -c '[.adapters[].name]')" '["Gpu0:Nimba-K1"]'
}

@test "a name that is no UTF-8 comes out with replacement characters" {
    NIMBA_STUB_NAME=$'Gpu\xff\xfe0' run --separate-stderr smi list --json
    [ "$status" = 0 ]
    same "$(jq -r '.adapters[0].name' <<<"$output")" $'Gpu\xef\xbf\xbd\xef\xbf\xbd0'
    NIMBA_STUB_NAME=$'Gpu\xff\xfe0' run --separate-stderr smi list
    [ "$status" = 0 ]
    same "${lines[1]}" \
        $'0     Gpu\xef\xbf\xbd\xef\xbf\xbd0  0000:03:00.0  0     0x1001  va      0x0:0x30000'
}

@test "a name cannot command the terminal" {
    NIMBA_STUB_NAME=$'\e[31mred\n\x7f' run --separate-stderr smi list
    [ "$status" = 0 ]
    same "${lines[1]}" \
        '0     \x1b[31mred\x0a\x7f  0000:03:00.0  0     0x1001  va      0x0:0x30000'
}

@test "a name that fills its field to the last byte is shown as it is" {
    NIMBA_STUB_NAME=12345678901234567890 run --separate-stderr smi list --json
    same "$(jq -r '.adapters[0].name' <<<"$output")" 12345678901234567890
}

@test "a nonsensical number of adapters is bounded by the slots" {
    same "$(NIMBA_STUB_ADAPTERS=1000 smi list --json | jq '.adapters | length')" 3
    NIMBA_STUB_ADAPTERS=-5 run --separate-stderr smi list
    [ "$status" = 3 ]
}

@test "without --verbose nothing that the library prints is seen" {
    NIMBA_STUB_MESSAGE='100%s%n loaded' run --separate-stderr smi list
    [ "$status" = 0 ]
    same "$stderr" ""
    [ "${#lines[@]}" = 2 ]
}

@test "--verbose shows messages and prints on standard error, as text and harmless" {
    NIMBA_STUB_MESSAGE=$'100%s%n \e[2J\n' run --separate-stderr smi list --verbose
    [ "$status" = 0 ]
    one_worker="\
stub: loaded
stub: a complaint
stub: set_print_callback
set_print_callback.
stub: get_interface_version_ext1
stub: gfx_find_adapter
100%s%n \\x1b[2J
stub: gfx_find_adapter_ext1"
    same "$stderr" "$one_worker
$one_worker"
    [ "${#lines[@]}" = 2 ]
}

@test "version tells the tool, the library, the interface and the handshake" {
    copy=$BATS_TEST_TMPDIR/libstub.so.4.5.6
    cp "$STUB" "$copy"
    ln -s libstub.so.4.5.6 "$BATS_TEST_TMPDIR/libstub.so"
    run --separate-stderr nimba-smi version --library "$BATS_TEST_TMPDIR/libstub.so"
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
nimba-smi  0.1.0
library    $(realpath "$copy") (4.5.6)
interface  22 (this tool was built for 22)
handshake  200: the versions match"
}

@test "version --json prints the whole document" {
    NIMBA_STUB_MATCH=202 run --separate-stderr smi version --json
    [ "$status" = 0 ]
    same "$output" '{
  "schema": "nimba-smi.version.1",
  "tool": {
    "version": "0.1.0"
  },
  "library": {
    "path": "'"$(realpath "$STUB")"'",
    "version": null
  },
  "interface": {
    "version": 22,
    "client_version": 22,
    "match_code": 202,
    "match": "client-newer"
  },
  "errors": []
}'
}

@test "version needs no adapter" {
    NIMBA_STUB_ADAPTERS=0 NIMBA_STUB_LIBDRM=0 run --separate-stderr smi version
    [ "$status" = 0 ]
    same "$stderr" ""
}

@test "--version prints the tool's version" {
    run --separate-stderr nimba-smi --version
    [ "$status" = 0 ]
    same "$output" "nimba-smi 0.1.0"
}

@test "--help names every command, option and exit status" {
    run --separate-stderr nimba-smi --help
    [ "$status" = 0 ]
    for word in list ps alloc leaks version --json --verbose --timeout --library; do
        grep -qw -e "$word" <<<"$output"
    done
    for number in 0 1 2 3 4 5 6 7 8; do
        grep -q "^  $number  " <<<"$output"
    done
}

@test "every help fits 80 columns" {
    for command in "" list info top clocks sensors usage mem ps alloc leaks pagetable dvfs flag \
        prefer "prefer list" "prefer set" "prefer remove" doctor version completion; do
        run --separate-stderr nimba-smi $command --help
        [ "$status" = 0 ]
        [ "$(wc -L <<<"$output")" -le 80 ] || { echo "$command"; grep -E '^.{81}' <<<"$output"; return 1; }
    done
}

