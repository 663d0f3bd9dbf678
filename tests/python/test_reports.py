# SPDX-License-Identifier: Apache-2.0
"""What a report contains: values, records, generic fields, dates, bytes."""

import datetime
import gc
import json
import math
import re
import weakref

import pytest

import ztportal

UTC = datetime.timezone.utc
BERLIN_WINTER = datetime.timezone(datetime.timedelta(hours=1))


@pytest.fixture
def report():
    return ztportal.Report(customerId="Kelvane", applicationId="{A}", applicationVersion="2.1",
                           offline=True)


def field(text, name):
    """The value of a field in plain XML."""
    return re.search(rf"<Name>{name}</Name>\s*<Value>(.*?)</Value>", text, re.DOTALL)[1]


def test_report_knows_its_values(report):
    assert (report.customerId, report.applicationId, report.applicationVersion) == (
        "Kelvane", "{A}", "2.1")
    assert re.fullmatch(r"\{[0-9A-F-]{36}\}", report.reportId)
    assert report.serverVersion is None and not report.online


@pytest.mark.parametrize("kind, key, value", [
    (ztportal.ExecutionPool, "startPoint", "setup"),
    (ztportal.ExecutionPool, "startPoint", None),
    (ztportal.ExecutionPool, "startPoint", "Grüße 👋"),
    (ztportal.ExecutionPool, "cancelled", True),
    (ztportal.ExecutionPool, "endTime", datetime.datetime(2026, 11, 21, 12, 0, 1, 5000, UTC)),
    (ztportal.ExecutionPool, "endTime", None),
    (ztportal.ConnectionManagerPool, "sentSMS", -(2**31)),
    (ztportal.ConnectionManagerPool, "mobileVolumeHome", 2**63 - 1),
    (ztportal.ComputerSystemPool, "osLanguage", 99),
    (ztportal.ComputerSystemPool, "userLanguage", ztportal.Language.GERMAN),
    (ztportal.GenericPool, "poolType", "CUSTOM"),
])
def test_value_can_be_set_and_read(report, kind, key, value):
    pool = report.add_pool(kind)
    setattr(pool, key, value)
    assert getattr(pool, key) == value
    assert getattr(report.add_pool(kind, **{key: value}), key) == value


@pytest.mark.parametrize("kind, key, value, status", [
    (ztportal.ConnectionManagerPool, "sentSMS", 2**31, "OUT_OF_RANGE"),
    (ztportal.ConnectionManagerPool, "sentSMS", 2**64, "OUT_OF_RANGE"),
    (ztportal.ExecutionPool, "cancelled", 256, "OUT_OF_RANGE"),
    (ztportal.ComputerSystemPool, "osLanguage", "KLINGON", None),
])
def test_wrong_value_is_refused_and_changes_nothing(report, kind, key, value, status):
    pool = report.add_pool(kind)
    before = getattr(pool, key)
    with pytest.raises(ztportal.Error) as caught:
        setattr(pool, key, value)
    assert str(caught.value)
    assert status is None or caught.value.status is ztportal.Status[status]
    assert getattr(pool, key) == before


@pytest.mark.parametrize("key, value", [
    ("startPoint", 1), ("startPoint", b"".join), ("endTime", "2026-11-21"), ("endTime", 0),
    ("cancelled", "yes"), ("cancelled", None)])
def test_wrong_type_is_a_type_error(report, key, value):
    with pytest.raises(TypeError):
        setattr(report.add_pool(ztportal.ExecutionPool), key, value)


def test_unknown_key_is_an_attribute_error(report):
    with pytest.raises(AttributeError):
        report.add_pool(ztportal.ExecutionPool).startPiont = "setup"
    with pytest.raises(AttributeError):
        report.add_pool(ztportal.ExecutionPool, startPiont="setup")


def test_records_have_keys(report):
    execution = report.add_pool(ztportal.ExecutionPool)
    step = execution.add_step("Copy", stepType="INFO", stepMessageCode="0")
    assert step.stepType is ztportal.StepType.INFO
    step.stepType = ztportal.StepType.ERROR
    computer = report.add_pool(ztportal.ComputerSystemPool)
    computer.add_browser("Firefox", appVersion="1", isStandard=True)
    computer.add_email_client(appName="Mail")
    computer.add_firewall_app("Wall", appCompany="Kelvane")
    computer.add_antivirus_app("Guard", isUpToDate=True)
    report.add_pool(ztportal.ConnectionManagerPool).add_registered_roam_network("net")
    report.add_pool(ztportal.DiagnosePool).add_step("Look", diagnoseType="RIS")
    text = report.render(soap=False)
    for name, value in {"STEP_NAME": "Copy", "STEP_TYPE": "ERROR", "BROWSER_NAME": "Firefox",
                        "EMAILCLIENT_NAME": "Mail", "FIREWALLAPP_COMPANY": "Kelvane",
                        "IS_UPTODATE": "TRUE", "DIAGNOSE_DIAGNOSETYPE": "RIS"}.items():
        assert field(text, name) == value


def test_fields_are_made_from_python_values(report):
    pool = report.add_pool(ztportal.GenericPool, poolType="CUSTOM")
    pool.add_fields({"text": "Home", "bytes": b"raw", "yes": True, "number": -7, "half": 0.5,
                     "nothing": None, "disks": {"sda": {"size": 512}, "list": [1, "two", [3.5]]}})
    text = report.render(soap=False)
    assert re.findall(r'FieldType="(\w+)"', text) == [
        "string", "string", "boolean", "integer", "float", "string", "array", "array", "integer",
        "array", "integer", "string", "array", "float"]
    assert field(text, "text") == "Home" and field(text, "yes") == "TRUE"
    assert field(text, "number") == "-7"
    assert field(text, "nothing") == "(null)"
    for name in ("disks", "sda", "size", "list", "0", "1", "2"):
        assert f"<Name>{name}<" in text


@pytest.mark.parametrize("value, error", [
    (2**31, ztportal.Error), (1e39, ztportal.Error), (object(), TypeError),
    (datetime.datetime.now(), TypeError), ([{"deep": 1 << 40}], ztportal.Error),
    ("\ud800", UnicodeEncodeError)])
def test_wrong_field_adds_nothing(report, value, error):
    pool = report.add_pool(ztportal.GenericPool, poolType="CUSTOM")
    empty = report.render()
    with pytest.raises(error):
        pool.add_fields({"good": 1, "array": [1, value], "bad": value})
    assert report.render() == empty


def test_a_list_that_contains_itself_adds_nothing(report):
    pool = report.add_pool(ztportal.GenericPool, poolType="CUSTOM")
    empty = report.render()
    endless = []
    endless.append(endless)
    with pytest.raises(RecursionError):
        pool.add_field("endless", endless)
    assert report.render() == empty


@pytest.mark.parametrize("value", [math.inf, -math.inf, math.nan, 3.4028234663852886e38, 1e-50])
def test_every_float_of_32_bits_is_a_field(report, value):
    report.add_pool(ztportal.GenericPool, poolType="CUSTOM").add_field("number", value)
    assert field(report.render(soap=False), "number")


@pytest.mark.parametrize("given, kept", [
    (datetime.datetime.min.replace(tzinfo=UTC), None),
    (datetime.datetime.max.replace(tzinfo=UTC),
     datetime.datetime(9999, 12, 31, 23, 59, 59, 999000, UTC)),
    (datetime.datetime(1969, 12, 31, 23, 59, 59, 999999, UTC),
     datetime.datetime(1969, 12, 31, 23, 59, 59, 999000, UTC)),
    (datetime.datetime(2026, 1, 1, 1, 0, 0, 123999, BERLIN_WINTER),
     datetime.datetime(2026, 1, 1, 0, 0, 0, 123000, UTC)),
])
def test_date_is_kept_in_milliseconds(report, given, kept):
    pool = report.add_pool(ztportal.ExecutionPool, startTime=given)
    assert pool.startTime == (given if kept is None else kept)
    assert pool.startTime.tzinfo is UTC


def test_naive_date_is_local_time(run):
    code = """import datetime, ztportal
report = ztportal.Report(customerId="K", applicationId="A", applicationVersion="1", offline=True)
for month, fold in (1, 0), (7, 0), (10, 0), (10, 1):
    date = datetime.datetime(2026, month, 25, 2, 30, fold=fold)
    print(report.add_pool(ztportal.ExecutionPool, startTime=date).startTime.hour)"""
    assert run(code, TZ="Europe/Berlin").split() == ["1", "0", "0", "1"]


def test_time_stamp_is_now_unless_given(report):
    before = datetime.datetime.now(UTC)
    pool = report.add_pool(ztportal.ExecutionPool)
    step = pool.add_step("Copy")
    after = datetime.datetime.now(UTC)
    cut = datetime.timedelta(milliseconds=1)
    assert before - cut <= pool.startTime <= step.timeStamp <= after
    old = datetime.datetime(2020, 1, 1, tzinfo=UTC)
    assert report.add_pool(ztportal.ExecutionPool, old).startTime == old
    assert pool.add_step("Copy", timeStamp=None).timeStamp is None


@pytest.mark.parametrize("value, read", [
    (b"\xe9t\xe9", "\udce9t\udce9"), ("caf\udce9", "caf\udce9"), ("", ""), ("a\nb", "a\nb")])
def test_bytes_that_are_not_utf_8_are_surrogates(report, value, read):
    pool = report.add_pool(ztportal.ExecutionPool, startPoint=value)
    assert pool.startPoint == read
    assert f"<Value>{read}</Value>" in report.render(soap=False)


def test_lone_surrogate_is_no_text(report):
    pool = report.add_pool(ztportal.ExecutionPool, startPoint="before")
    with pytest.raises(UnicodeEncodeError):
        pool.startPoint = "\ud800"
    assert pool.startPoint == "before"


def test_zero_byte_is_kept_in_values_and_refused_elsewhere(report):
    report.add_pool(ztportal.ExecutionPool, startPoint="a\0b").add_field("name", "c\0d")
    text = report.render(soap=False)
    assert "<Value>a\0b</Value>" in text and "<Value>c\0d</Value>" in text
    with pytest.raises(ValueError):
        ztportal.Report(customerId="Kel\0vane", applicationId="", applicationVersion="",
                        offline=True)


def test_description_as_text_and_as_object():
    description = {"customerId": "Kelvane", "pools": [
        {"kind": "execution", "startTime": datetime.datetime(2026, 11, 21, 12, tzinfo=UTC),
         "startPoint": "setup", "fields": [{"name": "EDITION", "type": "string", "value": "é"}]}]}
    text = json.dumps(description, default=datetime.datetime.isoformat)
    rendered = [ztportal.Report.from_json(one, offline=True).render(soap=False)
                for one in (description, text, text.encode())]
    for one in rendered:
        assert field(one, "START_POINT") == "setup" and field(one, "EDITION") == "é"


@pytest.mark.parametrize("text", ["", "[]", "{", '{"pool": []}', b"\xff", '{"a": NaN}'])
def test_wrong_description_is_an_error(text):
    with pytest.raises(ztportal.Error) as caught:
        ztportal.Report.from_json(text, offline=True)
    assert caught.value.status is ztportal.Status.BAD_JSON


def test_block_is_an_execution(report):
    with report as same:
        assert same is report
        report.execution.startPoint = "setup"
        report.execution.endPoint = "finish"
    text = report.render(soap=False)
    assert (field(text, "START_POINT"), field(text, "END_POINT")) == ("setup", "finish")
    assert field(text, "SUCCESSFULL") == "TRUE" and "<Name>STEP_NAME" not in text
    assert report.execution.endTime >= report.execution.startTime


class Unprintable(Exception):
    def __str__(self):
        raise ValueError


@pytest.mark.parametrize("error, name, message, is_cancelled", [
    (OSError(28, "No space left on device"), "OSError", "[Errno 28] No space left on device",
     False),
    (KeyboardInterrupt(), "KeyboardInterrupt", "", True),
    (SystemExit(3), "SystemExit", "3", False),
    (ValueError("\ud800"), "ValueError", "\\ud800", False),
    (Unprintable(), "Unprintable", "the exception has no text", False)])
def test_exception_becomes_an_error_step_and_goes_on(report, error, name, message, is_cancelled):
    with pytest.raises(type(error)):
        with report:
            raise error
    text = report.render(soap=False)
    assert (field(text, "STEP_NAME"), field(text, "STEP_TYPE")) == (name, "ERROR")
    assert field(text, "STEP_MESSAGESTRING") == message
    assert field(text, "END_ERRORMESSAGESTRING") == message
    assert not report.execution.successfull
    assert report.execution.cancelled is is_cancelled


@pytest.mark.parametrize("code", [None, 0])
def test_normal_exit_is_no_error(report, code):
    with pytest.raises(SystemExit):
        with report:
            raise SystemExit(code)
    assert report.execution.successfull and "STEP_NAME" not in report.render()


def test_report_that_was_not_started_has_no_execution(report):
    with pytest.raises(RuntimeError):
        report.execution


def test_pool_and_record_outlive_the_name_of_the_report(report):
    """Nothing is destroyed while an object that belongs to it is in use, whatever goes first."""
    owner = weakref.ref(report._owner)
    step = report.add_pool(ztportal.ExecutionPool).add_step("Copy")
    other = ztportal.Report.from_json({"pools": [{"kind": "execution"}]}, offline=True)
    del report
    gc.collect()
    step.stepName = "Move"
    assert step.stepName == "Move" and owner() is not None
    del other, step
