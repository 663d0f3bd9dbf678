# SPDX-License-Identifier: Apache-2.0
"""Who the host is, what it allows, and how its requests travel."""

from __future__ import annotations

import dataclasses
import logging
import sys
from ctypes import POINTER, c_int32, string_at
from typing import Any, Callable, Mapping

from . import _interface as c
from ._interface import Consent, Decision, TlsVersion
from ._library import (check, decode, encode, library, milliseconds, returned, sized,
                       terminated)


@dataclasses.dataclass(frozen=True)
class Request:
    """What a transport of the host's own sends."""

    method: str  # "GET" or "POST"
    url: str
    headers: list[tuple[str, str]]
    body: bytes


@dataclasses.dataclass(frozen=True)
class Response:
    """What the server returned."""

    status: int
    body: bytes = b""
    retry_after: float = 0  # how long the server asks to wait, in seconds


@dataclasses.dataclass(frozen=True)
class TransportOptions:
    """How requests travel. None is the default; durations are in seconds, and inf is no limit."""

    authority_file: str | None = None  # certificate authorities (PEM) instead of the system's
    authority_folder: str | None = None  # the same, with hashed names
    client_certificate: str | None = None
    client_key: str | None = None  # None: in the file of the certificate
    client_key_password: str | None = dataclasses.field(default=None, repr=False)
    minimum_tls_version: TlsVersion = TlsVersion.TLS_SYSTEM_DEFAULT
    proxy: str | None = None  # "" is no proxy, None is that of the environment
    no_proxy: str | None = None
    timeout: float | None = None  # the whole exchange; default 2; inf needs an idle_timeout
    connect_timeout: float | None = None
    idle_timeout: float | None = None
    headers: Mapping[str, str] = dataclasses.field(default_factory=dict)
    compress_requests: bool = False
    # The host's own transport. It may run on any thread. An exception is a failed request.
    transport: Callable[[Request], Response] | None = None

    def _structure(self) -> c.TransportOptions:
        texts = {name: terminated(getattr(self, name)) for name in (
            "authority_file", "authority_folder", "client_certificate", "client_key",
            "client_key_password", "proxy", "no_proxy")}
        return sized(
            c.TransportOptions, **texts, minimum_tls_version=self.minimum_tls_version,
            timeout_ms=milliseconds(self.timeout),
            connect_timeout_ms=milliseconds(self.connect_timeout),
            idle_timeout_ms=milliseconds(self.idle_timeout),
            headers=_pairs(self.headers), header_count=len(self.headers),
            compress_requests=self.compress_requests,
            transport=_kept(c.Transport, self.transport and self._exchange))

    def _exchange(self, user: None, request: Any, response: int) -> None:
        try:
            assert self.transport is not None
            given = request.contents
            headers = [(decode(pair.name), decode(pair.value))
                       for pair in given.headers[:given.header_count]]
            body = string_at(given.body, given.body_length)
            result = self.transport(Request(decode(given.method), decode(given.url), headers, body))
            check(library.zt_response_set(response, result.status, result.body, len(result.body),
                                          round(result.retry_after)))
        except BaseException as error:
            text = f"{type(error).__name__}: {error}".replace("\0", "")
            library.zt_response_fail(response, text.encode("utf-8", "backslashreplace"))


# The callbacks that a thread of the library may call until the process ends.
kept_callbacks: list[object] = []


def _kept(kind: Any, function: Callable[..., Any] | None) -> Any:
    if not function:
        return kind()
    kept_callbacks.append(kind(function))
    return kept_callbacks[-1]


def _pairs(texts: Mapping[str, str]) -> Any:
    pairs = [c.Pair(terminated(name), terminated(value)) for name, value in texts.items()]
    return (c.Pair * len(pairs))(*pairs)


def pointer_to(options: TransportOptions | None) -> Any:
    return POINTER(c.TransportOptions)(options._structure()) if options else None


def set_transport(options: TransportOptions | None) -> None:
    """For all reports that are created from now on. None: the defaults."""
    check(library.zt_host_set_transport(pointer_to(options)))


def set_host_info(**info: str) -> None:
    """Who the host is: CFBundleName, CFBundleShortVersionString and CFBundleVersion. Call it once,
    before the first report: the name determines the folder of the saved reports."""
    check(library.zt_host_set_info(_pairs(info), len(info)))


def close_connections() -> None:
    """Closes the connections that the calling thread keeps for the next report."""
    check(library.zt_host_close_connections())


def set_value_escaping(is_on: bool) -> None:
    """Whether texts are escaped so that every report is well-formed XML. Off at first."""
    check(library.zt_host_set_value_escaping(is_on))


def set_broadcast_enabled(is_enabled: bool) -> None:
    """Whether reports are broadcast on the session bus. On at first."""
    check(library.zt_host_set_broadcast_enabled(is_enabled))


def set_consent(consent: Consent) -> None:
    """Keeps what the user has said for this host. Once revoked, nothing is examined, sent, saved
    or broadcast."""
    check(library.zt_host_set_consent(consent))


def consent() -> Consent:
    """A file that cannot be read or understood is a revocation."""
    return Consent(returned(c_int32, library.zt_host_consent).value)


def set_value_filter(decide: Callable[[str, str, str], str | bytes | None] | None) -> None:
    """`decide(pool_type, name, value)` returns the value for a report, or None to drop it.

    It runs on the thread that writes the report; `pool_type` is empty for the values of the report
    itself. A value is dropped if it raises an exception, which goes to sys.excepthook.
    """
    def call(user: None, pool: bytes, name: bytes, value: int, length: int, result: int) -> int:
        return _decide(result, decide, decode(pool), decode(name), string_at(value, length))

    check(library.zt_host_set_value_filter(_kept(c.ValueFilter, decide and call), None))


def set_request_hook(decide: Callable[[str], str | bytes | None] | None) -> None:
    """`decide(request)` returns the request to broadcast, send or save, or None to drop it.

    It runs on the thread that delivers the request, which is dropped if it raises an exception.
    """
    def call(user: None, request: int, length: int, result: int) -> int:
        return _decide(result, decide, string_at(request, length))

    check(library.zt_host_set_request_hook(_kept(c.RequestHook, decide and call), None))


def _decide(result: int, decide: Any, *arguments: Any) -> int:
    *names, text = arguments
    try:
        decided = encode(decide(*names, decode(text)))
        if decided is None:
            return Decision.DROP
        if decided == text:
            return Decision.KEEP
        check(library.zt_replacement_set_n(result, decided, len(decided)))
        return Decision.REPLACE
    except BaseException:
        sys.excepthook(*sys.exc_info())
        return Decision.DROP


_LEVELS = (logging.DEBUG, logging.INFO, logging.WARNING, logging.ERROR)


def log_to(logger: logging.Logger | None) -> None:
    """Sends the log to the children of a logger that have the names of the library's modules, from
    any thread. None turns it off, as it is at first."""
    def log(user: None, level: int, module: bytes, message: bytes) -> None:
        assert logger is not None
        logger.getChild(decode(module)).log(_LEVELS[min(level, 3)], "%s", decode(message))

    check(library.zt_host_set_log_handler(_kept(c.LogHandler, log if logger else None), None))
