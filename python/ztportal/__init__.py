# SPDX-License-Identifier: Apache-2.0
"""Reports the runs of a desktop application to its customer's reporting server.

Attributes and parameters that are values of a report have the names of the JSON description, such
as `startPoint`; everything else is named as usual in Python.
"""

from ._interface import (Consent, DeliveryError, Outcome, SendEnd, Status, StorePart,
                         TlsVersion)
from ._library import Error, decode as _decode, library as _library
from .fields import FieldValue, Pool, Record, Value
from .host import (Request, Response, TransportOptions, close_connections,
                   consent, log_to, set_broadcast_enabled, set_consent, set_host_info,
                   set_request_hook, set_transport, set_value_escaping, set_value_filter)
from . import pools as _pools
from .pools import *
from .receipts import Receipt, SavedReport, SendResult
from .report import Report, Run
from .store import BackgroundSender, Store

__version__ = _decode(_library.zt_version())
__all__ = ["BackgroundSender", "Consent", "DeliveryError", "Error", "FieldValue", "Outcome", "Pool",
           "Receipt", "Record", "Report", "Request", "Response", "Run", "SavedReport", "SendEnd",
           "SendResult", "Status", "Store", "StorePart", "TlsVersion", "TransportOptions", "Value",
           "close_connections", "consent", "log_to", "set_broadcast_enabled", "set_consent",
           "set_host_info", "set_request_hook", "set_transport", "set_value_escaping",
           "set_value_filter"]
__all__ += _pools.__all__
