# SPDX-License-Identifier: MIT
"""Handlers of signals and of logs that use an adapter in the middle of a call, and copies of it."""

import copy
import logging
import os
import pickle
import signal
import threading
import unittest
from unittest import mock

from nimba_mgmt import Adapter, AdapterBusy, AdapterClosed

from support import STAND_IN, TEMPERATURE, StandIn

# A handler that waits for the call that it interrupts would wait for ever.
BOUND = 60


class Handlers(StandIn):
    def setUp(self):
        super().setUp()
        self.addCleanup(signal.alarm, 0)
        self.addCleanup(signal.signal, signal.SIGALRM, signal.SIG_DFL)
        signal.alarm(BOUND)

    def interrupted(self, handler) -> Adapter:
        """An adapter whose temperature() does not come back, and is interrupted by the handler."""
        pid = self.directory / "pid"
        os.mkfifo(pid)
        os.environ["STAND_IN_PID"] = str(pid)
        self.tell(f"{TEMPERATURE}:hang")
        gpu = self.adapter(deadline=BOUND)

        def interrupt() -> None:
            pid.read_text()
            signal.pthread_kill(threading.main_thread().ident, signal.SIGUSR1)

        before = signal.signal(signal.SIGUSR1, lambda *_: handler(gpu))
        self.addCleanup(signal.signal, signal.SIGUSR1, before)
        helper = threading.Thread(target=interrupt)
        helper.start()
        self.addCleanup(helper.join)
        return gpu

    def test_a_signals_handler_can_close_the_adapter_that_a_call_waits_for(self):
        gpu = self.interrupted(Adapter.close)
        with self.assertRaises(AdapterClosed) as raised:
            gpu.temperature()
        self.assertEqual(raised.exception.call, TEMPERATURE)
        self.assertTrue(gpu.closed)

    def test_a_signals_handler_can_close_the_adapter_and_end_the_program(self):
        def end(gpu: Adapter) -> None:
            gpu.close()
            raise SystemExit(3)

        gpu = self.interrupted(end)
        with self.assertRaises(SystemExit):
            gpu.temperature()
        self.assertTrue(gpu.closed)

    def test_a_signals_handler_cannot_ask_in_the_middle_of_a_call(self):
        gpu = self.interrupted(Adapter.clocks)
        with self.assertRaises(AdapterBusy) as raised:
            gpu.temperature()
        self.assertEqual(
            str(raised.exception), "get_dvfs_info: another call of this thread is under way"
        )

    def test_an_interrupt_of_the_cleaning_up_leaves_a_closed_adapter_and_no_process(self):
        def interrupt(_: object) -> None:
            raise KeyboardInterrupt

        gpu = self.interrupted(interrupt)
        with mock.patch("nimba_mgmt._process._kill_group", side_effect=interrupt):
            with self.assertRaises(KeyboardInterrupt):
                gpu.temperature()
        self.assertTrue(gpu.closed)
        with self.assertRaises(AdapterClosed):
            gpu.temperature()
        gpu.close()

    def test_a_logs_handler_that_asks_is_refused_and_the_call_goes_on(self):
        self.tell(f"{TEMPERATURE}:message")
        refused = []

        class Asking(logging.Handler):
            def emit(self, record: logging.LogRecord) -> None:
                try:
                    gpu.info(0)
                except AdapterBusy:
                    refused.append(record.getMessage())

        gpu = self.adapter()
        log = logging.getLogger("nimba_mgmt")
        handler = Asking()
        log.addHandler(handler)
        self.addCleanup(log.removeHandler, handler)
        self.addCleanup(log.setLevel, log.level)
        log.setLevel(logging.DEBUG)
        self.assertEqual(gpu.temperature(), 61)
        self.assertEqual(refused, ["first", "100%d \\xff"])
        self.assertEqual(gpu.info(0), 0x1001)

    def test_an_adapter_is_not_copied_but_its_identity_is(self):
        gpu = self.adapter()
        for duplicate in (copy.copy, copy.deepcopy, pickle.dumps):
            with self.assertRaisesRegex(TypeError, "neither copied nor pickled; its identity can"):
                duplicate(gpu)
        identity = pickle.loads(pickle.dumps(gpu.identity))
        self.assertEqual(identity, gpu.identity)
        with Adapter(identity, library=STAND_IN) as again:
            self.assertEqual(again.temperature(), 61)


if __name__ == "__main__":
    unittest.main()
