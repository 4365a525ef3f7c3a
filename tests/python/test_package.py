# SPDX-License-Identifier: MIT
"""The package as it is installed, and what tells of it."""

import os
import sys
import tempfile
import tomllib
import unittest
from pathlib import Path

import nimba_mgmt
from nimba_mgmt import preferences

from support import SOURCE, STAND_IN, run

PACKAGE = SOURCE / "bindings/python"


class Package(unittest.TestCase):
    def test_the_version_is_the_projects(self):
        self.assertEqual(nimba_mgmt.__version__, os.environ["NIMBA_VERSION"])

    def test_the_project_file_tells_name_and_version(self):
        project = tomllib.loads((PACKAGE / "pyproject.toml").read_text())
        self.assertEqual(project["project"]["name"], "nimba-mgmt")
        self.assertNotIn("dependencies", project["project"])
        self.assertEqual(
            project["tool"]["setuptools"]["dynamic"]["version"]["attr"],
            "nimba_mgmt._version.__version__",
        )

    def test_what_is_installed_works_and_is_known_to_python(self):
        with tempfile.TemporaryDirectory() as prefix:
            install = ["cmake", "--install", os.environ["NIMBA_BUILD"], "--component", "python"]
            installed = run([*install, "--prefix", prefix])
            self.assertEqual(installed.returncode, 0, installed.stderr)
            place = Path(prefix, "lib/python3/dist-packages")
            files = {path.name for path in (place / "nimba_mgmt").iterdir()}
            self.assertEqual(
                files, {path.name for path in (PACKAGE / "nimba_mgmt").glob("*.[pt]y*")}
            )
            self.assertIn("py.typed", files)
            program = (
                "import importlib.metadata, nimba_mgmt, sys;"
                "print(importlib.metadata.version('nimba-mgmt'), nimba_mgmt.__file__);"
                "print(nimba_mgmt.adapters(library=sys.argv[1])[0].bus_id)"
            )
            ended = run([sys.executable, "-c", program, STAND_IN], env={"PYTHONPATH": str(place)})
            self.assertEqual(
                (ended.stdout, ended.stderr),
                (f"{nimba_mgmt.__version__} {place}/nimba_mgmt/__init__.py\n0000:03:00.0\n", ""),
            )

    def test_everything_public_is_documented(self):
        functions = [getattr(nimba_mgmt.Adapter, name) for name in vars(nimba_mgmt.Adapter)
                     if not name.startswith("_")]  # fmt: skip
        names = [getattr(nimba_mgmt, name) for name in nimba_mgmt.__all__ if name[0].isalpha()]
        entries = [getattr(preferences, name) for name in preferences.__all__]
        for thing in functions + names + entries:
            if callable(thing) or isinstance(thing, property):
                with self.subTest(thing=thing):
                    self.assertTrue(thing.__doc__)
                    self.assertFalse(thing.__doc__.startswith(f"{getattr(thing, '__name__', '')}("))


if __name__ == "__main__":
    unittest.main()
