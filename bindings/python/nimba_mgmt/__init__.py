# SPDX-License-Identifier: MIT
"""Inspect and tune the adapters of the Nimba and QV chips.

    import nimba_mgmt

    for found in nimba_mgmt.adapters():
        print(found.slot, found.name, found.bus_id)

    with nimba_mgmt.Adapter(0) as gpu:
        print(gpu.temperature(), gpu.clocks())

The management library, libnimba_mgmt_interface.so, runs in processes of its own; nothing that it
does can end the program that imports this package. Its messages are logged at level DEBUG of the
logger "nimba_mgmt".
"""

from . import preferences
from ._adapter import Adapter
from ._discovery import DEADLINE, adapters, library_version, use_library
from ._errors import (
    AdapterBusy,
    AdapterClosed,
    CallFailed,
    DeadlineExceeded,
    FunctionMissing,
    LibraryNotFound,
    NimbaError,
    NoAdapter,
    VersionMismatch,
    WorkerDied,
)
from ._memory_records import (
    Allocation,
    DeviceContext,
    DeviceMemory,
    PageTableEntry,
    Preference,
    VmAllocation,
)
from ._records import (
    Bandwidth,
    Clocks,
    DvfsState,
    EngineBusy,
    FrameRate,
    Luid,
    Summary,
    SummaryExt2,
)
from ._values import (
    DisplayType,
    DvfsLevel,
    HwmonNode,
    InfoNode,
    PageTableKind,
    Resolution,
    SegmentSource,
    Version,
)
from ._version import __version__
from ._views import AdapterInfo, LibraryVersion, Segment, Segments

__all__ = [
    "DEADLINE",
    "Adapter",
    "AdapterBusy",
    "AdapterClosed",
    "AdapterInfo",
    "Allocation",
    "Bandwidth",
    "CallFailed",
    "Clocks",
    "DeadlineExceeded",
    "DeviceContext",
    "DeviceMemory",
    "DisplayType",
    "DvfsLevel",
    "DvfsState",
    "EngineBusy",
    "FrameRate",
    "FunctionMissing",
    "HwmonNode",
    "InfoNode",
    "LibraryNotFound",
    "LibraryVersion",
    "Luid",
    "NimbaError",
    "NoAdapter",
    "PageTableEntry",
    "PageTableKind",
    "Preference",
    "Resolution",
    "Segment",
    "SegmentSource",
    "Segments",
    "Summary",
    "SummaryExt2",
    "Version",
    "VersionMismatch",
    "VmAllocation",
    "WorkerDied",
    "__version__",
    "adapters",
    "library_version",
    "preferences",
    "use_library",
]
