# SPDX-License-Identifier: MIT
# What the suites of nimba-smi doctor share.

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    export HOME=$BATS_TEST_TMPDIR/home
    mkdir -p "$HOME/.local/share"
}

# faults: what the checks of the last document found amiss, a line each.
faults() {
    jq -r '.checks[] | select(.result == "note" or .result == "fail") |
        .result + " " + .id + (if .adapter then " " + .adapter else "" end)' <<<"$output"
}

# told ID: what the last document says about a check that did not pass, in two lines.
told() {
    jq -r --arg id "$1" '.checks[] | select(.id == $id) | .found, .remedy' <<<"$output"
}

# skipped: the checks of the last document that were not made.
skipped() {
    jq -r '[.checks[] | select(.result == "skipped") | .id] | join(" ")' <<<"$output"
}

# doctor_on MACHINE [SCRIPT]: the document on that machine, after a shell script there.
doctor_on() {
    run --separate-stderr on "$1" sh -c "${2:-:}; nimba-smi doctor --json"
    same "$stderr" ""
}

# has_status STATUS: that of the last run.
has_status() {
    [ "$status" = "$1" ] || { echo "status $status: $stderr$output"; return 1; }
}
