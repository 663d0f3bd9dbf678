# SPDX-License-Identifier: Apache-2.0
"""The saved reports, which are sent by a call or in the background."""

from __future__ import annotations

import atexit
import threading
from ctypes import POINTER, byref, c_char_p, c_int, c_size_t
from typing import Any, Callable, Self

from . import _interface as c
from . import host
from ._interface import Status, StorePart
from ._library import (NO_LIMIT, Owner, StrPath, check, created, decode, decoded, deliveries,
                       library, milliseconds, returned, sized, terminated)
from .host import TransportOptions, pointer_to
from .receipts import Receipt, SavedReport, SendResult
from .report import Report


class Store:
    """The saved reports of the host: one file each. Several threads may use it."""

    def __init__(self) -> None:
        self._owner = Owner(library.zt_store_create, library.zt_store_destroy)

    def list(self, part: StorePart = StorePart.REPORTS) -> list[SavedReport]:
        """The reports, oldest first."""
        reports = []

        def add(user: None, report: Any) -> bool:
            reports.append(SavedReport._of(report.contents))
            return True
        self._owner.deliver(library.zt_store_list, part, c.SavedReportCallback(add), None)
        return reports

    def check(self, path: StrPath) -> tuple[str | None, str]:
        """The customer in a saved report, and why the report cannot be sent ("" if it can)."""
        customer, problem = c_char_p(), c_char_p()
        with self._owner.lock:
            self._owner.deliver(library.zt_store_check, terminated(path), byref(customer),
                                byref(problem))
            return decoded(customer), decode(problem.value or b"")

    def remove(self, path: StrPath) -> None:
        self._owner.deliver(library.zt_store_remove, terminated(path))

    def move(self, path: StrPath, part: StorePart) -> None:
        """Moves a report to those that cannot be sent, or back."""
        self._owner.deliver(library.zt_store_move, terminated(path), part)

    def remove_all(self) -> int:
        """Removes all reports of both parts, and returns how many these were."""
        return int(returned(c_size_t, self._owner.deliver, library.zt_store_remove_all).value)

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
                if progress and progress(SavedReport._of(report.contents),
                                         Receipt._of(delivery.contents)) is False:
                    ends.append(None)
            except BaseException as error:
                ends.append(error)

        options = _options(
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
                    result.append(SendResult._of(sent.contents))
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


def _options(url: str, transport: TransportOptions | None, attempts: int | None,
             retry_delay: float, longest_delay: float, **others: Any) -> c.SendOptions:
    """The options of a store or a sender."""
    return sized(c.SendOptions, configuration_url=terminated(url), attempts=attempts or NO_LIMIT,
                 transport=pointer_to(transport), retry_delay_ms=milliseconds(retry_delay),
                 longest_delay_ms=milliseconds(longest_delay), **others)


_LONGEST_MS = 10**9


class BackgroundSender:
    """Sends reports from a thread of its own, which also resends what the store holds.

        with BackgroundSender(configurationUrl) as sender:
            sender.send(report)
            ...
            sender.flush(timeout=2)

    Several threads may use it. In the child of a fork it only saves reports.
    """

    def __init__(self, configurationUrl: str, *, transport: TransportOptions | None = None,
                 attempts: int | None = 5, retry_delay: float = 1, longest_delay: float = 60,
                 kept_receipts: int = 100) -> None:
        options = _options(configurationUrl, transport, attempts, retry_delay, longest_delay,
                           kept_receipts=kept_receipts)
        self._handle = created(library.zt_sender_create, byref(options))
        _running.add(self._handle)

    def __del__(self) -> None:
        if not hasattr(self, "_handle"):
            return
        # Stopped senders are destroyed without waiting for what they are sending.
        library.zt_sender_stop(self._handle, 0, None)
        if not host.kept_callbacks:
            _running.discard(self._handle)
            library.zt_sender_destroy(self._handle)

    def __enter__(self) -> Self:
        return self

    def __exit__(self, *_: object) -> None:
        self.stop()

    def send(self, report: Report) -> None:
        """Saves the report, and wakes up the thread. The report may be changed afterwards."""
        with deliveries:
            report._owner.call(library.zt_sender_send, self._handle, report._handle)

    def flush(self, timeout: float) -> int:
        """Waits at most `timeout` seconds until each saved report has been tried once more.
        Returns how many reports are in the store then."""
        return self._wait(library.zt_sender_flush, timeout)

    def stop(self, timeout: float = 5) -> int:
        """Ends sending for good, and waits at most `timeout` seconds for what is being sent.
        Returns how many reports are left in the store."""
        return self._wait(library.zt_sender_stop, timeout)

    def _wait(self, function: Any, timeout: float) -> int:
        milliseconds = round(min(timeout * 1000, _LONGEST_MS))
        return int(returned(c_size_t, function, self._handle, milliseconds).value)

    def fileno(self) -> int:
        """A descriptor that is readable while there are receipts; for select and asyncio."""
        return int(returned(c_int, library.zt_sender_descriptor, self._handle).value)

    def receipts(self) -> list[tuple[SavedReport, Receipt]]:
        """The receipts since the last call, oldest first."""
        receipts = []

        def add(user: None, report: Any, delivery: Any) -> None:
            receipts.append((SavedReport._of(report.contents), Receipt._of(delivery.contents)))
        check(library.zt_sender_receipts(self._handle, c.ReceiptCallback(add), None))
        return receipts


# The handles whose threads may be running.
_running: set[int] = set()


@atexit.register
def _end() -> None:
    """After this, no thread of the library calls Python, which would end the process.

    A sender whose thread calls no Python ends with the process, without waiting for a server: what
    it is sending is in the store. The others complete what they are sending.
    """
    host.log_to(None)
    host.set_value_filter(None)
    host.set_request_hook(None)
    timeout = _LONGEST_MS if host.kept_callbacks else 0
    for handle in list(_running):
        library.zt_sender_stop(handle, timeout, None)
    deliveries.end()
