# SPDX-License-Identifier: Apache-2.0
"""What became of reports, as values."""

from __future__ import annotations

import dataclasses
from datetime import datetime, timedelta, timezone
from pathlib import Path
from typing import Any

from ._interface import DeliveryError, Outcome, SendEnd
from ._library import decode


@dataclasses.dataclass(frozen=True)
class Receipt:
    """What became of a report. Durations are in seconds."""

    outcome: Outcome
    error: DeliveryError
    http_status: int  # 0 if no complete response arrived
    message: str  # one English sentence without passwords
    url: str  # without user name and password; empty if it was not sent
    request_bytes: int
    response_bytes: int
    lookup: float
    connect: float
    tls: float
    response: float
    total: float
    retry_after: float  # how long the server asks to wait
    saved_to: Path | None  # the file in the store that has the report now
    save_error: str
    save_error_number: int

    @property
    def accepted(self) -> bool:
        return self.outcome is Outcome.ACCEPTED


@dataclasses.dataclass(frozen=True)
class SavedReport:
    """A report in the store. `time` is when it was last written."""

    path: Path
    report_id: str
    bytes: int
    time: datetime


@dataclasses.dataclass(frozen=True)
class SendResult:
    """What sending the reports in the store has done. `retry_after` is in seconds."""

    end: SendEnd
    accepted: int
    set_aside: int
    removed: int  # for the limits
    left: int
    retry_after: float


def receipt_of(delivery: Any) -> Receipt:
    return Receipt(
        Outcome(delivery.outcome), DeliveryError(delivery.error), delivery.http_status,
        decode(delivery.message), decode(delivery.url), delivery.request_bytes,
        delivery.response_bytes, delivery.lookup_us / 1e6, delivery.connect_us / 1e6,
        delivery.tls_us / 1e6, delivery.response_us / 1e6, delivery.total_us / 1e6,
        delivery.retry_after_s, Path(decode(delivery.saved_to)) if delivery.saved_to else None,
        decode(delivery.save_error), delivery.save_error_number)


def saved_report_of(report: Any) -> SavedReport:
    time = datetime(1970, 1, 1, tzinfo=timezone.utc) + timedelta(milliseconds=report.time)
    return SavedReport(Path(decode(report.path)), decode(report.report_id), report.bytes, time)
