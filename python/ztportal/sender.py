# SPDX-License-Identifier: Apache-2.0
"""Sending in the background."""

from __future__ import annotations

import atexit
from ctypes import byref, c_int, c_size_t
from typing import Any, Self

from . import _interface as c
from . import host
from ._library import check, created, deliveries, library
from .receipts import Receipt, SavedReport, receipt_of, saved_report_of
from .report import Report
from .store import send_options

_LONGEST_MS = 10**9


class BackgroundSender:
    """Sends reports from a thread of its own, which also resends what the store holds.

        with BackgroundSender(configurationUrl) as sender:
            sender.send(report)
            ...
            sender.flush(timeout=2)

    Several threads may use it. In the child of a fork it only saves reports.
    """

    def __init__(self, configurationUrl: str, *, transport: host.TransportOptions | None = None,
                 attempts: int | None = 5, retry_delay: float = 1, longest_delay: float = 60,
                 kept_receipts: int = 100) -> None:
        options = send_options(configurationUrl, transport, attempts, retry_delay, longest_delay,
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
        with deliveries, report._owner.lock:
            check(library.zt_sender_send(self._handle, report._handle))

    def flush(self, timeout: float) -> int:
        """Waits at most `timeout` seconds until each saved report has been tried once more.
        Returns how many reports are in the store then."""
        return self._wait(library.zt_sender_flush, timeout)

    def stop(self, timeout: float = 5) -> int:
        """Ends sending for good, and waits at most `timeout` seconds for what is being sent.
        Returns how many reports are left in the store."""
        return self._wait(library.zt_sender_stop, timeout)

    def _wait(self, function: Any, timeout: float) -> int:
        left = c_size_t()
        check(function(self._handle, round(min(timeout * 1000, _LONGEST_MS)), byref(left)))
        return left.value

    def fileno(self) -> int:
        """A descriptor that is readable while there are receipts; for select and asyncio."""
        descriptor = c_int()
        check(library.zt_sender_descriptor(self._handle, byref(descriptor)))
        return descriptor.value

    def receipts(self) -> list[tuple[SavedReport, Receipt]]:
        """The receipts since the last call, oldest first."""
        receipts = []

        def add(user: None, report: Any, delivery: Any) -> None:
            receipts.append((saved_report_of(report.contents), receipt_of(delivery.contents)))
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
