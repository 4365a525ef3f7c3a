# SPDX-License-Identifier: MIT
"""What the library packs into numbers: enumerations, versions and resolutions."""

from __future__ import annotations

from dataclasses import dataclass
from enum import Enum, IntEnum, IntFlag


class HwmonNode(IntEnum):
    """Nodes of the adapter's hwmon directory; see Adapter.hwmon."""

    TEMP1_INPUT = 0
    FAN0_INPUT = 1
    FAN1_INPUT = 2


class InfoNode(IntEnum):
    """Nodes of the driver's info directory: the members in lower case; see Adapter.info."""

    ENGINE_3D_USAGE = 0
    ENGINE_VCP_USAGE = 1
    ENGINE_VCP_INFO = 2
    ENGINE_VPP_USAGE = 3
    FAN_SPEED = 4
    VBIOS_VERSION = 5
    PMP_VERSION = 6
    RELEASE_DATE = 7
    DRIVER_VERSION = 8
    MIU_CHANNEL_NUM = 9
    SLICE_MASK = 10
    FB_SIZE = 11
    FREE_FB_MEM = 12
    ECLK = 13
    VCLK = 14
    MCLK = 15
    ENABLE_PERF = 16
    ENABLE_USAGE = 17
    FPS_COUNT = 18
    RXA_BLT_SCN_CNT = 19
    MISC_CTL_FLAG = 20
    POWER_MODE = 21
    POWER_CASE = 22
    PWM_WAIT_COUNT = 23
    DVFS_MODE = 24
    DVFS_CONTROL_PARAMS = 25
    DVFS_CLK_VOLTAGE = 26
    DVFS_LEVEL = 27
    SEGMENT_INFO = 28
    CORECLK = 29


class DvfsLevel(IntEnum):
    """What the driver weighs: speed against power."""

    BALANCE = 0
    LOW_POWER = 1
    PERFORMANCE = 2


class DisplayType(IntFlag):
    """Types of display connectors."""

    VGA = 1
    DVI = 2
    HDMI = 4
    DP = 8
    EDP = 16


class PageTableKind(IntEnum):
    """What an entry of a page table is one of."""

    PAGE_TABLE = 1
    SUB_TABLE = -1


class SegmentSource(Enum):
    """Where the use of memory segments was read."""

    NODE = "node"
    HEAPS = "heaps"
    ALLOCATIONS = "allocations"


@dataclass(frozen=True, order=True)
class Version:
    """A version of a driver or firmware: its parts, which are written in hexadecimal."""

    parts: tuple[int, ...]
    raw: int

    def __str__(self) -> str:
        return ".".join(f"{part:x}" for part in self.parts)


@dataclass(frozen=True, order=True)
class Resolution:
    """A resolution of a display: pixels, and pictures per second."""

    width: int
    height: int
    refresh: int

    def __str__(self) -> str:
        return f"{self.width}x{self.height}@{self.refresh}"


def driver_version(raw: int) -> Version | None:
    """Unpacks a << 32 | b << 16 | c; 0 is none."""
    return Version((raw >> 32, raw >> 16 & 0xFFFF, raw & 0xFFFF), raw) if raw else None


def firmware_version(raw: int) -> Version | None:
    """Unpacks a << 48 | b << 32 | c << 16 | d; 0 is none."""
    parts = (raw >> 48, raw >> 32 & 0xFFFF, raw >> 16 & 0xFFFF, raw & 0xFFFF)
    return Version(parts, raw) if raw else None


def resolution(raw: int) -> Resolution | None:
    """Unpacks width << 48 | height << 32 | refresh rate; 0 is none."""
    return Resolution(raw >> 48, raw >> 32 & 0xFFFF, raw & 0xFFFFFFFF) if raw else None


def level(raw: int) -> DvfsLevel | int:
    """A level that is known, else its number."""
    return DvfsLevel(raw) if raw in DvfsLevel._value2member_map_ else raw
