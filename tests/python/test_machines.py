# SPDX-License-Identifier: MIT
"""Machines of other kinds, each test on its own."""

import unittest

from support import STAND_IN, on, python, run, told


def raised(program: str, machine: str) -> str:
    """The last line that a Python program without success leaves on standard error."""
    ended = run(on(machine, *python("-c", f"import nimba_mgmt\n{program}")))
    if ended.returncode != 1:
        raise AssertionError(f"status {ended.returncode}\n{ended.stdout}{ended.stderr}")
    return ended.stderr.splitlines()[-1]


class Machines(unittest.TestCase):
    def test_without_any_gpu_there_is_no_adapter(self):
        self.assertEqual(told("print(json.dumps(nimba_mgmt.adapters()))", "no-gpu"), [])
        self.assertEqual(
            raised("nimba_mgmt.Adapter(0)", "no-gpu"),
            "nimba_mgmt._errors.NoAdapter: no adapter 0: "
            "no adapter was found at all (nimba-smi doctor tells why)",
        )

    def test_another_vendors_gpu_alone_is_listed(self):
        program = "print(json.dumps([(a.slot, a.bus_id) for a in nimba_mgmt.adapters()]))"
        self.assertEqual(told(program, "foreign-only"), [[None, "0000:01:00.0"]])

    def test_a_third_adapter_that_another_vendors_gpu_has_overwritten_can_be_used(self):
        program = f"""
nimba_mgmt.use_library({STAND_IN!r})
third, foreign = nimba_mgmt.adapters()[2:]
with nimba_mgmt.Adapter(third) as gpu:
    entered = [gpu.info(0), gpu.info(1)]
luids = [third.luid.low, third.luid.high, foreign.luid.high]
told = [(a.slot, a.name, a.bus_id, a.chip_id, a.card) for a in (third, foreign)]
print(json.dumps([*told, luids, entered]))
"""
        third, foreign, luids, entered = told(program, "three-adapters", STAND_IN_FOREIGN="1")
        self.assertEqual(third, [2, None, "0001:03:00.0", None, None])
        self.assertEqual(foreign, [None, "Gpu2:Nvidia-GPU", "0000:09:00.0", 0x2684, 7])
        self.assertEqual(luids, [1, 0x30000, 0x90000])
        self.assertEqual(entered, [0x1003, 2])

    def test_an_adapter_without_its_kernel_interface_library_can_be_opened_in_part(self):
        self.assertEqual(
            raised("nimba_mgmt.Adapter(0)", "no-library"),
            "nimba_mgmt._errors.CallFailed: gfx_global_init failed with status -1: "
            "no useful kernel-interface library",
        )
        program = """
failed = []
with nimba_mgmt.Adapter(0, partial=True) as gpu:
    for ask in (gpu.bandwidth, gpu.engine_busy):
        try:
            ask()
        except nimba_mgmt.CallFailed as error:
            failed.append(str(error))
    print(json.dumps([gpu.complete, gpu.temperature() is None, failed]))
"""
        self.assertEqual(
            told(program, "no-library"),
            [
                False,
                False,
                [
                    f"{call} failed with status -1: the kernel-interface library does not tell"
                    for call in ("bandwidth_init", "gfxbusy_init")
                ],
            ],
        )

    def test_all_pages_of_the_raw_list_are_one_list(self):
        program = """
with nimba_mgmt.Adapter(0) as gpu:
    found = gpu.allocations()
    print(json.dumps([len(found), len({a.handle for a in found})]))
"""
        self.assertEqual(told(program, "forty-allocations"), [40, 40])

    def test_fifty_contexts_are_listed(self):
        program = """
with nimba_mgmt.Adapter(0) as gpu:
    print(json.dumps([len(gpu.processes()), len(gpu.device_summary())]))
"""
        self.assertEqual(told(program, "fifty-contexts")[0], 50)

    def test_more_than_five_segments_are_told(self):
        program = """
with nimba_mgmt.Adapter(0) as gpu:
    print(json.dumps([s.index for s in gpu.segments().segments]))
"""
        self.assertEqual(told(program, "seven-segments"), [0, 1, 2, 3, 4, 5, 6])

    def test_an_error_of_a_value_is_the_workers_death(self):
        program = """
with nimba_mgmt.Adapter(0) as gpu:
    try:
        gpu.allocations()
    except nimba_mgmt.WorkerDied as error:
        print(json.dumps([error.call, error.how, "std::" in error.said, gpu.closed]))
"""
        self.assertEqual(
            told(program, "odd-handle.toml"),
            ["get_allocation_raw_list", "signal SIGABRT", True, True],
        )


if __name__ == "__main__":
    unittest.main()
