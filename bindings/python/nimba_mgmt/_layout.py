# SPDX-License-Identifier: MIT
"""How a record of the library is described, laid out in memory and read from it.

A record is a frozen dataclass. The annotation of each field holds, beside its Python type, an `At`:
its byte offset and its C type, its name in C where that differs, what it means and its unit. The
ctypes structure is made from these; bytes that no field covers are the record's reserved ones.
"""

from __future__ import annotations

import ctypes
import inspect
import os
import struct
from collections.abc import Callable
from dataclasses import dataclass, fields, is_dataclass
from typing import Any, TypeVar, get_type_hints

Record = TypeVar("Record")
ClassOfRecord = TypeVar("ClassOfRecord", bound=type[Any])

# What the bytes of a record are before a call that may leave some of its fields as they were. Where
# a field's own value could be the first mark, the call is made twice: no value is both.
MARKS = (0xA5, 0x5A)


@dataclass(frozen=True)
class At:
    """Where a field is in its record, what is there, and how it is shown."""

    offset: int
    kind: type[Any]  # a type of ctypes, or another record
    doc: str
    unit: str = ""
    c_name: str = ""  # when Python's name is another one
    count: int = 0  # the elements of an array; 0: no array
    convert: Callable[[Any], Any] | None = None
    none: int | None = None  # the number that stands for "not told"
    may_stay: bool = False  # the library may leave it as it was, which reads as None


@dataclass(frozen=True)
class Layout:
    """A record's description, and the structure that was made from it."""

    c_name: str
    record: type[Any]
    structure: type[ctypes.Structure]
    places: dict[str, At]  # by Python name
    members: tuple[tuple[str, str, Callable[[Any], Any] | None], ...]  # Python and C name, reader
    numbers: struct.Struct | None  # of a record that has nothing but single numbers


# Every record, by its name in C.
RECORDS: dict[str, Layout] = {}

_LAYOUTS: dict[type[Any], Layout] = {}


def c_record(c_name: str, size: int) -> Callable[[ClassOfRecord], ClassOfRecord]:
    """Registers a dataclass as the library's record `c_name` of `size` bytes."""

    def register(record: ClassOfRecord) -> ClassOfRecord:
        if not is_dataclass(record):
            raise TypeError(f"{record.__name__} is not a dataclass")
        hints = get_type_hints(record, include_extras=True)
        places = {field.name: _place(hints[field.name]) for field in fields(record)}
        layout = Layout(
            c_name,
            record,
            _structure(c_name, size, places),
            places,
            tuple(
                (name, place.c_name or name, _reader(place)) for name, place in places.items()
            ),
            _numbers(size, places),
        )
        RECORDS[c_name] = _LAYOUTS[record] = layout
        lines = [_documented(name, place) for name, place in places.items()]
        about = inspect.cleandoc(record.__doc__ or "")
        record.__doc__ = f"{about}\n\nFields:\n" + "\n".join(lines)
        # For help(), which would show the places of all fields in the signature otherwise.
        vars(record)["__init__"].__annotations__ = get_type_hints(record)
        return record

    return register


def layout_of(record: type[Any]) -> Layout:
    """The layout of a registered record."""
    return _LAYOUTS[record]


def structure_of(record: type[Any]) -> type[ctypes.Structure]:
    """The ctypes structure of a registered record."""
    return _LAYOUTS[record].structure


def decode(record: type[Record], image: bytes, again: bytes = b"") -> Record:
    """Makes a record of its bytes.

    Fields that may stay as they were are None where the bytes are those of the first mark, and in
    `again`, if the call was made twice, those of the second.
    """
    layout = _LAYOUTS[record]
    values = _values(layout, layout.structure.from_buffer_copy(image))
    for name, place in layout.places.items():
        if place.may_stay:
            values[name] = _without_untouched(place, values[name], image, again)
    return record(**values)


def decode_all(record: type[Record], image: bytes | bytearray) -> list[Record]:
    """Makes records of an array's bytes. There may be a million of them."""
    layout = _LAYOUTS[record]
    if layout.numbers is None:
        count = len(image) // ctypes.sizeof(layout.structure)
        array = (layout.structure * count).from_buffer_copy(image)
        return [record(**_values(layout, member)) for member in array]
    readers = [(i, read) for i, (_, _, read) in enumerate(layout.members) if read is not None]
    records = []
    for values in layout.numbers.iter_unpack(image):
        if readers:
            shown: list[Any] = [*values]
            for i, read in readers:
                shown[i] = read(shown[i])
            records.append(record(*shown))
        else:
            records.append(record(*values))
    return records


def encode_into(structure: ctypes.Structure, record: type[Any], values: dict[str, Any]) -> None:
    """Sets the fields with these Python names. Text is encoded as file names are."""
    for name, value in values.items():
        c_name = _LAYOUTS[record].places[name].c_name or name
        setattr(structure, c_name, os.fsencode(value) if isinstance(value, str) else value)


def _place(hint: Any) -> At:
    for extra in hint.__metadata__:
        if isinstance(extra, At):
            return extra
    raise TypeError(f"{hint} does not tell where the field is")


def _c_type(place: At) -> Any:
    kind: Any = structure_of(place.kind) if place.kind in _LAYOUTS else place.kind
    return kind * place.count if place.count else kind


def _structure(c_name: str, size: int, places: dict[str, At]) -> type[ctypes.Structure]:
    members: list[tuple[str, Any]] = []
    end = 0

    def reserve_until(offset: int) -> None:
        if offset > end:
            members.append((f"reserved_at_{end}", ctypes.c_uint8 * (offset - end)))

    for name, place in places.items():
        reserve_until(place.offset)
        members.append((place.c_name or name, _c_type(place)))
        end = place.offset + ctypes.sizeof(_c_type(place))
    reserve_until(size)
    structure = type(c_name, (ctypes.Structure,), {"_fields_": members})
    for name, place in places.items():
        if getattr(structure, place.c_name or name).offset != place.offset:
            raise TypeError(f"{c_name}.{name} is not at byte {place.offset}")
    if ctypes.sizeof(structure) != size:
        raise TypeError(f"{c_name} has not {size} bytes")
    return structure


def _numbers(size: int, places: dict[str, At]) -> struct.Struct | None:
    form = "@"
    end = 0
    for place in places.values():
        code = getattr(place.kind, "_type_", "c")
        if place.count or code == "c":
            return None
        form += f"{place.offset - end}x{code}"
        end = place.offset + ctypes.sizeof(place.kind)
    return struct.Struct(f"{form}{size - end}x")


def _reader(place: At) -> Callable[[Any], Any] | None:
    """What makes the field's value of the structure's member; None: it is that."""
    if place.convert is not None:
        return place.convert
    if place.kind in _LAYOUTS:
        layout = _LAYOUTS[place.kind]
        if place.count:
            return lambda array: tuple(place.kind(**_values(layout, member)) for member in array)
        return lambda member: place.kind(**_values(layout, member))
    if place.kind is ctypes.c_char:
        return os.fsdecode
    if place.count:
        return tuple
    if place.none is not None:
        return lambda number: None if number == place.none else number
    return None


def _values(layout: Layout, structure: ctypes.Structure) -> dict[str, Any]:
    return {
        name: getattr(structure, c_name) if read is None else read(getattr(structure, c_name))
        for name, c_name, read in layout.members
    }


def _without_untouched(place: At, value: Any, image: bytes, again: bytes) -> Any:
    size = ctypes.sizeof(place.kind)

    def untouched(index: int) -> bool:
        start = place.offset + index * size
        pairs = zip((image, again) if again else (image,), MARKS)
        return all(part[start : start + size] == bytes([mark]) * size for part, mark in pairs)

    if place.count:
        return tuple(None if untouched(i) else element for i, element in enumerate(value))
    return None if untouched(0) else value


def _documented(name: str, place: At) -> str:
    unit = f" ({place.unit})" if place.unit else ""
    none = "; None: not told" if place.none is not None or place.may_stay else ""
    return f"    {name}{unit}: {place.doc}{none}."
