# SPDX-License-Identifier: MIT
# What the suites of nimba-smi mem, clocks, sensors and usage share.

INFO=/sys/bus/pci/devices/0000:01:00.0/jw_info
STEADY="adapter 0000:01:00.0 (Gpu0:NimbaK5)"

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

# machine LINE...: makes machine.toml, an adapter of these lines.
machine() {
    printf '%s\n' 'description = "A test"' '[[adapter]]' 'chip = "nimba-k5"' \
        'bus_id = "0000:01:00.0"' 'card = 0' "$@" >machine.toml
}
