# SPDX-License-Identifier: MIT
"""The library as the worker calls it. Nothing of it is loaded in the caller's process."""

from __future__ import annotations

import ctypes
import os
from collections.abc import Callable
from ctypes import CFUNCTYPE, POINTER, byref, c_char_p, c_int32, c_uint32, c_void_p
from typing import Any

from ._errors import FunctionMissing, LibraryNotFound, VersionMismatch
from ._layout import structure_of
from ._memory_records import (
    AllocationPage,
    DeviceContexts,
    DeviceSummary,
    LeakReport,
    PageTableEntry,
    Preference,
    VmAllocation,
)
from ._records import (
    Bandwidth,
    Clocks,
    DvfsState,
    EngineBusy,
    FindAdapter,
    FindAdapterExt1,
    FrameRate,
    InterfaceVersionInfo,
    SegmentInfo,
    Summary,
    SummaryExt2,
)

# The interface version that this package is written for.
CLIENT_VERSION = 22

_MAJOR_MISMATCH = 100

# What the dynamic loader is asked for: the name to run with, and the one to link with.
_NAMES = ("libnimba_mgmt_interface.so.0", "libnimba_mgmt_interface.so")

_PrintCallback = CFUNCTYPE(c_int32, c_char_p)


def _to(record: type[Any]) -> Any:
    return POINTER(structure_of(record))


_Find = _to(FindAdapter)
_Count = POINTER(c_uint32)

# The arguments of the functions that are called. All of them return a number of 32 bits or nothing.
_ARGUMENTS: dict[str, tuple[Any, ...]] = {
    "set_print_callback": (_PrintCallback,),
    "get_interface_version": (),
    "get_interface_version_ext1": (_to(InterfaceVersionInfo),),
    "gpuinfo_nimba_init": (),
    "gfx_find_adapter": (_Find,),
    "gfx_find_adapter_ext1": (_to(FindAdapterExt1),),
    "gfx_global_init": (_Find,),
    "gfx_global_exit": (c_int32,),
    "get_adapter_summary": (_to(Summary), _Find),
    "get_adapter_summary_ext2": (_to(SummaryExt2), _Find),
    "gpuinfo_get_temparature_value_int": (_Count,),
    "gpuinfo_get_hwmonFD_value_int": (c_int32, _Count),
    "gpuinfo_get_jwinfoFD_value_int": (c_int32,),
    "gpuinfo_set_misc_ctl_flag": (c_int32, c_int32),
    "get_dvfs_info": (_to(Clocks),),
    "get_data_from_dvfs_register": (_to(DvfsState), _Count),
    "set_data_to_dvfs_register": (_to(DvfsState),),
    "segment_init": (_Find,),
    "get_segment_info": (_to(SegmentInfo),),
    "gpuinfo_get_segment_info": (_to(SegmentInfo),),
    "get_allocation_raw_list": (_to(AllocationPage), _Find),
    "get_device_allocation_summary_ext1": (_to(DeviceSummary),),
    "get_device_pid_maps": (_to(DeviceContexts),),
    "get_memleak_info": (_to(LeakReport),),
    "get_pagetable_data": (_to(PageTableEntry), _Count),
    "get_allocation_data": (_to(VmAllocation), _Count),
    "fps_init": (),
    "get_fps_info": (_to(FrameRate),),
    "bandwidth_init": (),
    "get_bandwidth_info": (_to(Bandwidth),),
    "gfxbusy_init": (),
    "get_gpubusy_info": (_to(EngineBusy),),
    "get_gpu_preference": (_to(Preference), POINTER(c_int32)),
    "set_gpu_preference": (_to(Preference),),
    "remove_gpu_preference": (_to(Preference),),
}


class Library:
    """The library, loaded, with its messages going to `receive_message`."""

    def __init__(self, name: str | None, receive_message: Callable[[str], None]) -> None:
        self._handle = _load((name,) if name else _NAMES)

        def print_message(text: bytes) -> int:
            receive_message(text.decode(errors="backslashreplace").rstrip("\n"))
            return 0

        self._callback = _PrintCallback(print_message)  # the library keeps its address alone
        self.function("set_print_callback")(self._callback)
        self.version = int(self.function("get_interface_version")())
        self._shake_hands()

    def function(self, name: str) -> Any:
        """A function of the library. Raises FunctionMissing."""
        try:
            function = getattr(self._handle, name)
        except AttributeError:
            raise FunctionMissing(name) from None
        function.argtypes = _ARGUMENTS[name]
        function.restype = c_int32
        return function

    def number(self, name: str, kind: Any) -> Any:
        """The value of a variable of the library. Raises FunctionMissing."""
        try:
            return kind.in_dll(self._handle, name).value
        except ValueError:
            raise FunctionMissing(name) from None

    def file(self) -> str:
        """The file that the library was loaded from, without links."""

        class DlInfo(ctypes.Structure):
            _fields_ = [
                ("file", c_char_p),
                ("base", c_void_p),
                ("symbol", c_char_p),
                ("address", c_void_p),
            ]

        info = DlInfo()
        address = ctypes.cast(self.function("get_interface_version"), c_void_p)
        ctypes.CDLL(None).dladdr(address, byref(info))
        return os.path.realpath(os.fsdecode(info.file or b""))

    def _shake_hands(self) -> None:
        info = structure_of(InterfaceVersionInfo)(client_interface_version=CLIENT_VERSION)
        self.function("get_interface_version_ext1")(byref(info))
        if getattr(info, "version_match_result") == _MAJOR_MISMATCH:
            raise VersionMismatch(CLIENT_VERSION, getattr(info, "server_interface_version"))


def _load(names: tuple[str, ...]) -> ctypes.CDLL:
    reason = ""
    for name in names:
        try:
            return ctypes.CDLL(name, mode=os.RTLD_NOW | os.RTLD_LOCAL)
        except OSError as error:
            reason = reason or str(error).removeprefix(f"{name}: ")
    raise LibraryNotFound(names[0], reason)
