# SPDX-License-Identifier: Apache-2.0
"""The saved reports."""

from __future__ import annotations

import threading
from ctypes import POINTER, byref, c_char_p, c_size_t
from pathlib import Path
from typing import Any, Callable

from . import _interface as c
from ._interface import Status, StorePart
from ._library import (NO_LIMIT, Owner, StrPath, check, decode, decoded, deliveries, library,
                       milliseconds, sized, terminated)
from .host import TransportOptions
from .receipts import (Receipt, SavedReport, SendResult, receipt_of, saved_report_of,
                       send_result_of)


class Store:
    """The saved reports of the host: one file each. Several threads may use it."""

    def __init__(self) -> None:
        self._owner = Owner(library.zt_store_create, library.zt_store_destroy)

    def _call(self, function: Any, *arguments: Any) -> None:
        with deliveries, self._owner.lock:
            check(function(self._owner.handle, *arguments))

    @property
    def folder(self) -> Path:
        folder = c_char_p()
        with self._owner.lock:
            self._call(library.zt_store_folder, byref(folder))
            return Path(decode(folder.value or b""))

    def list(self, part: StorePart = StorePart.REPORTS) -> list[SavedReport]:
        """The reports, oldest first."""
        reports = []

        def add(user: None, report: Any) -> bool:
            reports.append(saved_report_of(report.contents))
            return True
        self._call(library.zt_store_list, part, c.SavedReportCallback(add), None)
        return reports

    def check(self, path: StrPath) -> tuple[str | None, str]:
        """The customer in a saved report, and why the report cannot be sent ("" if it can)."""
        customer, problem = c_char_p(), c_char_p()
        with self._owner.lock:
            self._call(library.zt_store_check, terminated(path), byref(customer), byref(problem))
            return decoded(customer), decode(problem.value or b"")

    def remove(self, path: StrPath) -> None:
        self._call(library.zt_store_remove, terminated(path))

    def set_aside(self, path: StrPath) -> None:
        """Moves a report to those that cannot be sent."""
        self._call(library.zt_store_set_aside, terminated(path))

    def put_back(self, path: StrPath) -> None:
        """Moves a report back to those that are sent."""
        self._call(library.zt_store_put_back, terminated(path))

    def export(self, path: StrPath, target: StrPath) -> None:
        """Copies a report into the folder `target`, or else to the new file `target`."""
        self._call(library.zt_store_export, terminated(path), terminated(target))

    def remove_all(self) -> int:
        """Removes all reports of both parts, and returns how many these were."""
        removed = c_size_t()
        self._call(library.zt_store_remove_all, byref(removed))
        return removed.value

    @staticmethod
    def set_limits(*, reports: int = 0, bytes: int = 0, age: float = 0) -> None:
        """How much the stores of this process keep for each part, `age` in seconds; 0: no limit."""
        check(library.zt_store_set_limits(reports, bytes, round(age)))

    def send(self, configurationUrl: str, *, transport: TransportOptions | None = None,
             attempts: int | None = 5, retry: bool = False, retry_delay: float = 1,
             longest_delay: float = 60, budget: float | None = None,
             progress: Callable[[SavedReport, Receipt], object] | None = None) -> SendResult:
        """Sends the saved reports, oldest first; none blocks the others.

        After so many failed `attempts` a report is set aside (None: never). With `retry`, waits and
        tries again until nothing is left that can be sent, or until the `budget` is used up.
        `progress` is called after each report that was tried, on another thread, and ends sending
        by False. Durations are in seconds. An exception ends sending, also KeyboardInterrupt.
        """
        result: list[SendResult] = []
        errors: list[BaseException] = []

        def after(user: None, report: Any, delivery: Any) -> bool:
            try:
                return progress is None or progress(
                    saved_report_of(report.contents), receipt_of(delivery.contents)) is not False
            except BaseException as error:
                errors.append(error)
                return False

        def is_cancelled(user: None) -> bool:
            return bool(errors) or deliveries.are_over

        options = sized(
            c.SendOptions, configuration_url=terminated(configurationUrl),
            transport=pointer_to(transport), attempts=attempts or NO_LIMIT, retry=retry,
            retry_delay_ms=milliseconds(retry_delay), budget_ms=milliseconds(budget),
            longest_delay_ms=milliseconds(longest_delay), progress=c.Progress(after),
            is_cancelled=c.IsCancelled(is_cancelled))

        def send() -> None:
            sent = POINTER(c.SendResult)()
            try:
                with deliveries, self._owner.lock:
                    status = library.zt_store_send(self._owner.handle, byref(options), byref(sent))
                    if status != Status.NOT_ACCEPTED:
                        check(status)
                    result.append(send_result_of(sent.contents))
            except BaseException as error:
                errors.append(error)

        # Signals are handled by Python code of the main thread, so that must not wait in C.
        thread = threading.Thread(target=send, daemon=True)
        thread.start()
        try:
            thread.join()
        except BaseException as error:
            errors.append(error)
            thread.join()
        if errors:
            raise errors[0]
        return result[0]


def pointer_to(options: TransportOptions | None) -> Any:
    return POINTER(c.TransportOptions)(options._structure()) if options else None
