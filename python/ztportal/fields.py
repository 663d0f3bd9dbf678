# SPDX-License-Identifier: Apache-2.0
"""Pools and records: the values of their keys, and generic fields."""

from __future__ import annotations

from ctypes import byref, c_char_p, c_int64, c_size_t, string_at
from datetime import datetime, timedelta, timezone
from enum import IntEnum
from typing import Any, Callable, Generic, Mapping, Sequence, TypeVar, Union, overload

from ._interface import Status
from ._library import (NO_DATE, NOW, Error, Owner, Text, check, created, decode, encode, library,
                       returned, terminated)

Value = Union[None, str, bytes, bool, int, datetime]
FieldValue = Union[None, str, bytes, bool, int, float, "Sequence[FieldValue]",
                   "Mapping[str, FieldValue]"]

_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
_MILLISECOND = timedelta(milliseconds=1)
_LARGEST_FLOAT = 3.4028234663852886e38

# Each value would look these up by name otherwise.
_set_string_n, _set_integer = library.zt_pool_set_string_n, library.zt_pool_set_integer
_set_date = library.zt_pool_set_date


def from_datetime(date: datetime | None) -> int:
    """Milliseconds since 1970, cut off. A date without a time zone is local time."""
    if date is None:
        return NO_DATE
    if not isinstance(date, datetime):
        raise TypeError(f"expected datetime or None, not {type(date).__name__}")
    return ((date if date.tzinfo else date.astimezone()) - _EPOCH) // _MILLISECOND


def to_datetime(milliseconds: int) -> datetime | None:
    return None if milliseconds == NO_DATE else _EPOCH + milliseconds * _MILLISECOND


def boolean(byte: int) -> bool:
    """As in reports, which show TRUE only for 1."""
    return byte == 1


def _in_range(value: int, bits: int) -> int:
    """ctypes would cut off the upper bits."""
    if not isinstance(value, int):
        raise TypeError(f"expected int, not {type(value).__name__}")
    if not -(1 << bits - 1) <= value < 1 << bits - 1:
        raise Error(Status.OUT_OF_RANGE, f"{value} is no integer of {bits} bits")
    return value


class Record:
    """What has keys. Each key is an attribute with the name that it has in a JSON description."""

    __slots__ = ("_owner", "_handle")

    def __init__(self, owner: Owner, handle: int) -> None:
        self._owner = owner
        self._handle = handle

    def _update(self, values: Mapping[str, Value]) -> None:
        for key, value in values.items():
            setattr(self, key, value)

    def _set_string(self, key: bytes, value: Text) -> None:
        text = encode(value)
        self._owner.call(_set_string_n, self._handle, key, text, len(text or b""))

    def _add_record(self, record: type[R], key: bytes, values: Mapping[str, Value]) -> R:
        with self._owner.lock:
            added = record(self._owner, created(library.zt_pool_add_record, self._handle, key, NOW))
            added._update(values)
            return added


T = TypeVar("T")
E = TypeVar("E", bound=IntEnum)
R = TypeVar("R", bound=Record)


class Key(Generic[T]):
    """An attribute that is the value of a key: a number of some kind, unless it is a string."""

    _kind: Callable[[int], T]

    def __set_name__(self, owner: type, name: str) -> None:
        self._key = name.encode()

    @overload
    def __get__(self, record: None, owner: type) -> Key[T]: ...

    @overload
    def __get__(self, record: Record, owner: type) -> T: ...

    def __get__(self, record: Record | None, owner: type) -> Any:
        if record is None:
            return self
        with record._owner.lock:
            return self._get(record._handle)

    def _get(self, handle: int) -> T:
        return self._kind(returned(c_int64, library.zt_pool_get_integer, handle, self._key).value)


class Number(Key[T]):
    def __init__(self, kind: Callable[[int], T]) -> None:
        self._kind = kind

    def __set__(self, record: Record, value: int) -> None:
        record._owner.call(_set_integer, record._handle, self._key, _in_range(value, 64))


class Enumeration(Number[E]):
    """Can also be set by name."""

    def __set__(self, record: Record, value: int | str) -> None:
        if isinstance(value, str):
            record._set_string(self._key, value)
        else:
            super().__set__(record, value)


class Date(Key["datetime | None"]):
    _kind = staticmethod(to_datetime)

    def __set__(self, record: Record, value: datetime | None) -> None:
        record._owner.call(_set_date, record._handle, self._key, from_datetime(value))


class String(Key["str | None"]):
    def _get(self, handle: int) -> str | None:
        value, length = c_char_p(), c_size_t()
        check(library.zt_pool_get_string(handle, self._key, byref(value), byref(length)))
        return decode(string_at(value, length.value)) if value else None

    def __set__(self, record: Record, value: Text) -> None:
        record._set_string(self._key, value)


class Pool(Record):
    """A pool of a report, with keys, records and generic fields."""

    __slots__ = ()
    _kind = b""

    def add_field(self, name: Text, value: FieldValue) -> None:
        """Adds a generic field. None is a missing string; integers and floats have 32 bits. A
        mapping or sequence is an array; the fields of a sequence have the names "0", "1", …"""
        self.add_fields({name: value})

    def add_fields(self, fields: Mapping[Any, FieldValue]) -> None:
        """Adds a generic field for each name and value: all of them, or none if one is wrong."""
        calls = [_field_call(name, value) for name, value in fields.items()]
        with self._owner.lock:
            _add_fields(created(library.zt_pool_fields, self._handle), calls)


def _field_call(name: Text, value: FieldValue) -> tuple[Any, ...]:
    """The function that adds a field, its name, and the other arguments; for an array its fields.
    So everything is checked before anything is added."""
    key = terminated(name)
    if value is None or isinstance(value, (str, bytes)):
        text = encode(value)
        return (_set_string_n, key, text, len(text or b""))
    if isinstance(value, bool):
        return (library.zt_pool_set_boolean, key, value)
    if isinstance(value, int):
        return (_set_integer, key, _in_range(value, 32))
    if isinstance(value, float):
        if _LARGEST_FLOAT < abs(value) < float("inf"):
            raise Error(Status.OUT_OF_RANGE, f"{value} is no float of 32 bits")
        return (library.zt_pool_set_float, key, value)
    if isinstance(value, Mapping):
        return (None, key, [_field_call(child, item) for child, item in value.items()])
    if isinstance(value, Sequence):
        return (None, key, [_field_call(str(i), item) for i, item in enumerate(value)])
    raise TypeError(f"a field cannot be of type {type(value).__name__}")


def _add_fields(array: int, calls: list[tuple[Any, ...]]) -> None:
    for function, name, *arguments in calls:
        if function is None:
            _add_fields(created(library.zt_pool_add_record, array, name, NOW), arguments[0])
        else:
            check(function(array, name, *arguments))
