# SPDX-License-Identifier: MIT
"""Runs all cases, or those that are named: a line for each, and a last one that counts them.

A case that is skipped, or a name without cases, is a failure: everything here must have run.
"""

from __future__ import annotations

import os
import sys
import time
import traceback
import unittest

# What differs between the families runs on both. The rest is the kernel's or the user's doing and
# runs on one, so that both machines take as long.
CASES = {
    "nimba": ("queries", "tool", "nodes", "memory_modules", "identifiers"),
    "qv": (
        "queries",
        "tool.EitherFamily",
        "unplug",
        "rebind",
        "users",
        "several_adapters",
        "identifiers",
    ),
}


class Lines(unittest.TestResult):
    """Prints a line for each case when it has ended, and behind it why it failed."""

    def __init__(self) -> None:
        super().__init__()
        self.passed = 0
        self._began = 0.0

    def startTest(self, test: unittest.TestCase) -> None:
        super().startTest(test)
        self._began = time.monotonic()

    def addSuccess(self, test: unittest.TestCase) -> None:
        self.passed += 1
        self._tell("ok", test)

    def addFailure(self, test: unittest.TestCase, err: object) -> None:
        super().addFailure(test, err)
        self._tell_why(test, err)

    def addError(self, test: unittest.TestCase, err: object) -> None:
        super().addError(test, err)
        self._tell_why(test, err)

    def addSkip(self, test: unittest.TestCase, reason: str) -> None:
        self.errors.append((test, reason))
        self._tell("FAILED", test)
        print(f"  it did not run: {reason}")

    def _tell_why(self, test: unittest.TestCase, err: object) -> None:
        self._tell("FAILED", test)
        for line in "".join(traceback.format_exception(*err)).splitlines():
            print("  " + line)

    def _tell(self, result: str, test: unittest.TestCase) -> None:
        seconds = time.monotonic() - self._began
        name = test.id().removeprefix("cases.")
        print(f"{result} {name} ({seconds:.1f} s)")


def main() -> int:
    sys.path.insert(0, "/mnt")
    result = Lines()
    began = time.monotonic()
    for name in sys.argv[1:] or CASES[os.environ["FAMILY"]]:
        suite = unittest.defaultTestLoader.loadTestsFromName(f"cases.{name}")
        if suite.countTestCases() == 0:
            result.errors.append((name, "no cases"))
            print(f"FAILED {name}: no cases")
        suite.run(result)
    seconds = time.monotonic() - began
    failed = len(result.errors) + len(result.failures)
    print(f"{result.passed} cases passed, {failed} failed, in {seconds:.0f} s")
    if failed == 0:
        print(f"all {result.passed} cases passed")
    return 0 if failed == 0 else 1


if __name__ == "__main__":
    status = main()
    sys.stdout.flush()
    os._exit(status)  # without what the library left in the C library's buffer
