# SPDX-License-Identifier: MIT
"""The records of the library's adapters, sensors and settings, each of them once.

What the library reads or writes in memory only is told in C's words in nimba_mgmt_interface.h.
"""

from __future__ import annotations

from ctypes import (
    c_char,
    c_float,
    c_int16,
    c_int32,
    c_uint8,
    c_uint16,
    c_uint32,
    c_uint64,
)
from dataclasses import dataclass
from typing import Annotated, Optional

from ._layout import At, c_record
from ._values import (
    DisplayType,
    DvfsLevel,
    Resolution,
    Version,
    driver_version,
    firmware_version,
    level,
    resolution,
)

_NOT_TOLD = 0xFFFFFFFF
_DRIVERS = "driver's unit"


@c_record("interface_version_info", 12)
@dataclass(frozen=True)
class InterfaceVersionInfo:
    """The version handshake."""

    server: Annotated[int, At(0, c_uint32, "the library's", c_name="server_interface_version")]
    client: Annotated[int, At(4, c_uint32, "the caller's", c_name="client_interface_version")]
    result: Annotated[int, At(8, c_uint32, "the outcome", c_name="version_match_result")]


@c_record("gpu_infos", 48)
@dataclass(frozen=True)
class GpuInfos:
    """One adapter's handles in sysfs."""

    bus_id: Annotated[str, At(0, c_char, "PCI address", c_name="busid", count=20)]
    pci_dir_fd: Annotated[int, At(20, c_int32, "its directory; negative: not opened")]
    jw_info_dir_fd: Annotated[int, At(24, c_int32, "the driver's info directory in it")]
    hwmon_dir_fd: Annotated[int, At(28, c_int32, "its hwmon directory")]
    vendor_id: Annotated[int, At(32, c_uint16, "PCI vendor")]


@c_record("find_adapter_header", 128)
@dataclass(frozen=True)
class FindAdapterHeader:
    """The identity of the adapters in the slots."""

    vendor_id_filter: Annotated[int, At(4, c_uint32, "vendor to accept; 0xFFFF: both")]
    chip_num: Annotated[int, At(12, c_int32, "product adapters found")]
    chip_id: Annotated[tuple[int, ...], At(16, c_uint32, "PCI devices", count=3)]
    chip_name_0: Annotated[str, At(28, c_char, "name in slot 0", c_name="chip_name", count=20)]
    chip_name_1: Annotated[str, At(48, c_char, "name in slot 1", count=20)]
    chip_name_2: Annotated[str, At(68, c_char, "name in slot 2", count=20)]
    is_va_driver: Annotated[
        tuple[int, ...], At(88, c_int32, "1: VA driver", c_name="IS_VA_driver", count=3)
    ]
    drm_fd: Annotated[tuple[int, ...], At(100, c_int32, "descriptors of DRM nodes", count=3)]
    drm_card_idx: Annotated[tuple[int, ...], At(112, c_int32, "N of /dev/dri/cardN", count=3)]


@c_record("find_adapter", 276)
@dataclass(frozen=True)
class FindAdapter:
    """What discovery finds."""

    header: Annotated[FindAdapterHeader, At(0, FindAdapterHeader, "identities")]
    gpu_infos: Annotated[tuple[GpuInfos, ...], At(128, GpuInfos, "handles by slot", count=3)]
    chip_id_idx: Annotated[int, At(272, c_int32, "slot to make current")]


@c_record("busid_info", 6)
@dataclass(frozen=True)
class PciLocation:
    """A PCI location."""

    domain: Annotated[int, At(0, c_uint16, "domain")]
    bus: Annotated[int, At(2, c_uint8, "bus")]
    device: Annotated[int, At(3, c_uint8, "device")]
    function: Annotated[int, At(4, c_uint8, "function")]

    def __str__(self) -> str:
        return f"{self.domain:04x}:{self.bus:02x}:{self.device:02x}.{self.function}"


@c_record("gfx_luid", 8)
@dataclass(frozen=True)
class Luid:
    """A locally unique identifier, made from the PCI location."""

    low: Annotated[int, At(0, c_uint32, "PCI domain")]
    high: Annotated[int, At(4, c_uint32, "bus * 65536 + device * 256 + function")]


@c_record("find_adapter_ext1", 1704)
@dataclass(frozen=True)
class FindAdapterExt1:
    """The extended identity of the slots."""

    other_vendor_chip_num: Annotated[int, At(132, c_int32, "1: another vendor's GPU is in slot 2")]
    vendor_id: Annotated[tuple[int, ...], At(136, c_uint32, "PCI vendors", count=3)]
    location: Annotated[
        tuple[PciLocation, ...], At(148, PciLocation, "locations", c_name="busid_info", count=3)
    ]
    luid: Annotated[tuple[Luid, ...], At(168, Luid, "identifiers", count=3)]


@c_record("connect_type", 16)
@dataclass(frozen=True)
class ConnectType:
    """A type of display connector."""

    name: Annotated[str, At(0, c_char, "as the driver names it", count=12)]
    bit: Annotated[int, At(12, c_uint32, "its bit in Summary.display_types")]


@c_record("adapter_summary", 48)
@dataclass(frozen=True)
class Summary:
    """Clocks, memory, display outputs and PCIe link; what cannot be read is 0."""

    engine_clock: Annotated[int, At(0, c_uint32, "node eclk", _DRIVERS, "eclk")]
    video_clock: Annotated[int, At(4, c_uint32, "node vclk", _DRIVERS, "vclk")]
    memory_clock: Annotated[int, At(8, c_uint32, "node mclk", _DRIVERS, "mclk")]
    frame_buffer_size: Annotated[int, At(12, c_uint32, "node fb_size", _DRIVERS, "fb_size")]
    memory_data_rate: Annotated[int, At(16, c_uint32, "Nimba: twice memory_clock; QV: MT/s")]
    core_clock: Annotated[int, At(20, c_uint32, "node coreclk", _DRIVERS, "coreclk")]
    display_ports: Annotated[int, At(24, c_uint32, "display outputs", c_name="display_port_num")]
    display_types: Annotated[
        DisplayType,
        At(28, c_uint32, "their types", c_name="display_type_mask", convert=DisplayType),
    ]
    memory_channels: Annotated[
        int, At(32, c_uint32, "node miu_channel_num", c_name="miu_channel_num")
    ]
    pcie_lanes: Annotated[int, At(36, c_uint32, "of the link", c_name="pcie_link_width")]
    memory_type: Annotated[
        Optional[int], At(40, c_uint32, "DDR generation; not for Nimba chips", may_stay=True)
    ]
    memory_bit_width: Annotated[
        Optional[int], At(44, c_uint32, "not for Nimba chips", "bits", may_stay=True)
    ]


@c_record("adapter_summary_ext2", 232)
@dataclass(frozen=True)
class SummaryExt2:
    """Versions, fill rates, resolutions, use and temperature, from /proc/gpuinfo_<card>.

    What cannot be read is 0, an empty text or, where None is told of, None.
    """

    driver_version: Annotated[
        Optional[Version], At(0, c_uint64, "such as 1.2.a; None: not told", convert=driver_version)
    ]
    firmware_version: Annotated[
        Optional[Version],
        At(8, c_uint64, "such as 8.f.0.1c; None: not told", convert=firmware_version),
    ]
    firmware_name: Annotated[str, At(16, c_char, "up to 31 characters", count=32)]
    pixel_fillrate: Annotated[int, At(48, c_uint32, "pixels", _DRIVERS)]
    texture_fillrate: Annotated[int, At(52, c_uint32, "texels", _DRIVERS)]
    memory_clock: Annotated[int, At(56, c_uint32, "memory clock", _DRIVERS, "memory_clock_freq")]
    max_resolution_hdmi_dp: Annotated[
        Optional[Resolution],
        At(64, c_uint64, "of HDMI, or else of DP; None: not told", convert=resolution),
    ]
    max_resolution_vga: Annotated[
        Optional[Resolution], At(72, c_uint64, "of VGA; None: not told", convert=resolution)
    ]
    memory_usage: Annotated[
        Optional[int],
        At(80, c_uint32, "memory in use", _DRIVERS, "gpu_memory_usage", none=_NOT_TOLD),
    ]
    usage_3d: Annotated[
        Optional[int], At(84, c_uint32, "3D engine", _DRIVERS, "gpu_use_rate_3d", none=_NOT_TOLD)
    ]
    usage_video: Annotated[
        Optional[int],
        At(88, c_uint32, "video engine", _DRIVERS, "gpu_use_rate_video", none=_NOT_TOLD),
    ]
    usage_vpp: Annotated[
        Optional[int], At(92, c_uint32, "VPP", _DRIVERS, "gpu_use_rate_vpp", none=_NOT_TOLD)
    ]
    temperature: Annotated[
        Optional[int],
        At(96, c_uint32, "temperature", _DRIVERS, "realtime_temperature", none=_NOT_TOLD),
    ]
    pcie_generation: Annotated[int, At(112, c_uint32, "of the link", c_name="pcie_gen")]


_GATING = 'node "pwm_wait_count"'
_CONTROL = 'node "dvfs_control_params"'


@c_record("DvfsRegisterState", 108)
@dataclass(frozen=True)
class DvfsState:
    """The settings of power, clocks and voltage; None: the driver does not tell it.

    `level` is a DvfsLevel, or a number that none of these has.
    """

    power_mode: Annotated[Optional[int], At(0, c_uint32, 'node "power_mode"', may_stay=True)]
    power_gating_3d: Annotated[Optional[int], At(4, c_int16, _GATING, may_stay=True)]
    clock_gating_3d: Annotated[Optional[int], At(6, c_int16, _GATING, may_stay=True)]
    power_gating_vcp: Annotated[Optional[int], At(8, c_int16, _GATING, may_stay=True)]
    clock_gating_vcp: Annotated[Optional[int], At(10, c_int16, _GATING, may_stay=True)]
    power_gating_vpp: Annotated[Optional[int], At(12, c_int16, _GATING, may_stay=True)]
    clock_gating_vpp: Annotated[Optional[int], At(14, c_int16, _GATING, may_stay=True)]
    mode: Annotated[
        Optional[int], At(16, c_uint32, 'node "dvfs_mode"', c_name="dvfs_mode", may_stay=True)
    ]
    gfx_check_size: Annotated[Optional[int], At(20, c_uint32, _CONTROL, may_stay=True)]
    gfx_high_threshold: Annotated[Optional[int], At(24, c_uint32, _CONTROL, may_stay=True)]
    gfx_low_threshold: Annotated[Optional[int], At(28, c_uint32, _CONTROL, may_stay=True)]
    vcp0_check_size: Annotated[Optional[int], At(32, c_uint32, _CONTROL, may_stay=True)]
    vcp0_high_threshold: Annotated[Optional[int], At(36, c_uint32, _CONTROL, may_stay=True)]
    vcp0_low_threshold: Annotated[Optional[int], At(40, c_uint32, _CONTROL, may_stay=True)]
    vcp1_check_size: Annotated[Optional[int], At(44, c_uint32, _CONTROL, may_stay=True)]
    vcp1_high_threshold: Annotated[Optional[int], At(48, c_uint32, _CONTROL, may_stay=True)]
    vcp1_low_threshold: Annotated[Optional[int], At(52, c_uint32, _CONTROL, may_stay=True)]
    vpp_check_size: Annotated[Optional[int], At(56, c_uint32, _CONTROL, may_stay=True)]
    vpp_high_threshold: Annotated[Optional[int], At(60, c_uint32, _CONTROL, may_stay=True)]
    vpp_low_threshold: Annotated[Optional[int], At(64, c_uint32, _CONTROL, may_stay=True)]
    gfx_clock: Annotated[
        Optional[int], At(68, c_int32, 'node "dvfs_clk_voltage"', _DRIVERS, may_stay=True)
    ]
    video_clock: Annotated[int, At(72, c_uint32, 'node "vclk"; read only; 0: none', _DRIVERS)]
    gfx_voltage: Annotated[
        Optional[int], At(84, c_int32, 'node "dvfs_clk_voltage"', _DRIVERS, may_stay=True)
    ]
    memory_clock: Annotated[int, At(100, c_uint32, 'node "mclk"; read only; 0: none', _DRIVERS)]
    level: Annotated[
        Optional[DvfsLevel | int],
        At(104, c_uint32, 'node "dvfs_level"', "", "dvfs_level", convert=level, may_stay=True),
    ]


@c_record("DvfsClockInfo", 12)
@dataclass(frozen=True)
class Clocks:
    """The three clocks; 0 for one that the driver does not tell."""

    engine: Annotated[int, At(0, c_uint32, 'node "eclk"', _DRIVERS, "engine_clock")]
    video: Annotated[int, At(4, c_uint32, 'node "vclk"', _DRIVERS, "video_clock")]
    memory: Annotated[int, At(8, c_uint32, 'node "mclk"', _DRIVERS, "memory_clock")]


@c_record("SegmentInfo", 128)
@dataclass(frozen=True)
class SegmentInfo:
    """Use and size of the memory segments; see Segments for the unit."""

    used_size: Annotated[tuple[int, ...], At(0, c_uint32, "used", count=16)]
    total_size: Annotated[tuple[int, ...], At(64, c_uint32, "sizes", count=16)]


@c_record("FpsInfo", 16)
@dataclass(frozen=True)
class FrameRate:
    """Frame rates; they can be infinite or no number."""

    flips: Annotated[float, At(0, c_float, "pictures shown since the call before", "1/s")]
    blits: Annotated[
        Optional[float], At(4, c_float, "pictures copied since then", "1/s", may_stay=True)
    ]
    flips_blits: Annotated[Optional[float], At(8, c_float, "the sum", "1/s", may_stay=True)]
    average: Annotated[
        float, At(12, c_float, "the sum since the first call, or flips", "1/s", "average_since")
    ]


@c_record("BandwidthInfo", 48)
@dataclass(frozen=True)
class Bandwidth:
    """The kernel-interface library's hardware information; the words are its own."""

    words: Annotated[
        tuple[Optional[int], ...], At(0, c_uint32, "those not written", count=12, may_stay=True)
    ]


@c_record("GpuBusyInfo", 40)
@dataclass(frozen=True)
class EngineBusy:
    """The kernel-interface library's figures of how busy the engines are; the words are its own."""

    words: Annotated[
        tuple[Optional[int], ...], At(0, c_uint32, "those not written", count=10, may_stay=True)
    ]
