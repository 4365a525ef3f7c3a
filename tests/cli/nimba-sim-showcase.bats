#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The machine for demonstrations, and a driver that goes away and comes back below a live view.

load nimba-sim.bash

PCI=/sys/bus/pci/devices/0000:01:00.0

# grows TEXT: waits until the view has one more line with the text than now, 20 seconds at most.
grows() {
    local tries lines
    lines=$(grep -c -- "$1" view) || true
    for ((tries = 0; tries < 400; ++tries)); do
        (($(grep -c -- "$1" view) == lines)) || return 0
        sleep 0.05
    done
    echo "no more lines with $1:"
    cat view
    return 1
}

@test "the link and the connectors are those of the machine file" {
    cat >machine.toml <<'EOT'
description = "Connections"
[[adapter]]
chip = "qv-m30"
bus_id = "0000:01:00.0"
card = 2
link_width = 4
link_speed = "5.0 GT/s PCIe\n"
connectors = ["HDMI-A-1", "DP-1"]
EOT
    run nimba-sim run -m ./machine.toml -- sh -c "cd $PCI
        cat current_link_width current_link_speed; ls -d drm/card2/card2-*; nimba-smi list"
    [ "$status" = 0 ]
    [ "${lines[0]}" = 4 ]
    [ "${lines[1]}" = "5.0 GT/s PCIe" ]
    [ "${lines[2]}" = "drm/card2/card2-DP-1" ]
    [ "${lines[3]}" = "drm/card2/card2-HDMI-A-1" ]
    [[ "${lines[5]}" == *0000:01:00.0* ]]
    [ "${#lines[@]}" = 6 ]
}

@test "adapters are found without connectors, and without a directory of the card" {
    for connectors in '[]' false; do
        printf '%s\n' 'description = "Bare"' '[[adapter]]' 'chip = "nimba-k2"' \
            'bus_id = "0000:01:00.0"' 'card = 0' "connectors = $connectors" >machine.toml
        run nimba-sim run -m ./machine.toml -- nimba-smi list
        [ "$status" = 0 ]
        [[ "${lines[1]}" == *0000:01:00.0* ]]
        [ "${#lines[@]}" = 2 ]
    done
}

@test "the showcase has two adapters that the library finds behind a foreign GPU" {
    run nimba-sim run -m showcase -- nimba-smi list
    [ "$status" = 0 ]
    [[ "${lines[1]}" == *0000:01:00.0* ]]
    [[ "${lines[2]}" == *0000:02:00.0* ]]
    run nimba-sim run -m showcase -- sh -c 'nimba-smi ps | sed -n "s/.* //p" | sort -u'
    for program in compositor browser maze player cad; do
        [[ "$output" == *"$program"* ]] || { echo "$program: $output"; return 1; }
    done
}

@test "a live view sees a driver go away and come back, again and again" {
    needs_live_drivers
    touch view
    start 'exec nimba-smi clocks --watch 0.1 >view'
    for round in 1 2 3; do
        grows balance
        UMOCKDEV_DIR=$bed nimba-sim fault gone
        grows n/a
        UMOCKDEV_DIR=$bed nimba-sim fault --clear
    done
    grows balance
    kill -s TERM "$sim"
    status_of_run
    nothing_is_left
}
