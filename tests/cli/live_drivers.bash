# SPDX-License-Identifier: MIT
# Live drivers where this user can mount FUSE file systems. NIMBA_BIN comes from the build.

live_drivers_work() {
    "$NIMBA_BIN/nimba-sim" run --drivers live -- true 2>/dev/null
}

# For tests of what only live drivers do.
needs_live_drivers() {
    [ "${NIMBA_SIM_DRIVERS-}" != plain ] || skip "needs live drivers: no FUSE file system can be mounted here"
}

# All other tests go on with plain files, and nothing is said of it.
live_drivers_work || export NIMBA_SIM_DRIVERS=plain
