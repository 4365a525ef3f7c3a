# SPDX-License-Identifier: MIT
# What the suites of nimba-smi prefer share: a home directory for each test, and preference files.

# No test needs what only live drivers do.
export NIMBA_SIM_DRIVERS=plain

setup() {
    export HOME=$BATS_TEST_TMPDIR/home
    SHARE=$HOME/.local/share
    FILE=$SHARE/wmt_gfx_util.ini
    mkdir "$HOME"
    cd "$BATS_TEST_TMPDIR" || return 1
}

# entry APPLICATION [VALUE]: what the library writes for an application in /opt at the first adapter.
entry() {
    printf '[%s]\nFullPath = /opt/%s\nPreferGpuName = Gpu0:Nimba-GT-K\n' "$1" "$1"
    printf 'PreferGpuBusID = 0000:01:00.0\nGpuPrefer = %s\n\n\n' "${2-1}"
}

# entries VALUE NAME...: a whole file of such entries.
entries() {
    local value=$1 name
    shift
    printf '; wmt_gfx_util.ini\n\n'
    for name in "$@"; do
        entry "$name" "$value"
    done
}

# keep_entries NAME...: the preference file holds these.
keep_entries() {
    mkdir -p "$SHARE"
    entries 1 "$@" >"$FILE"
}

prefer() {
    run --separate-stderr on two-and-foreign nimba-smi prefer "$@"
}

NOT_THERE="nimba-smi: there is no program"
