# SPDX-License-Identifier: MIT
"""What Python tests know of the simulated machine. NIMBA_BIN, which the build tells, has its program."""

from __future__ import annotations

import functools
import os
import subprocess

# For a condition that holds soon, unless something is wrong.
BOUND = 60


def program(name: str) -> str:
    """The path of a built program."""
    return os.path.join(os.environ["NIMBA_BIN"], name)


@functools.cache
def live_drivers_work() -> bool:
    """Whether this user can mount FUSE file systems, without which drivers do not change."""
    if os.environ.get("NIMBA_SIM_DRIVERS") == "plain":
        return False
    command = [program("nimba-sim"), "run", "--drivers", "live", "--", "true"]
    return subprocess.run(command, stderr=subprocess.DEVNULL, timeout=BOUND).returncode == 0
