# SPDX-License-Identifier: MIT
"""The records against the assertions of the library's header."""

import ctypes
import re
import unittest

import nimba_mgmt
from nimba_mgmt._layout import RECORDS, Layout

from support import SOURCE

# Everything behind the C part has types of C++.
HEADER = (SOURCE / "include/nimba_mgmt_interface.h").read_text().partition('} /* extern "C" */')[0]
SIZES = re.findall(r"NIMBA_MGMT_ASSERT\(sizeof\((\w+)\) == (\d+)\);", HEADER)
OFFSETS = re.findall(r"NIMBA_MGMT_ASSERT_OFFSET\((\w+), ([\w.]+), (\d+)\);", HEADER)


def offset(layout: Layout, path: str) -> int:
    """The offset of a member of a structure, or of a member of that, by their names in C."""
    structure = layout.structure
    total = 0
    for name in path.split("."):
        kinds = dict(structure._fields_)
        if name.startswith("reserved"):
            raise KeyError(name)
        total += getattr(structure, name).offset
        structure = kinds[name]
    return total


class Layouts(unittest.TestCase):
    def test_the_header_tells_sizes_and_offsets(self):
        self.assertGreaterEqual(len(SIZES), 28)
        self.assertGreaterEqual(len(OFFSETS), 150)

    def test_every_record_of_the_header_is_there_with_its_size(self):
        for name, size in SIZES:
            with self.subTest(record=name):
                self.assertIn(name, RECORDS)
                self.assertEqual(ctypes.sizeof(RECORDS[name].structure), int(size))

    def test_no_record_is_there_that_the_header_lacks(self):
        self.assertEqual(set(RECORDS), {name for name, _ in SIZES})

    def test_every_field_is_where_the_header_has_it(self):
        for name, path, expected in OFFSETS:
            if path.startswith("reserved"):
                continue
            with self.subTest(field=f"{name}.{path}"):
                self.assertEqual(offset(RECORDS[name], path), int(expected))

    def test_reserved_bytes_are_no_field(self):
        reserved = [(name, int(at)) for name, path, at in OFFSETS if path.startswith("reserved")]
        self.assertGreaterEqual(len(reserved), 9)
        for name, at in reserved:
            with self.subTest(record=name, offset=at):
                places = RECORDS[name].places.values()
                self.assertNotIn(at, [place.offset for place in places])
                self.assertTrue(hasattr(RECORDS[name].structure, f"reserved_at_{at}"))

    def test_every_field_of_the_header_is_described(self):
        bodies = dict(
            (name, body)
            for body, name in re.findall(r"typedef struct \w+ \{\n(.*?)\n\} (\w+);", HEADER, re.S)
        )
        for name, layout in RECORDS.items():
            without_comments = re.sub(r"/\*.*?\*/", "", bodies[name], flags=re.S)
            members = re.findall(r"(\w+)(?:\[\w+\])*;", without_comments)
            described = {place.c_name or field for field, place in layout.places.items()}
            for member in members:
                if not member.startswith("reserved"):
                    with self.subTest(field=f"{name}.{member}"):
                        self.assertIn(member, described)

    def test_records_of_numbers_alone_are_read_in_their_size(self):
        numbers = {name: layout.numbers for name, layout in RECORDS.items() if layout.numbers}
        self.assertLessEqual({"_GFX_ALLOCATION_INFO", "_PAGETABLE_DATA"}, set(numbers))
        for name, form in numbers.items():
            with self.subTest(record=name):
                self.assertEqual(form.size, ctypes.sizeof(RECORDS[name].structure))

    def test_the_documentation_of_a_record_tells_its_fields_and_units(self):
        text = nimba_mgmt.Clocks.__doc__ or ""
        self.assertIn("engine (driver's unit): node \"eclk\".", text)

    def test_the_nodes_are_those_of_the_header(self):
        for prefix, nodes in (("HWMON", nimba_mgmt.HwmonNode), ("INFO", nimba_mgmt.InfoNode)):
            told = re.findall(rf"{prefix}_NODE_(\w+) = (\d+)", HEADER)
            self.assertEqual(
                {node.name: node.value for node in nodes},
                {name: int(number) for name, number in told if name != "NONE"},
            )

    def test_the_levels_are_those_of_the_header(self):
        told = re.findall(r"#define DVFS_LEVEL_(\w+) (\d+)", HEADER)
        self.assertEqual(
            {level.name: level.value for level in nimba_mgmt.DvfsLevel},
            {name: int(number) for name, number in told},
        )

    def test_the_interface_version_is_that_of_the_header(self):
        from nimba_mgmt._library import CLIENT_VERSION

        self.assertIn(f"#define NIMBA_INTERFACE_VERSION {CLIENT_VERSION}\n", HEADER)


if __name__ == "__main__":
    unittest.main()
