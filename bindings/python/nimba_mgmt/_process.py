# SPDX-License-Identifier: MIT
"""A worker as its caller sees it: a process of its own in which the library runs.

An error of C++ that leaves the library, or its abort(), ends the worker and not the caller. The
worker leads a process group, which is killed as a whole, and ends by itself when its caller does.
"""

from __future__ import annotations

import logging
import os
import select
import signal
import socket
import subprocess
import sys
import threading
import time
import weakref
from contextlib import ExitStack
from dataclasses import dataclass
from enum import Enum, auto
from pathlib import Path
from typing import Any

from . import _errors, _wire
from ._errors import AdapterBusy, AdapterClosed, DeadlineExceeded, NimbaError, WorkerDied

log = logging.getLogger("nimba_mgmt")

# The longest deadline, in seconds: sockets have a limit of their own above it.
_LONGEST = 1_000_000

# How long a worker may take to end by itself.
_GRACE_SECONDS = 2.0

_STANDARD_ERROR = 2
_SAID_BYTES = 2000


@dataclass(frozen=True)
class Reply:
    """What a request gave: a plain value, and the bytes of records."""

    value: Any
    payload: bytes


class _Talk(Enum):
    """How far the requests to a worker are."""

    IDLE = auto()
    WAITS = auto()  # for a reply
    LOST = auto()  # nobody waits any more for the reply that may come


@dataclass
class _Resources:
    """What a worker takes of its caller. It belongs to the process `owner`."""

    process: subprocess.Popen[bytes]
    channel: socket.socket
    said: int  # descriptor of the file with what the worker wrote on standard error; -1: none
    owner: int


class Worker:
    """A process in which the library is loaded, asked for one thing at a time.

    library: its file, or None for the one that the dynamic loader finds.
    deadline: seconds that a call may take, unless it is given its own.
    debug: what the library writes goes to the caller's standard error.
    """

    def __init__(self, library: str | None, deadline: float, debug: bool) -> None:
        # The thread that waits for a reply can be interrupted by a handler that closes the worker.
        self._lock = threading.RLock()
        self._talk = _Talk.IDLE
        self._deadline = checked_deadline(deadline)
        self._resources = _start(debug)
        self._end = weakref.finalize(self, _finish, self._resources)
        _WORKERS.add(self)
        try:
            self.interface = self.call("dlopen", library=library)
        except BaseException:
            self.close()
            raise

    @property
    def alive(self) -> bool:
        """Whether requests can be made."""
        mine = self._resources.owner == os.getpid()
        return self._end.alive and mine and self._talk is not _Talk.LOST

    def call(self, call: str, deadline: float | None = None, **arguments: Any) -> Reply:
        """Makes a request and waits for its reply. What goes wrong leaves as a NimbaError."""
        seconds = self._deadline if deadline is None else deadline
        with self._lock:
            if not self.alive:
                raise AdapterClosed(call)
            if self._talk is _Talk.WAITS:
                raise AdapterBusy(call)
            try:
                self._talk = _Talk.WAITS
                value, payload = self._exchange(call, seconds, arguments)
                self._talk = _Talk.IDLE
            except TimeoutError:
                self._kill()
                raise DeadlineExceeded(call, seconds) from None
            except (_wire.Closed, OSError):
                if not self.alive:
                    raise AdapterClosed(call) from None
                raise self._death(call) from None
            except BaseException:
                self._kill()
                raise
            finally:
                # Also when another interrupt has kept the worker from being killed.
                if self._talk is _Talk.WAITS:
                    self._talk = _Talk.LOST
        if "error" in value:
            raise _error_of(value["error"])
        return Reply(value["value"], bytes(payload))

    def close(self) -> None:
        """Lets the worker end. What it has not done then is left undone."""
        with self._lock:
            self._end()

    def _exchange(
        self, call: str, seconds: float, arguments: dict[str, Any]
    ) -> tuple[dict[str, Any], bytearray]:
        end = time.monotonic() + seconds
        channel = self._resources.channel
        channel.settimeout(seconds)
        request = {"call": call, "messages": log.isEnabledFor(logging.DEBUG), **arguments}
        _wire.send(channel, request)
        while True:
            value, payload = _wire.receive(channel, end)
            if "message" not in value:
                return value, payload
            log.debug("%s", value["message"])

    def _kill(self) -> None:
        # What an interrupt leaves undone here, `_end` does.
        _kill_group(self._resources)
        _release(self._resources)
        self._end.detach()

    def _death(self, call: str) -> WorkerDied:
        """Tells of the worker that has ended, and takes what is left of it away."""
        _wait_for_end(self._resources.process.pid, _GRACE_SECONDS)
        _kill_group(self._resources)
        said = _end_of(self._resources.said)
        _release(self._resources)
        self._end.detach()
        return WorkerDied(call, _how(self._resources.process.returncode), said)

    def _leave_to_parent(self) -> None:
        """In a child of the process that has the worker: forgets it."""
        if self._end.detach():
            self._resources.process.returncode = 0
            self._resources.channel.close()
            _close_said(self._resources)


_WORKERS: weakref.WeakSet[Worker] = weakref.WeakSet()


def _leave_all_to_parent() -> None:
    for worker in list(_WORKERS):
        worker._lock = threading.RLock()
        worker._leave_to_parent()


os.register_at_fork(after_in_child=_leave_all_to_parent)


def checked_deadline(seconds: float) -> float:
    """The seconds. Raises ValueError when nothing can wait for so long."""
    if not 0 < seconds <= _LONGEST:
        raise ValueError(f"a deadline is above 0 and up to {_LONGEST} seconds, not {seconds}")
    return seconds


def _start(debug: bool) -> _Resources:
    try:
        return _started(debug)
    except OSError as error:
        raise NimbaError(f"cannot start {sys.executable}: {error.strerror}") from error


def _started(debug: bool) -> _Resources:
    package = str(Path(__file__).resolve().parent.parent)
    # Of the caller's modules only those of Python and of this package are found.
    command = [sys.executable, "-s", "-S", "-P", "-m", "nimba_mgmt._worker"]
    ours, theirs = socket.socketpair()
    with theirs, ExitStack() as undo:
        undo.callback(ours.close)
        said = -1
        if not debug:
            said = os.memfd_create("nimba-mgmt-worker")
            undo.callback(os.close, said)
        process = subprocess.Popen(
            command,
            stdin=theirs.fileno(),
            stdout=_STANDARD_ERROR if debug else subprocess.DEVNULL,
            stderr=None if debug else said,
            env={**os.environ, "PYTHONPATH": package},
            start_new_session=True,
        )
        undo.pop_all()
    return _Resources(process, ours, said, os.getpid())


def _finish(resources: _Resources) -> None:
    """Lets the worker end, and kills it when it does not."""
    try:
        resources.channel.shutdown(socket.SHUT_RDWR)
        _wait_for_end(resources.process.pid, _GRACE_SECONDS)
    except OSError:
        pass  # the worker has closed its end before
    finally:
        _kill_group(resources)
        _release(resources)


def _kill_group(resources: _Resources) -> None:
    """Kills the worker and its children, as long as its id is still its own."""
    if resources.process.returncode is not None:
        return
    try:
        os.killpg(resources.process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass  # somebody else has waited for it


def _release(resources: _Resources) -> None:
    resources.process.wait()
    resources.channel.close()
    _close_said(resources)


def _close_said(resources: _Resources) -> None:
    said, resources.said = resources.said, -1
    if said >= 0:
        os.close(said)


def _wait_for_end(pid: int, seconds: float) -> None:
    """Waits until the process has ended, without taking its status away."""
    try:
        descriptor = os.pidfd_open(pid)
    except OSError:
        return
    try:
        poll = select.poll()
        poll.register(descriptor, select.POLLIN)
        poll.poll(seconds * 1000)
    finally:
        os.close(descriptor)


def _end_of(said: int) -> str:
    if said < 0:
        return ""
    size = os.fstat(said).st_size
    text = os.pread(said, _SAID_BYTES, max(0, size - _SAID_BYTES))
    return text.decode(errors="backslashreplace").strip()


def _how(status: int) -> str:
    if status >= 0:
        return f"exit status {status}"
    try:
        return f"signal {signal.Signals(-status).name}"
    except ValueError:
        return f"signal {-status}"


def _error_of(told: list[Any]) -> NimbaError:
    name, *arguments = told
    kinds: dict[str, type[NimbaError]] = {
        kind.__name__: kind
        for kind in (
            _errors.CallFailed,
            _errors.FunctionMissing,
            _errors.LibraryNotFound,
            _errors.NoAdapter,
            _errors.VersionMismatch,
        )
    }
    return kinds[name](*arguments)
