#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The nodes of live drivers in sysfs and /proc: commands, their log, and faults.

load nimba-sim.bash

PCI=/sys/bus/pci/devices/0000:01:00.0

@test "a command changes what the next read prints, a malformed one fails" {
    needs_live_drivers
    run nimba-sim run -- sh -c "cat $PCI/jw_info/dvfs_level
        echo lowpower >$PCI/jw_info/dvfs_level; cat $PCI/jw_info/dvfs_level
        printf odd | dd of=$PCI/jw_info/dvfs_level 2>&1 | head -n 1; cat $PCI/jw_info/dvfs_level"
    [ "${lines[0]}" = "dvfs_level:balance" ]
    [ "${lines[1]}" = "dvfs_level:lowpower" ]
    [ "${lines[2]}" = "dd: error writing '$PCI/jw_info/dvfs_level': Invalid argument" ]
    [ "${lines[3]}" = "dvfs_level:lowpower" ]
    [ "${#lines[@]}" = 4 ]
}

@test "commands are listed in order, as lines and as JSON, and forgotten" {
    needs_live_drivers
    run nimba-sim run -m two-qv -- sh -c '
        dd of=/sys/bus/pci/devices/0000:03:00.0/qv_info/enable_usage 2>/dev/null <<EOT
1
EOT
        printf 9 | dd of=/sys/bus/pci/devices/0000:01:00.0/qv_info/enable_usage 2>/dev/null
        nimba-sim commands
        nimba-sim commands --json
        nimba-sim commands --clear
        nimba-sim commands
        nimba-sim commands --json'
    [ "$output" = 'info/1/enable_usage ok "1\n"
info/0/enable_usage EINVAL "9"
[
  {
    "node": "info/1/enable_usage",
    "error": null,
    "text": "1\n"
  },
  {
    "node": "info/0/enable_usage",
    "error": "EINVAL",
    "text": "9"
  }
]
[]' ]
}

@test "commands of the library are in the log" {
    needs_live_drivers
    run nimba-sim run -- sh -c "nimba-smi ps >/dev/null; nimba-sim commands"
    [ "$status" = 0 ]
    [ "$output" = 'info/0/enable_usage ok "1"
info/0/enable_usage ok "0"' ]
}

@test "2: commands with options that do not go together" {
    fails_with 2 "nimba-sim: --json excludes --clear; see nimba-sim --help" \
        nimba-sim commands --clear --json
}

@test "4: commands without a machine, without live drivers" {
    fails_with 4 "nimba-sim: no simulated machine here: this is for commands that \`nimba-sim run\` runs" \
        nimba-sim commands
    for option in --json --clear; do
        fails_with 4 "nimba-sim: the simulated machine has no live drivers: No such file or directory" \
            nimba-sim run --drivers plain -- nimba-sim commands "$option"
    done
}

@test "1: a log that cannot be written" {
    needs_live_drivers
    fails_with 1 "nimba-sim: cannot write to standard output: No space left on device" \
        nimba-sim run -- sh -c "echo 1 >$PCI/jw_info/enable_usage; nimba-sim commands >/dev/full"
}

@test "faults befall the nodes of every directory" {
    needs_live_drivers
    run nimba-sim run -- sh -c "
        nimba-sim fault open eclk --directory info --error ENOENT
        nimba-sim fault read temp1_input --directory hwmon --error ENODEV
        nimba-sim fault read --directory proc
        nimba-sim fault write dvfs_level --directory info --error EBUSY --first 1
        cat $PCI/jw_info/eclk $PCI/hwmon/hwmon0/temp1_input /proc/gpuinfo_0
        printf 'lowpower\n' | dd of=$PCI/jw_info/dvfs_level 2>&1 | head -n 1
        printf 'lowpower\n' >$PCI/jw_info/dvfs_level; cat $PCI/jw_info/dvfs_level
        nimba-sim commands"
    [ "$output" = "cat: '$PCI/jw_info/eclk': No such file or directory
cat: '$PCI/hwmon/hwmon0/temp1_input': No such device
cat: /proc/gpuinfo_0: Input/output error
dd: error writing '$PCI/jw_info/dvfs_level': Device or resource busy
dvfs_level:lowpower
info/0/dvfs_level EBUSY \"lowpower\\n\"
info/0/dvfs_level ok \"lowpower\\n\"" ]
}

@test "a driver that goes away takes its directories along" {
    needs_live_drivers
    run nimba-sim run -- bash -c "cd $PCI/jw_info; nimba-sim fault gone --adapter 0
        cat eclk $PCI/hwmon/hwmon0/name /proc/gpuinfo_0
        nimba-sim fault --clear; cat $PCI/hwmon/hwmon0/name; cat eclk"
    [ "${lines[0]}" = "cat: eclk: No such file or directory" ]
    [ "${lines[1]}" = "cat: '$PCI/hwmon/hwmon0/name': No such file or directory" ]
    [ "${lines[2]}" = "cat: /proc/gpuinfo_0: No such file or directory" ]
    [ "${lines[3]}" = "jw" ]
    [ "${lines[4]}" = "cat: eclk: No such file or directory" ]
}

@test "what moves goes on while the command runs" {
    needs_live_drivers
    run nimba-sim run -- bash -c "count=$PCI/jw_info/fps_count; first=\$(cat \$count)
        for ((tries = 0; tries < 400; ++tries)); do
            [ \"\$(cat \$count)\" = \"\$first\" ] || exit 0
            sleep 0.05
        done; exit 9"
    [ "$status" = 0 ]
}
