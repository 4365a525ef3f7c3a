# SPDX-License-Identifier: MIT
# What the suites of nimba-smi export share.

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

# exporting MACHINE SCRIPT: the script on that machine, with the functions of export.bash; bounded in
# case it waits for ever.
exporting() {
    run --separate-stderr timeout 300 nimba-sim run --machine "$1" -- \
        bash -euo pipefail -c "source '$BATS_TEST_DIRNAME/export.bash'
$2"
}

# The last run had that status; what it printed is told if not.
ended_with() {
    [ "$status" = "$1" ] || { echo "status $status"; echo "$output"; echo "$stderr"; return 1; }
}
