# SPDX-License-Identifier: MIT
"""What is written to the driver, and a driver that goes away, on the machine steady.toml."""

import unittest

from nimba_mgmt import Adapter, CallFailed, DeadlineExceeded, DvfsLevel, DvfsState, InfoNode

from support import needs_live_drivers, sim

INFO = "info/0/"


def commands() -> list[str]:
    """What the driver was told since the last call, but for its usage accounting."""
    told = [line for line in sim("commands").splitlines() if "/enable_usage " not in line]
    sim("commands", "--clear")
    return told


class Settings(unittest.TestCase):
    def setUp(self):
        needs_live_drivers()
        self.gpu = self.enterContext(Adapter(0))
        commands()

    def test_only_what_differs_is_written_and_read_back(self):
        self.addCleanup(self.gpu.set_dvfs, level=DvfsLevel.BALANCE)
        state = self.gpu.set_dvfs(level=DvfsLevel.PERFORMANCE, power_mode=1)
        self.assertEqual(commands(), [INFO + 'dvfs_level ok "performance\\n"'])
        self.assertIs(state.level, DvfsLevel.PERFORMANCE)
        self.assertEqual(state.gfx_clock, 750)
        self.assertEqual(self.gpu.dvfs(), state)

    def test_every_kind_of_field_reaches_its_node(self):
        before = self.gpu.dvfs()
        self.gpu.set_dvfs(power_mode=0x1F, clock_gating_vpp=0xFFFF, vcp1_low_threshold=7)
        told = commands()
        self.assertEqual(
            told,
            [
                INFO + 'power_mode ok "0x1f\\n"',
                INFO + 'pwm_wait_count ok "1 2 ffffffff\\n"',
                INFO + 'dvfs_control_params ok "2 2 7\\n"',
            ],
        )
        after = self.gpu.set_dvfs(
            power_mode=before.power_mode,
            clock_gating_vpp=before.clock_gating_vpp,
            vcp1_low_threshold=before.vcp1_low_threshold,
        )
        self.assertEqual(after, before)

    def test_a_value_that_the_driver_rejects_is_not_there_afterwards(self):
        state = self.gpu.set_dvfs(gfx_voltage=-5)
        self.assertEqual(commands(), [INFO + 'dvfs_clk_voltage EINVAL "v 0 -5\\n"'])
        self.assertEqual(state.gfx_voltage, 800)

    def test_what_is_no_setting_or_does_not_fit_is_refused(self):
        for fields, error in (
            ({"colour": 1}, TypeError),
            ({"memory_clock": 1}, TypeError),
            ({"power_mode": 0x100000000}, ValueError),
            ({"power_gating_3d": 0x10000}, ValueError),
            ({"gfx_clock": 0x80000000}, ValueError),
        ):
            with self.subTest(fields=fields), self.assertRaises(error):
                self.gpu.set_dvfs(level=DvfsLevel.LOW_POWER, **fields)
        self.assertEqual(commands(), [])

    def test_bits_of_the_control_flag_are_set_and_cleared(self):
        self.addCleanup(self.gpu.misc_ctl_flag, clear=0xFFFFFFFF)
        self.assertEqual(self.gpu.misc_ctl_flag(set=0x80000011), 0x80000011)
        self.assertEqual(self.gpu.misc_ctl_flag(set=2, clear=3), 0x80000012)
        told = commands()
        self.assertEqual(self.gpu.misc_ctl_flag(), 0x80000012)
        self.assertEqual((len(told), commands()), (2, []))
        with self.assertRaises(ValueError):
            self.gpu.misc_ctl_flag(set=-1)

    def test_use_is_accounted_for_while_an_adapter_is_open(self):
        self.assertEqual(self.gpu.info(InfoNode.ENABLE_USAGE), 1)
        self.gpu.close()
        told = sim("commands").splitlines()
        self.assertEqual(told[-1], INFO + 'enable_usage ok "0"')


class VanishingDriver(unittest.TestCase):
    def setUp(self):
        needs_live_drivers()
        self.gpu = self.enterContext(Adapter(0))
        self.addCleanup(sim, "fault", "--clear")

    def test_a_driver_that_is_gone_tells_nothing(self):
        sim("fault", "gone")
        self.assertIsNone(self.gpu.temperature())
        self.assertEqual(self.gpu.info(InfoNode.FB_SIZE), 0)
        self.assertEqual(
            {value for name, value in vars(self.gpu.dvfs()).items() if not name.endswith("_clock")},
            {None},
        )
        self.assertIsNone(self.gpu.summary_ext2().driver_version)
        for call, ask in (
            ("get_allocation_raw_list", self.gpu.allocations),
            ("get_device_allocation_summary_ext1", self.gpu.device_summary),
            ("get_device_pid_maps", self.gpu.processes),
            ("get_segment_info", self.gpu.segments),
        ):
            with self.subTest(call=call), self.assertRaises(CallFailed) as raised:
                ask()
            self.assertEqual(raised.exception.args, (call, -1, "the driver could not be read"))

    def test_readers_without_a_status_say_that_they_could_not_read(self):
        sim("fault", "gone")
        for call, ask in (
            ("get_memleak_info", lambda: list(self.gpu.leaks(count=1))),
            ("get_pagetable_data", self.gpu.page_tables),
            ("get_pagetable_data", self.gpu.vm_allocations),
        ):
            with self.assertRaisesRegex(CallFailed, "the driver could not be read") as raised:
                ask()
            self.assertEqual(raised.exception.call, call)

    def test_an_untold_setting_is_none_and_stays_unwritten(self):
        commands()
        sim("fault", "vanish", "dvfs_control_params", "--directory", "info")
        state = self.gpu.set_dvfs(power_mode=1)
        self.assertIsNone(state.gfx_check_size)
        self.assertIsNone(state.vpp_low_threshold)
        self.assertEqual((state.power_mode, state.mode), (1, 1))
        self.assertEqual(commands(), [])

    def test_an_adapter_is_open_to_what_comes_back(self):
        sim("fault", "open", "allocations")
        with self.assertRaises(CallFailed):
            self.gpu.allocations()
        sim("fault", "--clear")
        self.assertEqual(len(self.gpu.allocations()), 2)

    def test_a_driver_that_does_not_answer_meets_the_deadline(self):
        sim("fault", "block", "eclk", "--directory", "info", "--ms", "60000")
        self.gpu.deadline = 0.5
        with self.assertRaises(DeadlineExceeded):
            self.gpu.clocks()
        self.assertTrue(self.gpu.closed)
        sim("fault", "--clear")
        self.gpu.deadline = 10
        self.gpu.open()
        self.assertEqual(self.gpu.clocks().engine, 550)


class States(unittest.TestCase):
    def test_the_settings_have_the_fields_that_set_dvfs_takes(self):
        self.assertEqual(len(DvfsState.__dataclass_fields__), 25)


if __name__ == "__main__":
    unittest.main()
