# SPDX-License-Identifier: Apache-2.0
"""The saved reports."""

from __future__ import annotations

import threading
from ctypes import POINTER, byref, c_char_p, c_size_t
from typing import Any, Callable

from . import _interface as c
from ._interface import SendEnd, Status, StorePart
from ._library import (NO_LIMIT, Owner, StrPath, check, decode, decoded, deliveries, library,
                       milliseconds, sized, terminated)
from .host import TransportOptions, pointer_to
from .receipts import Receipt, SavedReport, SendResult, receipt_of, saved_report_of


class Store:
    """The saved reports of the host: one file each. Several threads may use it."""

    def __init__(self) -> None:
        self._owner = Owner(library.zt_store_create, library.zt_store_destroy)

    def _call(self, function: Any, *arguments: Any) -> None:
        with deliveries, self._owner.lock:
            check(function(self._owner.handle, *arguments))

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

    def move(self, path: StrPath, part: StorePart) -> None:
        """Moves a report to those that cannot be sent, or back."""
        self._call(library.zt_store_move, terminated(path), part)

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
        ends: list[BaseException | None] = []  # an exception, or None: `progress` asked for it
        result: list[SendResult] = []

        def after(user: None, report: Any, delivery: Any) -> None:
            try:
                if progress and progress(saved_report_of(report.contents),
                                         receipt_of(delivery.contents)) is False:
                    ends.append(None)
            except BaseException as error:
                ends.append(error)

        options = send_options(
            configurationUrl, transport, attempts, retry_delay, longest_delay, retry=retry,
            budget_ms=milliseconds(budget), on_receipt=c.ReceiptCallback(after),
            is_cancelled=c.IsCancelled(lambda user: bool(ends) or deliveries.are_over))

        def send() -> None:
            sent = POINTER(c.SendResult)()
            try:
                with deliveries, self._owner.lock:
                    status = library.zt_store_send(self._owner.handle, byref(options), byref(sent))
                    if status != Status.NOT_ACCEPTED:
                        check(status)
                    one = sent.contents
                    result.append(SendResult(SendEnd(one.end), one.accepted, one.set_aside,
                                             one.removed, one.left, one.retry_after_s))
            except BaseException as error:
                ends.append(error)

        # Signals are handled by Python code of the main thread, so that must not wait in C.
        thread = threading.Thread(target=send, daemon=True)
        thread.start()
        try:
            thread.join()
        except BaseException as error:
            ends.append(error)
            thread.join()
        for end in ends:
            if end:
                raise end
        return result[0]


def send_options(url: str, transport: TransportOptions | None, attempts: int | None,
                 retry_delay: float, longest_delay: float, **others: Any) -> c.SendOptions:
    """The options of a store or a sender."""
    return sized(c.SendOptions, configuration_url=terminated(url), attempts=attempts or NO_LIMIT,
                 transport=pointer_to(transport), retry_delay_ms=milliseconds(retry_delay),
                 longest_delay_ms=milliseconds(longest_delay), **others)
