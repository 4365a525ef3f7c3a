#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi dvfs save and restore on simulated machines.

load nimba-smi.bash
load nimba-smi-dvfs.bash

@test "a whole state is saved and brought back" {
    needs_live_drivers
    run --separate-stderr here_sh "nimba-smi dvfs save state.json
        nimba-smi dvfs set $ALL >/dev/null; nimba-sim commands --clear
        nimba-smi dvfs restore state.json --dry-run >plan
        nimba-smi dvfs restore state.json | grep -c ' accepted$'
        log | diff - plan; nimba-smi dvfs get"
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "23
$SETTINGS"
    same "$(jq -c '[.schema, .chip, .bus_id, (.fields | length), .fields.dvfs_level,
        .fields["gfx_clock"]]' state.json)" \
        '["nimba-smi.dvfs-state.1","0x1001","0000:01:00.0",23,"balance","800"]'
}

@test "a state passes through pipes, and saving can be told as JSON" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-smi dvfs save - | jq ".fields = {dvfs_level: \"2\"}" |
        nimba-smi dvfs restore - --json | jq -c ".fields[0].result"
        nimba-smi dvfs save state.json --json'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "${lines[0]}" '"accepted"'
    same "$(sed 1d <<<"$output" | jq -c '[.schema, .file, .fields.dvfs_level, .errors]')" \
        '["nimba-smi.dvfs-save.1","state.json","performance",[]]'
}

# state_with FIELDS [CHIP]: a saved state.
state_with() {
    printf '{"schema": "nimba-smi.dvfs-state.1", "chip": "%s", "fields": {%s}}' "${2:-0x1001}" "$1"
}

@test "a file that is no state of this chip is refused, and nothing is written" {
    needs_live_drivers
    state_with '"dvfs_level": "1", "dvfs_mode": "9999999999"' >range.json
    state_with '"dvfs_level": "1", "speed": "1"' >unknown.json
    state_with '"dvfs_level": "1", "video_clock": "1"' >read-only.json
    state_with '"dvfs_level": "1"' 0x2030 >other-chip.json
    head -c 100 range.json >cut.json
    run --separate-stderr here_sh 'for file in range unknown read-only cut absent other-chip; do
            nimba-smi dvfs restore $file.json || echo $?
        done; log'
    same "$output" $'2\n2\n2\n2\n2\n2'
    same "$stderr" "\
nimba-smi: cannot restore range.json: dvfs_mode: expected a number from 0 to 0xffffffff, got \"9999999999\"
nimba-smi: cannot restore unknown.json: there is no field \"speed\"; nimba-smi dvfs get shows all
nimba-smi: cannot restore read-only.json: video_clock can only be read
nimba-smi: cannot restore cut.json: it is no JSON document
nimba-smi: cannot restore absent.json: No such file or directory
nimba-smi: $ADAPTER: the state is of another chip, 0x2030; --force brings it back all the same"
    run --separate-stderr here_sh 'nimba-smi dvfs restore other-chip.json --force >/dev/null; log'
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$output" "dvfs_level: lowpower"
}

@test "a state that cannot be written is told" {
    run --separate-stderr here nimba-smi dvfs save absent/state.json --json
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot write absent/state.json: No such file or directory"
    same "$(jq -c '[.file, .fields, .errors[].status]' <<<"$output")" '[null,{},1]'
    run --separate-stderr here nimba-smi dvfs save /dev/full
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot write /dev/full: No space left on device"
    run --separate-stderr here sh -c 'nimba-smi dvfs save - >/dev/full'
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot write to standard output: No space left on device"
}

@test "a state that cannot be read as a whole is not saved" {
    needs_live_drivers
    run --separate-stderr here_sh 'nimba-sim fault read dvfs_mode --directory info --error EIO
        nimba-smi dvfs save state.json --json'
    [ "$status" = 3 ]
    same "$stderr" \
        "nimba-smi: $ADAPTER: cannot read $INFO/dvfs_mode: Input/output error (see dmesg)"
    same "$(jq -c '[.adapter.slot, .file, .fields, .errors[].status]' <<<"$output")" '[0,null,{},3]'
    [ ! -e state.json ]
}
