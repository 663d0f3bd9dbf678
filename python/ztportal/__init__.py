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
from .pools import (AntivirusApp, Browser, ComputerSystemPool, ConnectionManagerPool,
                    DeinstallationPool, DiagnosePool, DiagnoseStep, DiagnoseType, EmailClient,
                    ExecutionPool, ExecutionStep, FirewallApp, GenericPool, InitializationPool,
                    Language, StepType)
from .receipts import Receipt, SavedReport, SendResult
from .report import Report, Run
from .sender import BackgroundSender
from .store import Store

__version__ = _decode(_library.zt_version())
__all__ = ["AntivirusApp", "BackgroundSender", "Browser", "ComputerSystemPool",
           "ConnectionManagerPool", "Consent", "DeinstallationPool", "DeliveryError",
           "DiagnosePool", "DiagnoseStep", "DiagnoseType", "EmailClient", "Error", "ExecutionPool",
           "ExecutionStep", "FieldValue", "FirewallApp", "GenericPool", "InitializationPool",
           "Language", "Outcome", "Pool", "Receipt", "Record", "Report", "Request", "Response",
           "Run", "SavedReport", "SendEnd", "SendResult", "Status", "StepType", "Store",
           "StorePart", "TlsVersion", "TransportOptions", "Value", "close_connections", "consent",
           "log_to", "set_broadcast_enabled", "set_consent", "set_host_info",
           "set_request_hook", "set_transport", "set_value_escaping", "set_value_filter"]
