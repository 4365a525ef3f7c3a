# SPDX-License-Identifier: MIT
"""The process in which the library runs, with a library that does as it is told."""

import gc
import os
import signal
import subprocess
import sys
import threading
import time
import unittest
from pathlib import Path

import nimba_mgmt
from nimba_mgmt import (
    Adapter,
    AdapterClosed,
    CallFailed,
    DeadlineExceeded,
    FunctionMissing,
    LibraryNotFound,
    NoAdapter,
    VersionMismatch,
    WorkerDied,
)

from support import STAND_IN, TEMPERATURE, StandIn, children, descriptors, ended_soon, run


class Use(StandIn):
    def test_an_adapter_is_found_initialised_asked_and_left(self):
        log = self.log_calls()
        with self.adapter() as gpu:
            self.assertEqual(gpu.temperature(), 61)
            self.assertEqual(repr(gpu), "<nimba_mgmt.Adapter 0000:03:00.0 open>")
        self.assertTrue(gpu.closed)
        self.assertEqual(
            log.read_text().split(),
            ["dlopen", "set_print_callback", "get_interface_version", "get_interface_version_ext1",
             "gfx_find_adapter", "gfx_global_init", TEMPERATURE, "gfx_global_exit"],
        )  # fmt: skip

    def test_adapters_initialises_nothing(self):
        log = self.log_calls()
        (found,) = nimba_mgmt.adapters(library=STAND_IN)
        self.assertEqual((found.bus_id, found.card, found.chip_id), ("0000:03:00.0", 4, 0x1001))
        self.assertNotIn("gfx_global_init", log.read_text())

    def test_an_adapter_is_known_by_its_bus_id_or_by_what_was_listed(self):
        (found,) = nimba_mgmt.adapters(library=STAND_IN)
        for which in ("0000:03:00.0", "03:00.0", found):
            with Adapter(which, library=STAND_IN) as gpu:
                self.assertEqual(gpu.identity, found)

    def test_where_none_is_no_adapter_is_opened(self):
        with self.assertRaises(NoAdapter) as raised:
            Adapter("0000:04:00.0", library=STAND_IN)
        self.assertEqual(str(raised.exception), "no adapter 0000:04:00.0: none is there")

    def test_a_library_can_be_set_for_all(self):
        self.addCleanup(nimba_mgmt.use_library, None)
        nimba_mgmt.use_library(STAND_IN)
        version = nimba_mgmt.library_version()
        self.assertEqual((version.interface, version.version), ((0, 22), None))
        self.assertEqual(version.file, os.path.realpath(STAND_IN))

    def test_nothing_that_the_library_prints_is_seen(self):
        program = "import nimba_mgmt, sys; nimba_mgmt.Adapter(0, library=sys.argv[1]).close()"
        ended = run([sys.executable, "-c", program, STAND_IN])
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, "", ""))

    def test_debug_shows_what_it_prints_on_standard_error(self):
        program = (
            "import nimba_mgmt, sys; nimba_mgmt.Adapter(0, library=sys.argv[1], debug=True).close()"
        )
        ended = run([sys.executable, "-c", program, STAND_IN])
        self.assertEqual((ended.returncode, ended.stdout), (0, ""))
        self.assertEqual(
            sorted(ended.stderr.splitlines()),
            ["loaded on standard error", "loaded on standard output"],
        )

    def test_messages_are_logged_for_those_who_want_them(self):
        self.tell(f"{TEMPERATURE}:message")
        gpu = self.adapter()
        with self.assertLogs("nimba_mgmt", "DEBUG") as logs:
            gpu.temperature()
        self.assertEqual([r.getMessage() for r in logs.records], ["first", "100%d \\xff"])
        with self.assertNoLogs("nimba_mgmt", "INFO"):
            self.assertEqual(gpu.temperature(), 61)

    def test_a_file_of_the_working_directory_is_no_module_of_the_worker(self):
        (self.directory / "json.py").write_text("raise SystemExit(9)")
        package = str(Path(nimba_mgmt.__file__).parents[1])
        program = (
            f"import sys; sys.path[0] = {package!r}; import nimba_mgmt;"
            " nimba_mgmt.adapters(library=sys.argv[1])"
        )
        ended = run([sys.executable, "-c", program, STAND_IN], cwd=self.directory)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))

    def test_closed_standard_streams_are_no_hindrance(self):
        program = (
            "import nimba_mgmt, os, sys; [os.close(n) for n in (0, 1)];"
            "gpu = nimba_mgmt.Adapter(0, library=sys.argv[1]); sys.exit(gpu.temperature())"
        )
        ended = run([sys.executable, "-c", program, STAND_IN])
        self.assertEqual((ended.returncode, ended.stderr), (61, ""))

    def test_threads_share_an_adapter(self):
        gpu = self.adapter()
        seen = []
        threads = [
            threading.Thread(target=lambda: seen.extend(gpu.temperature() for _ in range(20)))
            for _ in range(4)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(seen, [61] * 80)

    def test_what_the_library_leaves_as_it_was_is_none(self):
        gpu = self.adapter()
        self.assertIsNone(gpu.frame_rate())
        self.assertEqual(gpu.frame_rate(), nimba_mgmt.FrameRate(60.0, None, None, 59.5))


class Faults(StandIn):
    def dies(self, fault: str) -> WorkerDied:
        self.tell(f"{TEMPERATURE}:{fault}")
        gpu = self.adapter()
        with self.assertRaises(WorkerDied) as raised:
            gpu.temperature()
        self.assertTrue(gpu.closed)
        self.assertEqual(raised.exception.call, TEMPERATURE)
        return raised.exception

    def test_an_abort_is_an_exception_with_the_last_words(self):
        error = self.dies("abort")
        self.assertEqual(error.how, "signal SIGABRT")
        self.assertEqual(error.said, "loaded on standard error\na complaint before the end")

    def test_an_error_of_cpp_is_an_exception(self):
        error = self.dies("throw")
        self.assertEqual(error.how, "signal SIGABRT")
        self.assertIn("std::invalid_argument", error.said)

    def test_a_crash_is_an_exception(self):
        self.assertEqual(self.dies("crash").how, "signal SIGSEGV")

    def test_an_exit_is_an_exception(self):
        self.assertEqual(self.dies("exit").how, "exit status 7")

    def test_a_worker_that_dies_at_load_is_an_exception(self):
        self.tell("dlopen:abort")
        with self.assertRaises(WorkerDied) as raised:
            nimba_mgmt.adapters(library=STAND_IN)
        self.assertEqual(raised.exception.call, "dlopen")

    def test_a_worker_that_dies_at_the_end_leaves_a_closed_adapter(self):
        self.tell("gfx_global_exit:abort")
        gpu = self.adapter()
        gpu.close()
        self.assertTrue(gpu.closed)

    def test_a_worker_that_somebody_kills_is_an_exception(self):
        gpu = self.adapter()
        os.kill(int(children()), signal.SIGKILL)
        with self.assertRaises(WorkerDied) as raised:
            gpu.temperature()
        self.assertEqual(raised.exception.how, "signal SIGKILL")

    def test_a_dead_adapter_says_so_and_can_be_opened_again(self):
        self.tell(f"{TEMPERATURE}:abort")
        gpu = self.adapter()
        with self.assertRaises(WorkerDied):
            gpu.temperature()
        with self.assertRaises(AdapterClosed):
            gpu.temperature()
        self.tell("")
        gpu.open()
        self.assertEqual(gpu.temperature(), 61)

    def test_a_closed_adapter_says_so(self):
        gpu = self.adapter()
        gpu.close()
        gpu.close()
        with self.assertRaises(AdapterClosed) as raised:
            gpu.clocks()
        self.assertEqual(str(raised.exception), "get_dvfs_info: the adapter is closed")

    def test_a_call_that_takes_too_long_ends_the_worker_and_its_children(self):
        pid = self.directory / "pid"
        os.environ["STAND_IN_PID"] = str(pid)
        self.tell(f"{TEMPERATURE}:hang-with-child")
        gpu = self.adapter()
        gpu.deadline = 0.3
        with self.assertRaises(DeadlineExceeded) as raised:
            gpu.temperature()
        self.assertEqual((raised.exception.call, raised.exception.seconds), (TEMPERATURE, 0.3))
        self.assertTrue(gpu.closed)
        self.assertTrue(ended_soon(int(pid.read_text())))

    def test_initialisation_that_fails_is_an_exception_unless_asked_otherwise(self):
        self.tell("gfx_global_init:fail")
        with self.assertRaises(CallFailed) as raised:
            self.adapter()
        self.assertEqual((raised.exception.call, raised.exception.status), ("gfx_global_init", -1))
        gpu = self.adapter(partial=True)
        self.assertFalse(gpu.complete)
        self.assertEqual(gpu.temperature(), 61)

    def test_a_function_that_an_older_library_lacks_is_an_exception(self):
        gpu = self.adapter()
        with self.assertRaises(FunctionMissing) as raised:
            gpu.dvfs()
        self.assertEqual(raised.exception.call, "get_data_from_dvfs_register")
        self.assertEqual(gpu.temperature(), 61)

    def test_another_major_version_is_an_exception(self):
        os.environ["STAND_IN_MAJOR"] = "1"
        with self.assertRaises(VersionMismatch) as raised:
            nimba_mgmt.adapters(library=STAND_IN)
        self.assertEqual((raised.exception.client, raised.exception.library), (22, 65558))

    def test_no_library_is_an_exception(self):
        with self.assertRaises(LibraryNotFound) as raised:
            Adapter(0, library="/nowhere/lib.so")
        self.assertEqual(raised.exception.library, "/nowhere/lib.so")
        self.assertIn("No such file", raised.exception.reason)

    def test_another_library_is_an_exception(self):
        with self.assertRaises(FunctionMissing) as raised:
            nimba_mgmt.library_version(library="libm.so.6")
        self.assertEqual(raised.exception.call, "set_print_callback")


class Ends(StandIn):
    def test_a_forgotten_adapter_is_left(self):
        log = self.log_calls()
        Adapter(0, library=STAND_IN)
        gc.collect()
        self.assertTrue(log.read_text().endswith("gfx_global_exit\n"))

    def test_the_end_of_the_interpreter_leaves_the_adapter(self):
        log = self.log_calls()
        program = "import nimba_mgmt, sys; gpu = nimba_mgmt.Adapter(0, library=sys.argv[1])"
        ended = run([sys.executable, "-W", "error", "-c", program, STAND_IN])
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertTrue(log.read_text().endswith("gfx_global_exit\n"))

    def test_a_caller_that_is_killed_takes_a_hanging_worker_along(self):
        pid = self.directory / "pid"
        os.mkfifo(pid)
        os.environ["STAND_IN_PID"] = str(pid)
        self.tell(f"{TEMPERATURE}:hang")
        program = "import nimba_mgmt, sys; nimba_mgmt.Adapter(0, library=sys.argv[1]).temperature()"
        with subprocess.Popen([sys.executable, "-c", program, STAND_IN]) as caller:
            worker = int(pid.read_text())
            caller.kill()
        self.assertTrue(ended_soon(worker))

    def test_an_interrupt_leaves_a_closed_adapter(self):
        self.tell(f"{TEMPERATURE}:hang")
        pid = self.directory / "pid"
        os.mkfifo(pid)
        os.environ["STAND_IN_PID"] = str(pid)
        gpu = self.adapter(deadline=60)

        def interrupt() -> None:
            pid.read_text()
            signal.pthread_kill(threading.main_thread().ident, signal.SIGINT)

        helper = threading.Thread(target=interrupt)
        helper.start()
        with self.assertRaises(KeyboardInterrupt):
            gpu.temperature()
        helper.join()
        self.assertTrue(gpu.closed)
        self.tell("")
        gpu.open()
        self.assertEqual(gpu.temperature(), 61)

    def test_a_forked_child_cannot_use_the_adapter_and_does_not_end_it(self):
        log = self.log_calls()
        gpu = self.adapter()
        before = descriptors()
        child = os.fork()
        if child == 0:
            status = 1
            try:
                gpu.temperature()
            except AdapterClosed:
                gpu.close()
                del gpu
                gc.collect()
                status = 0 if descriptors() < before else 2
            finally:
                os._exit(status)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), 0)
        self.assertEqual(gpu.temperature(), 61)
        self.assertNotIn("gfx_global_exit", log.read_text())

    def test_a_child_that_ends_like_its_parent_does_not_end_the_adapter(self):
        program = """
import nimba_mgmt, os, sys
gpu = nimba_mgmt.Adapter(0, library=sys.argv[1])
child = os.fork()
if child == 0:
    sys.exit(0)
assert os.waitpid(child, 0)[1] == 0
print(gpu.temperature())
"""
        ended = run([sys.executable, "-W", "error", "-c", program, STAND_IN])
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, "61\n", ""))

    def test_opening_and_closing_many_times_leaves_nothing(self):
        before = descriptors()
        for _ in range(5):
            with self.adapter() as gpu:
                gpu.temperature()
        self.assertEqual((descriptors(), children()), (before, ""))


if __name__ == "__main__":
    unittest.main()
