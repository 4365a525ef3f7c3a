# SPDX-License-Identifier: MIT
"""The program of a worker: loads the library, then does what its caller asks for.

Standard input is the channel to the caller. It becomes a descriptor that no child inherits, since
the library runs commands, and standard input itself becomes /dev/null.
"""

from __future__ import annotations

import os
import select
import signal
import socket
import sys
import threading
import time

from . import _wire
from ._errors import NimbaError
from ._library import Library
from ._requests import REQUESTS
from ._session import Answer, Session

# How long a call goes on without a caller.
_GRACE_SECONDS = 2.0


def _take_channel() -> socket.socket:
    channel = socket.socket(fileno=os.dup(0))
    nothing = os.open(os.devnull, os.O_RDONLY)
    os.dup2(nothing, 0)
    os.close(nothing)
    return channel


def _end_without_caller(channel: socket.socket) -> None:
    """Kills the worker and its children when the caller has gone and a call does not end."""
    poll = select.poll()
    poll.register(channel, select.POLLRDHUP)
    poll.poll()
    time.sleep(_GRACE_SECONDS)
    os.killpg(0, signal.SIGKILL)


class _Worker:
    def __init__(self, channel: socket.socket) -> None:
        self._channel = channel
        self._tell_messages = False
        self._session: Session | None = None

    def serve(self) -> None:
        """Answers requests until the caller has gone."""
        try:
            while True:
                request, _ = _wire.receive(self._channel)
                self._tell_messages = request.pop("messages")
                self._answer(request)
        except (_wire.Closed, ConnectionError):
            pass
        finally:
            if self._session is not None:
                self._session.leave()

    def _answer(self, request: dict[str, object]) -> None:
        try:
            answer = self._carry_out(**request)
        except NimbaError as error:
            _wire.send(self._channel, {"error": [type(error).__name__, *error.args]})
        else:
            _wire.send(self._channel, {"value": answer.value}, answer.payload)

    def _carry_out(self, call: object, **arguments: object) -> Answer:
        if self._session is None:
            name = arguments["library"]
            library = Library(None if name is None else str(name), self._receive_message)
            self._session = Session(library)
            return Answer({"version": library.version, "file": library.file()})
        return REQUESTS[str(call)](self._session, **arguments)

    def _receive_message(self, text: str) -> None:
        if self._tell_messages:
            try:
                _wire.send(self._channel, {"message": text})
            except OSError:
                self._tell_messages = False  # the caller has gone


def main() -> None:
    """Runs until the caller has gone."""
    channel = _take_channel()
    threading.Thread(target=_end_without_caller, args=(channel,), daemon=True).start()
    _Worker(channel).serve()
    sys.stdout.flush()


if __name__ == "__main__":
    main()
