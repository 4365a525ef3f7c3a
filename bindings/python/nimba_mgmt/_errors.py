# SPDX-License-Identifier: MIT
"""What goes wrong, as exceptions. All of them can be pickled and compared by their arguments."""

from __future__ import annotations


class NimbaError(Exception):
    """The base of all exceptions of this package."""


class LibraryNotFound(NimbaError):
    """The management library could not be loaded."""

    def __init__(self, library: str, reason: str) -> None:
        super().__init__(library, reason)
        self.library = library
        self.reason = reason

    def __str__(self) -> str:
        return f"cannot load {self.library}: {self.reason}"


class VersionMismatch(NimbaError):
    """The library has another major interface version than this package was written for."""

    def __init__(self, client: int, library: int) -> None:
        super().__init__(client, library)
        self.client = client
        self.library = library

    def __str__(self) -> str:
        return (
            f"the library's interface version is {_dotted(self.library)}, "
            f"this package needs {_dotted(self.client)}"
        )


class FunctionMissing(NimbaError):
    """The library, being older, has no such function."""

    def __init__(self, call: str) -> None:
        super().__init__(call)
        self.call = call

    def __str__(self) -> str:
        return f"the library has no function {self.call}"


class NoAdapter(NimbaError):
    """No adapter of the product is where one was asked for."""

    def __init__(self, wanted: str, reason: str) -> None:
        super().__init__(wanted, reason)
        self.wanted = wanted
        self.reason = reason

    def __str__(self) -> str:
        return f"no adapter {self.wanted}: {self.reason}"


class AdapterClosed(NimbaError):
    """The adapter was closed, or its worker has ended: open() opens it again."""

    def __init__(self, call: str) -> None:
        super().__init__(call)
        self.call = call

    def __str__(self) -> str:
        return f"{self.call}: the adapter is closed"


class AdapterBusy(NimbaError):
    """A signal's or a log's handler asked in the middle of another call of the same thread."""

    def __init__(self, call: str) -> None:
        super().__init__(call)
        self.call = call

    def __str__(self) -> str:
        return f"{self.call}: another call of this thread is under way"


class CallFailed(NimbaError):
    """A function of the library did not do what it was asked for."""

    def __init__(self, call: str, status: int, reason: str = "") -> None:
        super().__init__(call, status, reason)
        self.call = call
        self.status = status
        self.reason = reason

    def __str__(self) -> str:
        text = f"{self.call} failed with status {self.status}"
        return f"{text}: {self.reason}" if self.reason else text


class WorkerDied(NimbaError):
    """The process in which the library runs ended in a call.

    `how` names the signal or the exit status, `said` is the end of what it wrote on standard error.
    """

    def __init__(self, call: str, how: str, said: str = "") -> None:
        super().__init__(call, how, said)
        self.call = call
        self.how = how
        self.said = said

    def __str__(self) -> str:
        text = f"{self.call}: the worker died of {self.how}"
        return f"{text}: {self.said}" if self.said else text


class DeadlineExceeded(NimbaError):
    """A call took longer than it may; the process in which it ran was killed."""

    def __init__(self, call: str, seconds: float) -> None:
        super().__init__(call, seconds)
        self.call = call
        self.seconds = seconds

    def __str__(self) -> str:
        return f"{self.call} took longer than {self.seconds:g} s"


def _dotted(version: int) -> str:
    return f"{version >> 16}.{version & 0xFFFF}"
