# SPDX-License-Identifier: MIT
"""Which GPU an application should use, kept in ~/.local/share/wmt_gfx_util.ini.

An application is known by its file name: "maze" and "/usr/games/maze" are the same. Every function
reads the file anew, in a process of its own that initialises no adapter. Changes that are made with
this module, by any number of processes, wait for each other; other programs must not change the
file at the same time. Comments in the file, and keys that the library does not know, go with the
first change.

All functions raise LibraryNotFound, VersionMismatch, WorkerDied, DeadlineExceeded, and CallFailed
when HOME tells no directory.
"""

from __future__ import annotations

import fcntl
import operator
import os
import re
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any

from ._discovery import DEADLINE, LibraryName, open_worker
from ._errors import CallFailed
from ._layout import decode_all, layout_of
from ._memory_records import Preference
from ._process import Worker
from ._views import AdapterInfo

__all__ = ["Preference", "get", "list", "remove", "set"]

_Preferences = tuple[Preference, ...]

_FILE = ".local/share/wmt_gfx_util.ini"

_NO_HOME = "HOME tells no directory"

_BUS_ID = re.compile(r"([0-9A-Fa-f]{1,4}):([0-9A-Fa-f]{1,2}):([0-9A-Fa-f]{1,2})\.([0-7])")

_BREAKS_THE_FORM = {"application": "\n;]", "path": "\n;", "gpu_name": "\n;"}


def list(*, library: LibraryName | None = None) -> _Preferences:
    """All preferences, in the order of the file; none without a file."""
    worker = open_worker(library, DEADLINE, False)
    try:
        return _told_by(worker)
    finally:
        worker.close()


def get(
    application: str | os.PathLike[str], *, library: LibraryName | None = None
) -> Preference | None:
    """The preference of an application, or None when it has none."""
    name = _file_name(os.fspath(application))
    return next((entry for entry in list(library=library) if entry.application == name), None)


def set(
    application: str | os.PathLike[str],
    gpu: AdapterInfo | str,
    *,
    gpu_name: str | None = None,
    value: int = 1,
    library: LibraryName | None = None,
) -> Preference:
    """Sets the GPU that an application should use, and gives what the file then holds.

    application: the full path of its program; the file's directory is made if there is none.
    gpu: what nimba_mgmt.adapters() lists, or a bus id such as "0000:01:00.0".
    gpu_name: the GPU's name; without it that of the AdapterInfo, cut to 15 characters.
    value: the preference value, which means something to those who read it alone.
    Raises ValueError for texts that are too long or that the file cannot hold (a newline or ";", in
    the file name also "]", blanks at either end), OSError when the file cannot be read or its
    directory not be made, CallFailed when the file does not hold the preference afterwards.
    """
    path = os.fspath(application)
    bus_id = gpu if isinstance(gpu, str) else gpu.bus_id
    if gpu_name is None:
        gpu_name = "" if isinstance(gpu, str) else _cut(gpu.name or "")
    number = operator.index(value)
    wanted = Preference(_file_name(path), path, number, gpu_name, *_location(bus_id))
    _check(wanted)
    _change("set_gpu_preference", wanted, library)
    return wanted


def remove(application: str | os.PathLike[str], *, library: LibraryName | None = None) -> bool:
    """Removes the preference of an application. Gives whether there was one.

    Raises OSError when the file cannot be read, CallFailed when the file still holds it afterwards.
    """
    entry = get(application, library=library)
    if entry is None:
        return False
    _change("remove_gpu_preference", entry, library)
    return True


def _change(call: str, entry: Preference, library: LibraryName | None) -> None:
    worker = open_worker(library, DEADLINE, False)
    try:
        path = os.path.join(os.environ.get("HOME", ""), _FILE)
        with _alone(path):
            # The list that the library loads for the first call is what the second one writes.
            before = _told_by(worker)
            worker.call(call, fields=_fields(entry))
            if list(library=library) != _expected(call, before, entry):
                raise CallFailed(call, 0, f"{path} does not hold what it should now")
    finally:
        worker.close()


def _told_by(worker: Worker) -> _Preferences:
    return tuple(decode_all(Preference, worker.call("get_gpu_preference").payload))


def _expected(call: str, before: _Preferences, entry: Preference) -> _Preferences:
    names = [other.application for other in before]
    at = names.index(entry.application) if entry.application in names else len(before)
    replacement = (entry,) if call == "set_gpu_preference" else ()
    return before[:at] + replacement + before[at + 1 :]


@contextmanager
def _alone(path: str) -> Iterator[None]:
    """Keeps other changes away, and a file that the library could not load."""
    directory = os.path.dirname(path)
    if not os.path.isabs(directory):
        raise CallFailed("get_gpu_preference", 0, _NO_HOME)
    os.makedirs(directory, mode=0o700, exist_ok=True)
    descriptor = os.open(directory, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX)
        try:
            os.close(os.open(path, os.O_RDONLY | os.O_CLOEXEC))
        except FileNotFoundError:
            pass  # there is nothing to lose
        yield
    finally:
        os.close(descriptor)


def _fields(entry: Preference) -> dict[str, Any]:
    return {name: getattr(entry, name) for name in layout_of(Preference).places}


def _check(entry: Preference) -> None:
    places = layout_of(Preference).places
    for name, breaks in _BREAKS_THE_FORM.items():
        text = getattr(entry, name)
        if len(os.fsencode(text)) >= places[name].count:
            raise ValueError(f"{name} has {places[name].count} bytes or more: {text!r}")
        if text != text.strip() or any(c in text for c in f"{breaks}\0"):
            raise ValueError(f"the preference file cannot hold {name} {text!r}")
    if not entry.application:
        raise ValueError(f"{entry.path!r} names no file")
    if not -0x80000000 <= entry.value <= 0x7FFFFFFF:
        raise ValueError(f"{entry.value} does not fit in 32 bits")


def _file_name(path: str) -> str:
    return path.replace("\\", "/").rpartition("/")[2]


def _cut(name: str) -> str:
    return os.fsencode(name)[: layout_of(Preference).places["gpu_name"].count - 1].decode(
        errors="ignore"
    ).strip()


def _location(bus_id: str) -> tuple[int, int, int, int]:
    parts = _BUS_ID.fullmatch(bus_id)
    if parts is None:
        raise ValueError(f"no bus id: {bus_id!r}")
    domain, bus, device, function = (int(part, 16) for part in parts.groups())
    return domain, bus, device, function
