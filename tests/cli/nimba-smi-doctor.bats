#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi doctor on simulated machines.

load nimba-smi.bash
load nimba-smi-doctor.bash

LOG="see why in the kernel's log: sudo dmesg | grep 0000:01:00.0"

@test "on a machine where all is well every check passes" {
    run --separate-stderr on default nimba-smi doctor
    has_status 0
    same "$stderr" ""
    same "$(sed -E 's/ +/ /g; s/(libdrm|library|kernel_interface|ps|dmidecode|permissions|home|preference_file) .*/\1/' <<<"$output")" "\
machine
 ok libdrm
 ok pci_devices 0000:01:00.0
 ok drm_devices 2 in /dev/dri, adapters and others
 ok drm_access this user may open a node of every adapter
 ok debugfs /sys/kernel/debug can be read
 ok ps
 ok dmidecode
library
 ok library
 ok interface_version 22: the versions match
 ok adapters 0000:01:00.0 Gpu0:Nimba-K1
adapter 0000:01:00.0 (Gpu0:Nimba-K1)
 ok driver va
 ok kernel_interface
 ok device_block 4096 bytes, from gfx_get_struct_size
 ok frame_rate counted by gfx_flip_count and by the driver's nodes
 ok bandwidth gfx_get_hwinfo_ext is there
 ok busy_words gfx_get_usage_info is there
 ok debug_directory /sys/kernel/debug/dri/0/jw
 ok allocations /sys/kernel/debug/dri/0/jw/allocations
 ok info_directory /sys/bus/pci/devices/0000:01:00.0/jw_info
 ok usage_accounting /sys/bus/pci/devices/0000:01:00.0/jw_info/enable_usage
 ok hwmon /sys/bus/pci/devices/0000:01:00.0/hwmon/hwmon0
 ok proc_file /proc/gpuinfo_0
user
 ok permissions
 ok home
 ok preference_file
all that matters works"
}

@test "the driver is told nothing" {
    needs_live_drivers
    run --separate-stderr on default sh -c \
        'nimba-sim commands --clear; nimba-smi doctor >report; nimba-sim commands'
    has_status 0
    same "$output" ""
}

@test "the document has each check with its group, adapter, result, finding and remedy" {
    doctor_on no-library
    has_status 0
    same "$(jq -c '[.schema, .summary, .errors]' <<<"$output")" '["nimba-smi.doctor.1",'\
'"all that matters works; 1 note says what is missing",[]]'
    same "$(jq -c '.checks[] | select(.id == "kernel_interface")' <<<"$output")" \
        '{"id":"kernel_interface","group":"adapter","adapter":"0000:01:00.0","result":"note",'\
'"found":"its kernel-interface library is missing or unusable: bandwidth and busy words are not '\
'available","remedy":"install the driver'"'"'s package that has libmv9hwbridge_v2.so.0.0.0 or '\
'libdrm_mv9.so.0.0.0 and type: sudo ldconfig (the loader says: libdrm_mv9.so.0.0.0: cannot open '\
'shared object file: No such file or directory)"}'
    same "$(skipped)" "device_block frame_rate bandwidth busy_words"
}

@test "colours are for terminals, and not with NO_COLOR" {
    run on default env -u NO_COLOR TERM=xterm script -qec "nimba-smi doctor" /dev/null
    [[ "$output" == *$'  \e[32mok  \e[0m  libdrm '* ]]
    run on default env NO_COLOR=1 TERM=xterm script -qec "nimba-smi doctor" /dev/null
    [[ "$output" == *'  ok    libdrm '* ]]
    run on default env -u NO_COLOR TERM=xterm nimba-smi doctor
    [[ "$output" == *'  ok    libdrm '* ]]
}

@test "3: no card beside another vendor's GPU" {
    doctor_on foreign-only
    has_status 3
    same "$(faults)" "fail pci_devices"
    same "$(skipped)" "drm_devices drm_access debugfs adapters"
    same "$(told pci_devices)" "\
no device of the vendors 0x4e4d and 0x5156 is on the PCI bus
check that the card is seated and has power, until one of these shows it: lspci -nn -d 4e4d: or \
lspci -nn -d 5156:"
}

@test "3: no PCI bus" {
    doctor_on no-gpu
    has_status 3
    same "$(faults)" "fail pci_devices"
    same "$(told pci_devices | head -n 1)" \
        "cannot list /sys/bus/pci/devices, so no card is seen: No such file or directory"
}

@test "3: a card without its driver" {
    doctor_on default 'rm -r "$UMOCKDEV_DIR"/sys/bus/pci/devices/0000:01:00.0/drm \
        "$UMOCKDEV_DIR"/dev/dri/card0 "$UMOCKDEV_DIR"/dev/dri/renderD128'
    has_status 3
    same "$(faults)" "fail drm_devices"
    same "$(skipped)" "drm_access adapters"
    same "$(told drm_devices)" "\
0000:01:00.0 (device 0x1001) is on the PCI bus, but has no DRM node: no driver is bound to it
install the driver's package and load the driver: sudo modprobe \
\"\$(cat /sys/bus/pci/devices/0000:01:00.0/modalias)\""
}

@test "3: nodes that did not come into a container" {
    doctor_on default 'rm -r "$UMOCKDEV_DIR"/dev/dri'
    has_status 3
    same "$(faults)" "fail drm_devices"
    same "$(told drm_devices)" "\
the drivers made DRM nodes, but there is none in /dev/dri
in a container, start it with --device /dev/dri; elsewhere type: sudo udevadm trigger \
--subsystem-match=drm"
}

@test "3: a driver that does not answer beside one that does" {
    doctor_on no-version
    has_status 3
    same "$(faults)" "fail unlisted_adapter 0000:01:00.0"
    same "$(told unlisted_adapter)" "\
adapter 0000:01:00.0 is there but not listed: its driver does not answer, or the library does not \
know the chip (see dmesg)
$LOG"
    same "$(jq -c '[.errors[] | [.status, .adapter]]' <<<"$output")" '[[3,"0000:01:00.0"]]'
}

@test "3: nodes that nobody can open" {
    doctor_on closed-nodes
    has_status 3
    same "$(faults)" "fail adapters 0000:01:00.0"
    same "$(told adapters)" "\
adapter 0000:01:00.0 is there but not listed: its driver does not answer, or the library does not \
know the chip (see dmesg)
$LOG"
}

@test "3: a chip that the library does not know" {
    doctor_on unknown-chip
    has_status 3
    same "$(faults)" "fail unlisted_adapter 0000:01:00.0"
    same "$(told unlisted_adapter | tail -n 1)" \
        "install a management library that knows the chip: see lspci -nn -s 0000:01:00.0"
}

@test "more devices than are examined are a note" {
    doctor_on many-devices
    has_status 0
    same "$(faults | sort -u)" "note unlisted_adapter"
    same "$(told unlisted_adapter | tail -n 1)" "see which drivers there are, and unload one that \
nobody needs: ls -l /sys/class/drm/card*/device/driver"
}

@test "4: no library" {
    run --separate-stderr on default nimba-smi doctor --library /nonexistent.so --json
    has_status 4
    same "$(faults)" "fail library"
    same "$(skipped)" "interface_version adapters"
    same "$(told library)" "\
cannot load the management library (/nonexistent.so: cannot open shared object file: No such file \
or directory): install it, or name it with --library
install the package of the library and type: sudo ldconfig; or try another with: nimba-smi doctor \
--library PATH"
}

@test "4: a library of another major version" {
    NIMBA_STUB_MATCH=100 run --separate-stderr on default \
        nimba-smi doctor --library "$STUB" --json
    has_status 4
    same "$(faults)" "fail interface_version"
    same "$(skipped)" "adapters"
    same "$(told interface_version)" "\
$(realpath "$STUB") has another major interface version: install the nimba-smi that belongs to it
install nimba-smi and the library of one release; nimba-smi version tells which are there"
}

@test "a library that is older than the tool is a note" {
    NIMBA_STUB_MATCH=202 NIMBA_STUB_ADAPTERS=0 run --separate-stderr on no-gpu \
        nimba-smi doctor --library "$STUB" --json
    has_status 3
    same "$(faults)" "\
fail pci_devices
note interface_version"
}

@test "5: no libdrm" {
    mkdir broken
    echo garbage | tee broken/libdrm.so >broken/libdrm.so.2
    doctor_on default "export LD_LIBRARY_PATH=$PWD/broken:\$LD_LIBRARY_PATH"
    has_status 5
    same "$(faults)" "fail libdrm"
    same "$(skipped)" "adapters"
    same "$(told libdrm)" "\
libdrm is missing or unusable, so no GPU can be found: install the package libdrm2
type: sudo apt-get install libdrm2 (the loader says: $PWD/broken/libdrm.so.2: file too short)"
}

@test "5: a libdrm without its functions" {
    mkdir other
    cp "$NIMBA_STUBS/stub_without_discovery.so" other/libdrm.so
    doctor_on default "export LD_LIBRARY_PATH=$PWD/other:\$LD_LIBRARY_PATH"
    has_status 5
    same "$(told libdrm | tail -n 1)" "replace $PWD/other/libdrm.so, which lacks drmGetVersion, \
drmFreeDevices, drmGetDevices2: sudo apt-get install --reinstall libdrm2"
}

@test "3: no debugfs, and one that is not mounted" {
    for machine in 'rm -r' 'rm -r "$UMOCKDEV_DIR"/sys/kernel/debug/dri; :'; do
        doctor_on default "$machine \"\$UMOCKDEV_DIR\"/sys/kernel/debug"
        has_status 3
        same "$(faults)" "fail debugfs"
        same "$(skipped)" "driver debug_directory allocations"
        same "$(told debugfs)" "\
debugfs is not mounted at /sys/kernel/debug, so video memory and page tables are not shown
type: sudo mount -t debugfs none /sys/kernel/debug"
    done
}

@test "3: an adapter whose driver shows nothing, beside one that is well" {
    cat >machine.toml <<'TOML'
description = "A driver that shows nothing, and another"

[[adapter]]
chip = "nimba-k3"
bus_id = "0000:01:00.0"
card = 0
driver = "none"
info = false
hwmon = false
proc = false

[[adapter]]
chip = "nimba-k3"
bus_id = "0000:02:00.0"
card = 1
TOML
    doctor_on ./machine.toml
    has_status 3
    same "$(faults)" "\
note driver 0000:01:00.0
fail debug_directory 0000:01:00.0
fail info_directory 0000:01:00.0
note hwmon 0000:01:00.0
note proc_file 0000:01:00.0"
    same "$(told info_directory | head -n 2)" "\
there is no directory /sys/bus/pci/devices/0000:01:00.0/jw_info: the driver does not show its \
clocks and settings, or the adapter is gone (see dmesg)
$LOG"
    same "$(jq -r .summary <<<"$output")" \
        "2 checks failed: mend the first first, and run nimba-smi doctor again"
}

@test "3: allocations that cannot be read" {
    needs_live_drivers
    doctor_on default "nimba-sim fault read 'allocations/*/info' --error EIO"
    has_status 3
    same "$(faults)" "fail allocations 0000:01:00.0"
    [[ "$(told allocations)" == "cannot read /sys/kernel/debug/dri/0/jw/allocations/"*"/info: \
Input/output error (see dmesg)
$LOG" ]]
}

@test "7: a driver that blocks costs the checks that need its answer" {
    needs_live_drivers
    run --separate-stderr on default sh -c "
        nimba-sim fault block 'allocations/*/info' --ms 60000
        nimba-smi doctor --json --timeout 2"
    has_status 7
    same "$(faults)" "fail debug_directory 0000:01:00.0"
    [[ "$(told debug_directory)" == *": no answer within 2 s; the driver may be blocked"* ]]
}

@test "a second choice of kernel-interface library will do" {
    doctor_on fallback-library
    has_status 0
    same "$(faults)" ""
    [[ "$(told kernel_interface)" == */libdrm_mv9.so.0.0.0", in place of libmv9hwbridge_v2.so.0.0.0"* ]]
}

@test "a kernel-interface library without a device block is a note" {
    doctor_on library-without-size
    has_status 0
    same "$(told device_block)" "\
libnimbahwbridge_v2.so.0.0.0 has neither gfx_get_struct_size nor qv_get_struct_size: bandwidth and \
busy words are not available
install the version of the driver's package that belongs to the loaded driver"
    same "$(skipped)" "bandwidth busy_words"
    doctor_on library-of-size-zero
    has_status 0
    same "$(faults)" "note device_block 0000:01:00.0"
    same "$(told device_block | head -n 1)" "gfx_get_struct_size of libnimbahwbridge_v2.so.0.0.0 \
returned 0: bandwidth and busy words are not available"
}

@test "a kernel-interface library without figures is a note" {
    cat >machine.toml <<'TOML'
description = "A library without counters"

[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 0

[[kernel_interface]]
file = "libnimbahwbridge_v2.so.0.0.0"
counters = []
TOML
    doctor_on ./machine.toml
    has_status 0
    same "$(faults)" "\
note bandwidth 0000:01:00.0
note busy_words 0000:01:00.0"
    same "$(told frame_rate | head -n 1)" "counted by the driver's nodes alone"
}

@test "--adapter limits the checks of adapters" {
    run --separate-stderr on three-adapters nimba-smi doctor --json -i 1
    has_status 0
    same "$(jq -r '[.checks[].adapter | select(.)] | unique | join(" ")' <<<"$output")" 0000:02:00.0
    run --separate-stderr on three-adapters nimba-smi doctor --json --adapter 0000:09:00.0
    has_status 3
    same "$(faults)" "fail chosen_adapter"
    same "$(told chosen_adapter | head -n 1)" \
        "there is no adapter at 0000:09:00.0; nimba-smi list shows those that are there"
}

@test "no ps is a note" {
    doctor_on default 'PATH=${PATH##*libexec/nimba-sim/bin:}; smi=$(command -v nimba-smi)
        mkdir bin; ln -s "$smi" bin; PATH=$PWD/bin:${smi%/*}'
    has_status 0
    same "$(faults)" "note ps"
    same "$(told ps)" "\
ps is not there, so pagetable shows processes without their names
type: sudo apt-get install --reinstall procps"
}

@test "a machine whose firmware tells no memory is a note" {
    cat >machine.toml <<'TOML'
description = "Without memory modules"
memory_module = []

[[adapter]]
chip = "qv-m20"
bus_id = "0000:01:00.0"
card = 0
TOML
    doctor_on ./machine.toml
    has_status 0
    same "$(faults)" "note dmidecode"
    [[ "$(told dmidecode)" == *" tells of no memory ("*"), so the library does not tell type, width \
and rate of the system's memory"* ]]
}
