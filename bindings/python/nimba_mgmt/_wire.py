# SPDX-License-Identifier: MIT
"""Messages between a caller and its worker: a JSON value, and bytes that belong to it.

Each message is the lengths of the two as 32-bit big-endian numbers, the JSON text, the bytes.
"""

from __future__ import annotations

import json
import socket
import struct
import time
from typing import Any

_LENGTHS = struct.Struct(">II")


class Closed(Exception):
    """The other side has closed its end."""


def send(channel: socket.socket, value: Any, payload: bytes | bytearray = b"") -> None:
    """Sends one message. Raises OSError."""
    text = json.dumps(value).encode()
    channel.sendall(_LENGTHS.pack(len(text), len(payload)) + text)
    if payload:
        channel.sendall(payload)


def receive(channel: socket.socket, end: float | None = None) -> tuple[Any, bytearray]:
    """Waits for one message until the time `end` of the monotonic clock.

    Raises TimeoutError at that time, Closed when there is no more.
    """
    text_length, payload_length = _LENGTHS.unpack(_exactly(channel, _LENGTHS.size, end))
    text = _exactly(channel, text_length, end)
    return json.loads(text), _exactly(channel, payload_length, end)


def _exactly(channel: socket.socket, length: int, end: float | None) -> bytearray:
    data = bytearray(length)
    view = memoryview(data)
    while view:
        if end is not None:
            channel.settimeout(_time_until(end))
        try:
            count = channel.recv_into(view)
        except ConnectionError as error:
            raise Closed from error
        if count == 0:
            raise Closed
        view = view[count:]
    return data


def _time_until(end: float) -> float:
    left = end - time.monotonic()
    if left <= 0:
        raise TimeoutError
    return left
