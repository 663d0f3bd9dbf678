# SPDX-License-Identifier: Apache-2.0
"""What became of reports, as values. Durations are in seconds. Made by python/generate.py; do not
edit."""

from __future__ import annotations

from dataclasses import dataclass
from datetime import datetime, timedelta, timezone
from pathlib import Path
from typing import Any

from ._interface import DeliveryError, Outcome, SendEnd
from ._library import decode

_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)


@dataclass(frozen=True)
class Receipt:
    outcome: Outcome
    error: DeliveryError
    http_status: int  # 0 if no complete response arrived
    save_error_number: int  # errno; 0 if it was saved or did not have to be
    message: str  # one English sentence without passwords
    url: str  # without user name and password; empty if it was not sent
    saved_to: Path | None  # the file in the store that has the report now, if any
    save_error: str  # why it could not be saved
    request_bytes: int
    response_bytes: int
    lookup: float  # 0 if the phase was not needed, like the next three
    connect: float
    tls: float
    response: float
    total: float
    retry_after: float  # how long the server asks to wait; 0 if it does not

    @property
    def accepted(self) -> bool:
        return self.outcome is Outcome.ACCEPTED

    @classmethod
    def _of(cls, given: Any) -> Receipt:
        return cls(Outcome(given.outcome), DeliveryError(given.error), given.http_status,
                   given.save_error_number, decode(given.message), decode(given.url),
                   Path(decode(given.saved_to)) if given.saved_to else None,
                   decode(given.save_error), given.request_bytes, given.response_bytes,
                   given.lookup_us / 1e6, given.connect_us / 1e6, given.tls_us / 1e6,
                   given.response_us / 1e6, given.total_us / 1e6, given.retry_after_s)


@dataclass(frozen=True)
class SavedReport:
    path: Path
    report_id: str  # the file's name without its ending
    bytes: int
    time: datetime  # when it was last written

    @classmethod
    def _of(cls, given: Any) -> SavedReport:
        return cls(Path(decode(given.path)), decode(given.report_id), given.bytes, _EPOCH +
                   timedelta(milliseconds=given.time))


@dataclass(frozen=True)
class SendResult:
    end: SendEnd
    accepted: int  # and removed
    set_aside: int  # moved to "unsendable"
    removed: int  # for the limits
    left: int  # reports in the store at the end, new ones included
    retry_after: float  # how long the server asks to wait; 0 if it does not

    @classmethod
    def _of(cls, given: Any) -> SendResult:
        return cls(SendEnd(given.end), given.accepted, given.set_aside, given.removed, given.left,
                   given.retry_after_s)
