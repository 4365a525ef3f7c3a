#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi doctor for ordinary users, and what it says of the preference file.

load nimba-smi.bash
load nimba-smi-doctor.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

@test "6: an ordinary user is told what is closed" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine default \
        --drivers plain -- sh -c 'chmod 0 "$UMOCKDEV_DIR"/sys/kernel/debug
            nimba-smi doctor --json; s=$?; chmod 700 "$UMOCKDEV_DIR"/sys/kernel/debug; exit $s'
    has_status 6
    same "$(jq -r '.checks[] | select(.result == "fail") | .id' <<<"$output")" debugfs
    same "$(told debugfs)" "\
no permission to read /sys/kernel/debug: run as root
for video memory and page tables type sudo in front of the command: sudo nimba-smi doctor"
    [[ "$(told permissions)" == *"is not root: what the driver shows to root alone stays closed"* ]]
}

@test "6: an ordinary user is told which group may open the nodes" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --drivers plain -- sh -c \
        'cd "$UMOCKDEV_DIR/dev/dri" && chmod 0060 renderD128 && chmod 0000 card0 &&
            nimba-smi doctor --json'
    has_status 6
    same "$(jq -r '.checks[] | select(.result == "fail") | .id' <<<"$output")" drm_access
    same "$(skipped)" adapters
    group=$(as_ordinary_user id -gn)
    same "$(told drm_access)" "\
no permission to open /dev/dri/renderD128: join the group \"$group\" or run as root
type: sudo usermod --append --groups $group \"\$USER\", and log in again"
}

@test "HOME that is not set is a note" {
    doctor_on default 'unset HOME'
    has_status 0
    same "$(faults)" "note home"
    same "$(skipped)" preference_file
}

@test "a home without the directory of preferences is a note" {
    rmdir "$HOME/.local/share"
    doctor_on default
    has_status 0
    same "$(told preference_file)" "\
there is no directory $HOME/.local/share, so no preference can be kept
type: mkdir -p \"$HOME/.local/share\""
}

@test "a preference file of garbage is a note, and stays as it is" {
    printf '[viewer]\nGpuPrefer = 1\nwhat is this\n' >"$HOME/.local/share/wmt_gfx_util.ini"
    doctor_on default
    has_status 0
    same "$(faults)" "note preference_file"
    same "$(told preference_file | head -n 1)" "$HOME/.local/share/wmt_gfx_util.ini: 1 bad line, at \
first line 3, which the library ignores, and drops when it writes the file"
    same "$(tail -n 1 "$HOME/.local/share/wmt_gfx_util.ini")" "what is this"
}

@test "6: a preference file that belongs to another" {
    mkdir -p "$BATS_TEST_TMPDIR/open/.local/share"
    echo '[viewer]' >"$BATS_TEST_TMPDIR/open/.local/share/wmt_gfx_util.ini"
    chmod 444 "$BATS_TEST_TMPDIR/open/.local/share/wmt_gfx_util.ini"
    home=$(mktemp -d)
    cp -r "$BATS_TEST_TMPDIR/open/.local" "$home"
    chmod 755 "$home"
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --drivers plain -- \
        env HOME="$home" nimba-smi doctor --json
    rm -rf "$home"
    has_status 6
    same "$(told preference_file | head -n 1)" "cannot write $home/.local/share/wmt_gfx_util.ini: \
Permission denied, so no preference can be kept"
}
