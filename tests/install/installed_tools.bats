#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The tools of an installed tree, and a C program beside them, on simulated machines.

load installed_tree.bash

setup_file() {
    install_tree
    compile_host "$BATS_FILE_TMPDIR/host"
}

# The adapters on a machine as "name bus-id" lines: as the C program sees them, ...
host_adapters() {
    "$prefix/bin/nimba-sim" run --machine "$1" -- "$BATS_FILE_TMPDIR/host" | grep '^Gpu' || true
}

# ... and as nimba-smi lists them.
listed_adapters() {
    "$prefix/bin/nimba-sim" run --machine "$1" -- "$prefix/bin/nimba-smi" list --json |
        jq -r '.adapters[] | "\(.name) \(.bus_id)"'
}

@test "a C program sees the adapter of the default machine" {
    run "$prefix/bin/nimba-sim" run -- "$BATS_FILE_TMPDIR/host"
    [ "$status" -eq 0 ]
    [ "${lines[1]}" = "interface version 22" ]
    [[ "${lines[2]}" == Gpu0:Nimba-* ]]
    [ "${lines[3]}" = "uninit_100_priority." ]
}

@test "a C program and nimba-smi see the same adapters" {
    for machine in default two-qv three-adapters; do
        echo "machine $machine" >&2
        [ -n "$(host_adapters "$machine")" ]
        [ "$(host_adapters "$machine")" = "$(listed_adapters "$machine")" ]
    done
}

@test "a C program and nimba-smi find nothing on a machine without a GPU" {
    [ -z "$(host_adapters no-gpu)" ]
    [ -z "$(listed_adapters no-gpu)" ]
}

@test "the installed tools find the library without help from the environment" {
    run env -u LD_LIBRARY_PATH "$prefix/bin/nimba-smi" version --json
    [ "$status" -eq 0 ]
    [[ "$(jq -r '.. | strings' <<< "$output")" == *"$libdir/libnimba_mgmt_interface.so"* ]]
}
