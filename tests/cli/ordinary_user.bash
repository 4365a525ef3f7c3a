# SPDX-License-Identifier: MIT
# Commands as a user without any right. NIMBA_BIN comes from the build.

# Ends up as nobody, in no group, when the tests run as root. The build tree may be closed to others,
# so the user gets a copy of the programs; drop_ordinary_user_copy removes it.
as_ordinary_user() {
    if [ "$(id -u)" != 0 ]; then
        "$@"
        return
    fi
    local copy=$BATS_FILE_TMPDIR/copy
    if [ ! -e "$copy" ]; then
        copy_programs >"$copy"
        if ! as_nobody nimba-sim run --drivers live -- true 2>/dev/null; then
            echo plain >"$BATS_FILE_TMPDIR/drivers"
        fi
    fi
    as_nobody "$@"
}

# With live drivers if nobody can have them, else without a word about it.
as_nobody() {
    local -a drivers=()
    if [ -e "$BATS_FILE_TMPDIR/drivers" ]; then
        drivers=(NIMBA_SIM_DRIVERS="$(cat "$BATS_FILE_TMPDIR/drivers")")
    fi
    setpriv --reuid=65534 --regid=65534 --clear-groups \
        env HOME=/tmp PATH="$(cat "$BATS_FILE_TMPDIR/copy"):$PATH" "${drivers[@]}" "$@"
}

# Copies what the programs need, in the layout of the build tree; prints where the programs are.
copy_programs() {
    local tree=${NIMBA_BIN%/*} copy part
    copy=$(mktemp -d)
    for part in "$NIMBA_BIN" "$tree"/lib "$tree"/lib64 "$tree"/libexec "$tree"/share; do
        if [ -e "$part" ]; then
            cp -RL "$part" "$copy"
        fi
    done
    chmod -R a+rX "$copy"
    echo "$copy/${NIMBA_BIN##*/}"
}

drop_ordinary_user_copy() {
    local copy=$BATS_FILE_TMPDIR/copy
    if [ -e "$copy" ]; then
        rm -rf "$(dirname "$(cat "$copy")")"
    fi
}
