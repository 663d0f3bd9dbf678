# SPDX-License-Identifier: Apache-2.0
"""Reports, and runs that are reported as a whole."""

from __future__ import annotations

import json
from ctypes import POINTER, byref, c_char_p, c_size_t, string_at
from datetime import datetime, timezone
from typing import Any, Mapping, Self, TypeVar

from ._interface import Delivery, Status
from ._library import (CACHE_CONFIGURATION, NOW, OFFLINE, Owner, StrPath, Text, check, created,
                       decode, decoded, deliveries, encode, library, returned, terminated)
from .fields import Pool, Value, from_datetime
from .host import TransportOptions, pointer_to
from .pools import ComputerSystemPool, ExecutionPool
from .receipts import Receipt

P = TypeVar("P", bound=Pool)


class _Key:
    """A text that the library knows about a report, by the name of the attribute."""

    def __set_name__(self, owner: type, name: str) -> None:
        self._key = name.encode()

    def __get__(self, report: Report, owner: type) -> str | None:
        with report._owner.lock:
            return decoded(returned(c_char_p, library.zt_report_get, report._handle, self._key))


class Report:
    """A report. Several threads may use it and its pools; a lock makes them take turns.

        report = Report(customerId="Kelvane", applicationId="{...}", applicationVersion="2.1",
                        configurationUrl="http://config.example.com/kelvane.xml")
        try:
            with report:
                report.execution.add_step("Copy", stepType="INFO")
        finally:
            report.send()

    Creating it contacts the server, for up to four seconds, unless it is `offline`. The block is
    its execution, from the start to the end. An exception in it becomes a step of the type ERROR,
    and goes on; `sys.exit(0)` does not count as one.
    """

    reportId, machineId, customerId, applicationId = _Key(), _Key(), _Key(), _Key()
    applicationVersion, configurationUrl, reportUrl = _Key(), _Key(), _Key()
    reportTestUrl, serverVersion, file = _Key(), _Key(), _Key()

    _execution: ExecutionPool | None = None

    def __init__(self, *, customerId: Text, applicationId: Text, applicationVersion: Text,
                 configurationUrl: Text = "", cacheConfiguration: bool = False,
                 offline: bool = False) -> None:
        texts = (configurationUrl, customerId, applicationId, applicationVersion)
        flags = cacheConfiguration * CACHE_CONFIGURATION | offline * OFFLINE
        self._own(library.zt_report_create, *map(terminated, texts), flags)

    def _own(self, create: Any, *arguments: Any) -> None:
        self._owner = Owner(create, library.zt_report_destroy, *arguments)
        self._handle = self._owner.handle

    @classmethod
    def from_json(cls, description: Text | Mapping[str, Any], *, offline: bool = False) -> Report:
        """The report of a description (docs/report-description.md), as JSON or as an object."""
        if isinstance(description, Mapping):
            description = json.dumps(description, default=_rfc3339)
        text = encode(description) or b""
        report = Report.__new__(Report)
        report._own(library.zt_report_from_json, text, len(text), offline * OFFLINE)
        return report

    @property
    def online(self) -> bool:
        """Whether the server returned its version."""
        return bool(self.serverVersion)

    @property
    def execution(self) -> ExecutionPool:
        """The pool that `start` has added."""
        if self._execution is None:
            raise RuntimeError("the report has no execution before it is started")
        return self._execution

    def start(self, startPoint: Text = "") -> ExecutionPool:
        """Adds the pool of the execution, which starts now."""
        self._execution = self.add_pool(ExecutionPool, startPoint=startPoint)
        return self._execution

    def stop(self, endPoint: Text = "") -> None:
        """The execution ends now."""
        self.execution._update({"endPoint": endPoint, "endTime": datetime.now(timezone.utc)})

    def __enter__(self) -> Self:
        if self._execution is None:
            self.start()
        return self

    def __exit__(self, kind: object, error: BaseException | None, trace: object) -> None:
        if error is not None and (not isinstance(error, SystemExit) or error.code):
            self._record(error)
        self.stop(self.execution.endPoint)

    def _record(self, error: BaseException) -> None:
        try:
            message = str(error).encode("utf-8", "backslashreplace")
        except Exception:
            message = b"the exception has no text"
        self.execution.add_step(type(error).__name__, stepType="ERROR", stepMessageString=message)
        self.execution.endErrorMessageString = message
        self.execution.successfull = False
        self.execution.cancelled = not isinstance(error, (Exception, SystemExit))

    def add_pool(self, kind: type[P], timeStamp: datetime | None = None, **values: Value) -> P:
        """Adds a pool with the time stamp (now, unless there is one) and the values of its keys."""
        pool = self._add(kind, library.zt_report_add_pool, timeStamp, kind._kind)
        pool._update(values)
        return pool

    def add_inventory(self, timeStamp: datetime | None = None) -> ComputerSystemPool:
        """Adds a pool that is filled from this machine, which runs subprocesses."""
        return self._add(ComputerSystemPool, library.zt_report_add_inventory, timeStamp)

    def _add(self, kind: type[P], function: Any, date: datetime | None, *name: bytes) -> P:
        time = NOW if date is None else from_datetime(date)
        with self._owner.lock:
            return kind(self._owner, created(function, self._handle, *name, time))

    def set_transport(self, options: TransportOptions) -> None:
        """For the later requests of this report alone."""
        self._owner.call(library.zt_report_set_transport, self._handle, pointer_to(options))

    def render(self, *, soap: bool = True) -> str:
        """The request text (SOAP 1.1), or without `soap` its body as plain XML."""
        text, length = c_char_p(), c_size_t()
        with deliveries, self._owner.lock:
            check(library.zt_report_render(self._handle, soap, byref(text), byref(length)))
            return decode(string_at(text, length.value))

    def send(self) -> Receipt:
        """Broadcasts and posts the report. If it is not accepted, it is saved in the store."""
        return self._deliver(library.zt_report_send)

    def save(self) -> Receipt:
        """Saves the report in the store without sending it."""
        return self._deliver(library.zt_report_save, None)

    def write(self, path: StrPath) -> None:
        """Writes the request text to a file."""
        self._owner.deliver(library.zt_report_save, terminated(path))

    def resend(self, path: StrPath) -> Receipt:
        """Sends a saved report. The file stays."""
        return self._deliver(library.zt_report_resend, terminated(path))

    @property
    def last_delivery(self) -> Receipt:
        """The receipt of what this report sent or saved last."""
        with self._owner.lock:
            delivery = returned(POINTER(Delivery), library.zt_report_last_delivery, self._handle)
            return Receipt._of(delivery.contents)

    def _deliver(self, function: Any, *arguments: Any) -> Receipt:
        with deliveries, self._owner.lock:
            status = function(self._handle, *arguments)
            if status != Status.NOT_ACCEPTED:
                check(status)
            return self.last_delivery


class Run(Report):
    """A run of an application of a built-in customer, reported with the inventory."""

    def __init__(self, customerId: Text, applicationId: Text = None) -> None:
        self._own(library.zt_run_create, terminated(customerId), terminated(applicationId))

    def start(self, startPoint: Text = "") -> ExecutionPool:
        with self._owner.lock:
            handle = created(library.zt_run_start, self._handle, terminated(startPoint))
            self._execution = ExecutionPool(self._owner, handle)
            return self._execution

    def set_fact(self, name: Text, value: str | bytes | bool) -> None:
        """A fact becomes a field of the execution when the run is sent or saved."""
        if isinstance(value, bool):
            self._owner.call(library.zt_run_set_boolean, self._handle, terminated(name), value)
        else:
            text = terminated(value)
            self._owner.call(library.zt_run_set_string, self._handle, terminated(name), text)


def _rfc3339(value: object) -> str:
    if isinstance(value, datetime):
        return (value if value.tzinfo else value.astimezone()).isoformat()
    raise TypeError(f"a description cannot have a {type(value).__name__}")
