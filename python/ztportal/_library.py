# SPDX-License-Identifier: Apache-2.0
"""Finds the library and calls it. ctypes releases the interpreter's lock during each call."""

from __future__ import annotations

import ctypes
import os
import threading
from typing import Any, Optional, TypeVar, Union

from ._interface import FUNCTIONS, Status

Text = Optional[Union[str, bytes]]
StrPath = Union[str, "os.PathLike[str]"]
S = TypeVar("S", bound=ctypes.Structure)

NOW = 2**63 - 1
NO_DATE = -(2**63)
NO_LIMIT = -1
CACHE_CONFIGURATION, OFFLINE = 1, 2


class Error(Exception):
    """The library could not do something. The text says why; `status` is for programs."""

    def __init__(self, status: Status, message: str) -> None:
        super().__init__(message)
        self.status = status


def _load(path: str) -> ctypes.CDLL:
    try:
        loaded = ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(f"ztportal cannot load its library {path} (the environment variable "
                          f"ZTPORTAL_LIBRARY names another file): {error}") from None
    for name, (result, *parameters) in FUNCTIONS.items():
        try:
            function = getattr(loaded, name)
        except AttributeError:
            raise ImportError(f"ztportal needs a newer library than {path}, "
                              f"which has no function {name}") from None
        function.argtypes, function.restype = parameters, result
    return loaded


library_path = os.environ.get("ZTPORTAL_LIBRARY") or "libztportal.so.1"
library = _load(library_path)


class Owner:
    """Owns a handle. Its lock is held in each call with the handle and with what belongs to it."""

    def __init__(self, create: Any, destroy: Any, *arguments: Any) -> None:
        self.lock = threading.RLock()
        self._destroy = destroy
        self.handle = created(create, *arguments)

    def __del__(self) -> None:
        if hasattr(self, "handle"):
            self._destroy(self.handle)

    def call(self, function: Any, *arguments: Any) -> None:
        with self.lock:
            check(function(*arguments))

    def deliver(self, function: Any, *arguments: Any) -> None:
        """For what may run callbacks, or send."""
        with deliveries:
            self.call(function, self.handle, *arguments)


class Deliveries:
    """The calls that may run callbacks, or send, on a thread of the interpreter.

    When the interpreter ends, it waits for them, and lets no other thread begin one: a callback
    that needed the interpreter later would end the process.
    """

    def __init__(self) -> None:
        self._changed = threading.Condition()
        self._count = 0
        self.are_over = False

    def __enter__(self) -> None:
        with self._changed:
            if self.are_over and threading.current_thread() is not threading.main_thread():
                self._changed.wait_for(lambda: False)
            self._count += 1

    def __exit__(self, *_: object) -> None:
        with self._changed:
            self._count -= 1
            self._changed.notify_all()

    def end(self) -> None:
        with self._changed:
            self.are_over = True
            self._changed.wait_for(lambda: self._count == 0)


deliveries = Deliveries()
# The child of a fork has none of the other threads.
os.register_at_fork(after_in_child=lambda: Deliveries.__init__(deliveries))


def returned(kind: Any, function: Any, *arguments: Any) -> Any:
    """Calls a function whose last parameter is what it returns."""
    value = kind()
    check(function(*arguments, ctypes.byref(value)))
    return value


def created(function: Any, *arguments: Any) -> int:
    """Calls a function that returns a handle."""
    with deliveries:
        return int(returned(ctypes.c_void_p, function, *arguments).value)


def sized(kind: type[S], **members: Any) -> S:
    """A structure with its size. The other members are zero."""
    return kind(size=ctypes.sizeof(kind), **members)


def check(status: int) -> None:
    if status:
        raise Error(Status(status), decode(library.zt_last_error()))


def encode(text: Text) -> bytes | None:
    """The bytes of a text. Surrogates stand for those that are not UTF-8, as in names of files."""
    if isinstance(text, str):
        return text.encode("utf-8", "surrogateescape")
    if text is None or isinstance(text, bytes):
        return text
    raise TypeError(f"expected str, bytes or None, not {type(text).__name__}")


def terminated(text: Text | StrPath) -> bytes | None:
    """The bytes of a text without zero bytes."""
    encoded = encode(os.fspath(text) if isinstance(text, os.PathLike) else text)
    if encoded is not None and b"\0" in encoded:
        raise ValueError("embedded null byte")
    return encoded


def decode(text: bytes) -> str:
    return text.decode("utf-8", "surrogateescape")


def decoded(text: ctypes.c_char_p) -> str | None:
    return None if text.value is None else decode(text.value)


def milliseconds(seconds: float | None) -> int:
    """A duration in an option: None is 0, the default, and infinity no limit."""
    if seconds is None:
        return 0
    if seconds < 0:
        raise ValueError("a duration must not be negative")
    return NO_LIMIT if seconds == float("inf") else max(1, round(seconds * 1000))
