# SPDX-License-Identifier: Apache-2.0
"""The declarations of ztportal.h. Made by python/generate.py; do not edit."""

from ctypes import (CFUNCTYPE, POINTER, Structure, c_bool, c_char_p, c_float, c_int, c_int32,
                    c_int64, c_size_t, c_uint32, c_uint64, c_void_p)
from enum import IntEnum
from typing import Any


class OpenEnum(IntEnum):
    """A number that a later version of the library adds gets a member as well."""

    @classmethod
    def _missing_(cls, value: Any) -> IntEnum:
        member = int.__new__(cls, value)
        member._name_, member._value_ = f"UNKNOWN_{value}", value
        return member


class Status(OpenEnum):
    OK = 0
    NOT_ACCEPTED = 1
    BAD_ARGUMENT = 2
    UNKNOWN_KEY = 3
    WRONG_TYPE = 4
    OUT_OF_RANGE = 5
    BAD_JSON = 6
    NO_MEMORY = 7
    SYSTEM = 8
    FAILED = 9


class Consent(OpenEnum):
    UNSET = 0
    GIVEN = 1
    REVOKED = 2


class LogLevel(OpenEnum):
    DEBUG = 0
    INFO = 1
    WARNING = 2
    ERROR = 3


class Decision(OpenEnum):
    DROP = 0
    KEEP = 1
    REPLACE = 2


class TlsVersion(OpenEnum):
    TLS_SYSTEM_DEFAULT = 0
    TLS_1_2 = 1
    TLS_1_3 = 2


class Outcome(OpenEnum):
    NOT_SENT = 0
    ACCEPTED = 1
    REFUSED = 2
    INVALID_RESPONSE = 3
    UNREACHABLE = 4
    TIMED_OUT = 5
    OFFLINE = 6
    NO_TEST_URL = 7
    NO_CONSENT = 8
    DROPPED = 9
    UNREADABLE = 10


class DeliveryError(OpenEnum):
    NONE = 0
    LIBRARY = 1
    ADDRESS = 2
    NAME_LOOKUP = 3
    PROXY = 4
    CONNECTION = 5
    TLS = 6
    TIMEOUT = 7
    TRANSFER = 8
    REDIRECT = 9
    HTTP_STATUS = 10
    CONTENT = 11
    FILE = 12
    HOST = 13
    MEMORY = 14


class StorePart(OpenEnum):
    REPORTS = 0
    UNSENDABLE = 1


class SendEnd(OpenEnum):
    DONE = 0
    CANCELLED = 1
    BUDGET = 2
    OFFLINE = 3
    DEFERRED = 4
    BUSY = 5
    NO_STORE = 6
    NO_CONSENT = 7


class Pair(Structure):
    _fields_ = [("name", c_char_p), ("value", c_char_p)]


LogHandler = CFUNCTYPE(None, c_void_p, c_int32, c_char_p, c_char_p)


ValueFilter = CFUNCTYPE(c_int32, c_void_p, c_char_p, c_char_p, c_void_p, c_size_t, c_void_p)


RequestHook = CFUNCTYPE(c_int32, c_void_p, c_void_p, c_size_t, c_void_p)


class Request(Structure):
    _fields_ = [("size", c_size_t), ("method", c_char_p), ("url", c_char_p),
                ("headers", POINTER(Pair)), ("header_count", c_size_t), ("body", c_void_p),
                ("body_length", c_size_t)]


Transport = CFUNCTYPE(None, c_void_p, POINTER(Request), c_void_p)


class TransportOptions(Structure):
    _fields_ = [("size", c_size_t), ("authority_file", c_char_p), ("authority_folder", c_char_p),
                ("client_certificate", c_char_p), ("client_key", c_char_p),
                ("client_key_password", c_char_p), ("minimum_tls_version", c_int32),
                ("proxy", c_char_p), ("no_proxy", c_char_p), ("timeout_ms", c_int64),
                ("connect_timeout_ms", c_int64), ("idle_timeout_ms", c_int64),
                ("headers", POINTER(Pair)), ("header_count", c_size_t),
                ("compress_requests", c_bool), ("transport", Transport),
                ("transport_user", c_void_p)]


class Delivery(Structure):
    _fields_ = [("size", c_size_t), ("outcome", c_int32), ("error", c_int32),
                ("http_status", c_int32), ("save_error_number", c_int32), ("message", c_char_p),
                ("url", c_char_p), ("saved_to", c_char_p), ("save_error", c_char_p),
                ("request_bytes", c_uint64), ("response_bytes", c_uint64), ("lookup_us", c_int64),
                ("connect_us", c_int64), ("tls_us", c_int64), ("response_us", c_int64),
                ("total_us", c_int64), ("retry_after_s", c_int64)]


class SavedReport(Structure):
    _fields_ = [("size", c_size_t), ("path", c_char_p), ("report_id", c_char_p),
                ("bytes", c_uint64), ("time", c_int64)]


SavedReportCallback = CFUNCTYPE(c_bool, c_void_p, POINTER(SavedReport))


ReceiptCallback = CFUNCTYPE(None, c_void_p, POINTER(SavedReport), POINTER(Delivery))


IsCancelled = CFUNCTYPE(c_bool, c_void_p)


class SendOptions(Structure):
    _fields_ = [("size", c_size_t), ("configuration_url", c_char_p),
                ("transport", POINTER(TransportOptions)), ("attempts", c_int32),
                ("retry_delay_ms", c_int64), ("longest_delay_ms", c_int64),
                ("on_receipt", ReceiptCallback), ("user", c_void_p), ("retry", c_bool),
                ("budget_ms", c_int64), ("is_cancelled", IsCancelled), ("kept_receipts", c_size_t)]


class SendResult(Structure):
    _fields_ = [("size", c_size_t), ("end", c_int32), ("accepted", c_size_t),
                ("set_aside", c_size_t), ("removed", c_size_t), ("left", c_size_t),
                ("retry_after_s", c_int64)]


# The result and the parameters of each function.
FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "zt_last_error": (c_char_p,),
    "zt_version": (c_char_p,),
    "zt_schema": (c_char_p,),
    "zt_host_set_info": (c_int32, POINTER(Pair), c_size_t),
    "zt_host_close_connections": (c_int32,),
    "zt_host_set_value_escaping": (c_int32, c_bool),
    "zt_host_set_broadcast_enabled": (c_int32, c_bool),
    "zt_host_set_consent": (c_int32, c_int32),
    "zt_host_consent": (c_int32, POINTER(c_int32)),
    "zt_host_set_log_handler": (c_int32, LogHandler, c_void_p),
    "zt_replacement_set_n": (c_int32, c_void_p, c_char_p, c_size_t),
    "zt_host_set_value_filter": (c_int32, ValueFilter, c_void_p),
    "zt_host_set_request_hook": (c_int32, RequestHook, c_void_p),
    "zt_response_set": (c_int32, c_void_p, c_int32, c_char_p, c_size_t, c_int64),
    "zt_response_fail": (c_int32, c_void_p, c_char_p),
    "zt_host_set_transport": (c_int32, POINTER(TransportOptions)),
    "zt_report_create": (c_int32, c_char_p, c_char_p, c_char_p, c_char_p, c_uint32,
        POINTER(c_void_p)),
    "zt_report_from_json": (c_int32, c_char_p, c_size_t, c_uint32, POINTER(c_void_p)),
    "zt_report_destroy": (None, c_void_p),
    "zt_report_set_transport": (c_int32, c_void_p, POINTER(TransportOptions)),
    "zt_report_get": (c_int32, c_void_p, c_char_p, POINTER(c_char_p)),
    "zt_report_render": (c_int32, c_void_p, c_bool, POINTER(c_char_p), POINTER(c_size_t)),
    "zt_report_send": (c_int32, c_void_p),
    "zt_report_save": (c_int32, c_void_p, c_char_p),
    "zt_report_resend": (c_int32, c_void_p, c_char_p),
    "zt_report_last_delivery": (c_int32, c_void_p, POINTER(POINTER(Delivery))),
    "zt_report_add_pool": (c_int32, c_void_p, c_char_p, c_int64, POINTER(c_void_p)),
    "zt_report_add_inventory": (c_int32, c_void_p, c_int64, POINTER(c_void_p)),
    "zt_pool_add_record": (c_int32, c_void_p, c_char_p, c_int64, POINTER(c_void_p)),
    "zt_pool_fields": (c_int32, c_void_p, POINTER(c_void_p)),
    "zt_pool_set_string": (c_int32, c_void_p, c_char_p, c_char_p),
    "zt_pool_set_string_n": (c_int32, c_void_p, c_char_p, c_char_p, c_size_t),
    "zt_pool_set_integer": (c_int32, c_void_p, c_char_p, c_int64),
    "zt_pool_set_float": (c_int32, c_void_p, c_char_p, c_float),
    "zt_pool_set_boolean": (c_int32, c_void_p, c_char_p, c_bool),
    "zt_pool_set_date": (c_int32, c_void_p, c_char_p, c_int64),
    "zt_pool_set_null": (c_int32, c_void_p, c_char_p),
    "zt_pool_get_string": (c_int32, c_void_p, c_char_p, POINTER(c_char_p), POINTER(c_size_t)),
    "zt_pool_get_integer": (c_int32, c_void_p, c_char_p, POINTER(c_int64)),
    "zt_run_create": (c_int32, c_char_p, c_char_p, POINTER(c_void_p)),
    "zt_run_start": (c_int32, c_void_p, c_char_p, POINTER(c_void_p)),
    "zt_run_stop": (c_int32, c_void_p, c_char_p),
    "zt_run_set_string": (c_int32, c_void_p, c_char_p, c_char_p),
    "zt_run_set_boolean": (c_int32, c_void_p, c_char_p, c_bool),
    "zt_store_create": (c_int32, POINTER(c_void_p)),
    "zt_store_destroy": (None, c_void_p),
    "zt_store_list": (c_int32, c_void_p, c_int32, SavedReportCallback, c_void_p),
    "zt_store_check": (c_int32, c_void_p, c_char_p, POINTER(c_char_p), POINTER(c_char_p)),
    "zt_store_remove": (c_int32, c_void_p, c_char_p),
    "zt_store_move": (c_int32, c_void_p, c_char_p, c_int32),
    "zt_store_remove_all": (c_int32, c_void_p, POINTER(c_size_t)),
    "zt_store_set_limits": (c_int32, c_size_t, c_uint64, c_int64),
    "zt_store_send": (c_int32, c_void_p, POINTER(SendOptions), POINTER(POINTER(SendResult))),
    "zt_sender_create": (c_int32, POINTER(SendOptions), POINTER(c_void_p)),
    "zt_sender_destroy": (None, c_void_p),
    "zt_sender_send": (c_int32, c_void_p, c_void_p),
    "zt_sender_flush": (c_int32, c_void_p, c_int64, POINTER(c_size_t)),
    "zt_sender_stop": (c_int32, c_void_p, c_int64, POINTER(c_size_t)),
    "zt_sender_descriptor": (c_int32, c_void_p, POINTER(c_int)),
    "zt_sender_receipts": (c_int32, c_void_p, ReceiptCallback, c_void_p),
}
