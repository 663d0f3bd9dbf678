# SPDX-License-Identifier: Apache-2.0
"""Reports that are sent to a real inbox, and what hosts see and decide on the way."""

import asyncio
import datetime
import logging
import math
import pathlib
import select
import sys
import threading

import pytest

import ztportal

UTC = datetime.timezone.utc
FAST = {"retry_delay": 0.001, "longest_delay": 0.001}


@pytest.fixture
def uncaught(monkeypatch):
    """The types of the exceptions that the library could not pass on."""
    caught = []
    monkeypatch.setattr(sys, "excepthook", lambda kind, error, trace: caught.append(kind))
    return caught


@pytest.fixture(autouse=True)
def defaults():
    """What a test sets for the host ends with it."""
    yield
    ztportal.log_to(None)
    ztportal.set_value_filter(None)
    ztportal.set_request_hook(None)
    ztportal.set_value_escaping(False)
    ztportal.set_broadcast_enabled(True)


@pytest.fixture
def refused(create, inbox):
    """A report in the store."""
    inbox.behave(answer="error:503")
    report = create()
    report.start("setup")
    assert not report.send().accepted
    inbox.behave(answer="accept")
    return report


def test_report_is_accepted(create, inbox):
    with create() as report:
        report.execution.add_step("Copy")
    receipt = report.send()
    assert receipt.accepted and receipt.outcome is ztportal.Outcome.ACCEPTED
    assert receipt.http_status == 200 and receipt.error is ztportal.DeliveryError.NONE
    assert receipt.saved_to is None and receipt.save_error == ""
    assert receipt.url.startswith(inbox.url) and receipt.request_bytes == len(report.render())
    assert 0 < receipt.response <= receipt.total < 10
    assert report.online and report.serverVersion and report.reportUrl.startswith(inbox.url)
    assert report.last_delivery == receipt
    assert inbox.ids() == [report.reportId]


def test_report_that_is_not_accepted_is_no_exception_and_is_in_the_store(refused, data_folder):
    receipt = refused.last_delivery
    assert receipt.outcome is ztportal.Outcome.REFUSED and receipt.http_status == 503
    assert receipt.saved_to == pathlib.Path(refused.file)
    store = ztportal.Store()
    [saved] = store.list()
    assert saved.path.parent == data_folder / "Kelvane" / "PythonTest" / "reports"
    assert saved.path == receipt.saved_to and saved.report_id == refused.reportId
    assert saved.bytes == saved.path.stat().st_size
    assert abs(saved.time - datetime.datetime.now(UTC)) < datetime.timedelta(minutes=5)
    assert store.check(saved.path) == ("Kelvane", "")


def test_store_moves_and_removes_reports(refused):
    store = ztportal.Store()
    [saved] = store.list()
    store.move(saved.path, ztportal.StorePart.UNSENDABLE)
    [aside] = store.list(ztportal.StorePart.UNSENDABLE)
    store.move(aside.path, ztportal.StorePart.REPORTS)
    store.remove(saved.path)
    assert store.list() == []
    with pytest.raises(ztportal.Error) as caught:
        store.remove(saved.path)
    assert caught.value.status is ztportal.Status.SYSTEM
    refused.save()
    assert store.remove_all() == 1
    ztportal.Store.set_limits(reports=500, age=90 * 86400)
    ztportal.Store.set_limits()


def test_store_sends_what_it_has(refused, inbox):
    seen = []
    result = ztportal.Store().send(
        inbox.configuration, progress=lambda report, receipt: seen.append((report, receipt)))
    assert result == ztportal.SendResult(ztportal.SendEnd.DONE, accepted=1, set_aside=0, removed=0,
                                         left=0, retry_after=0)
    [(report, receipt)] = seen
    assert report.report_id == refused.reportId and receipt.accepted
    assert set(inbox.ids()) == {refused.reportId}


def test_exception_in_progress_ends_sending_and_goes_on(refused, inbox):
    ztportal.Store().remove_all()
    for _ in range(2):
        other = ztportal.Report(customerId="K", applicationId="", applicationVersion="",
                                offline=True)
        other.start()
        other.save()

    def fail(report, receipt):
        raise ZeroDivisionError
    with pytest.raises(ZeroDivisionError):
        ztportal.Store().send(inbox.configuration, progress=fail)
    assert len(ztportal.Store().list()) == 1
    result = ztportal.Store().send(inbox.configuration, progress=lambda *_: False)
    assert result.left == 0


def test_wrong_options_are_an_error():
    with pytest.raises(ValueError):
        ztportal.Store().send("http://127.0.0.1:1/", retry_delay=-1)
    with pytest.raises(ztportal.Error) as caught:
        ztportal.Store().send("http://127.0.0.1:1/", attempts=-2)
    assert caught.value.status is ztportal.Status.BAD_ARGUMENT
    with pytest.raises(ztportal.Error) as caught:
        ztportal.set_transport(ztportal.TransportOptions(authority_file="/nowhere"))
    assert "/nowhere" in str(caught.value)


def test_sending_with_a_budget_and_without_a_server_ends():
    report = ztportal.Report(customerId="K", applicationId="", applicationVersion="", offline=True)
    report.start()
    report.save()
    result = ztportal.Store().send("http://127.0.0.1:1/", retry=True, budget=0.01, **FAST)
    assert result.end in (ztportal.SendEnd.BUDGET, ztportal.SendEnd.OFFLINE) and result.left == 1


def test_keyboard_interrupt_ends_a_long_sending(run, data_folder):
    """The wait is in C, where nothing would look at the signal."""
    code = """import os, signal, threading, ztportal
report = ztportal.Report(customerId="K", applicationId="", applicationVersion="", offline=True)
report.start()
report.save()
threading.Timer(0.2, os.kill, [os.getpid(), signal.SIGINT]).start()
try:
    ztportal.Store().send("http://127.0.0.1:1/", retry=True, retry_delay=600, longest_delay=600)
except KeyboardInterrupt:
    print("interrupted")"""
    assert run(code) == "interrupted\n"


def test_written_and_resent(refused, inbox, tmp_path):
    refused.write(tmp_path / "report.xml")
    assert (tmp_path / "report.xml").read_text().splitlines() == refused.render().splitlines()
    assert refused.resend(refused.file).accepted
    with pytest.raises(ztportal.Error) as caught:
        refused.write(tmp_path)
    assert caught.value.status is ztportal.Status.SYSTEM


def test_consent_is_kept(create):
    assert ztportal.consent() is ztportal.Consent.UNSET
    report = create()
    report.start()
    ztportal.set_consent(ztportal.Consent.REVOKED)
    receipt = report.send()
    assert receipt.outcome is ztportal.Outcome.NO_CONSENT and receipt.saved_to is None
    ztportal.set_consent(ztportal.Consent.GIVEN)
    assert report.send().accepted and ztportal.consent() is ztportal.Consent.GIVEN


def test_host_info(data_folder):
    ztportal.set_host_info(CFBundleName="Other", CFBundleVersion="7")
    ztportal.Store()
    assert (data_folder / "Kelvane" / "Other" / "reports").is_dir()
    ztportal.set_broadcast_enabled(False)
    ztportal.close_connections()


def test_escaping(create):
    ztportal.set_value_escaping(True)
    report = create()
    report.start("a < b")
    assert "a &lt; b" in report.render()


def test_value_filter_keeps_replaces_and_drops(create):
    seen = []

    def decide(pool_type, name, value):
        seen.append((pool_type, name))
        if name == "SECRET":
            return None
        return value.replace("/home/ada", "~")
    ztportal.set_value_filter(decide)
    report = create()
    report.start("/home/ada/caf\udce9").add_fields({"SECRET": "1", "OTHER": "2"})
    text = report.render()
    assert "SECRET" not in text and ">OTHER<" in text
    assert "~/caf\udce9" in text and "/home/ada" not in text
    assert ("EXECUTION", "START_POINT") in seen and ("", "MachineID") in seen


def test_failing_filter_drops_the_value(create, uncaught):
    def decide(pool_type, name, value):
        if name == "START_POINT":
            raise ZeroDivisionError
        return 7 if name == "END_POINT" else value
    ztportal.set_value_filter(decide)
    report = create()
    report.start("secret")
    text = report.render()
    assert "secret" not in text and "START_POINT" not in text and "END_POINT" not in text
    assert uncaught == [ZeroDivisionError, TypeError]


def test_request_hook_keeps_replaces_and_drops(create, inbox, uncaught):
    report = create()
    report.start("before")
    ztportal.set_request_hook(lambda request: request)
    assert report.send().accepted and "before" in inbox.newest()
    ztportal.set_request_hook(lambda request: request.replace("before", "after"))
    assert report.send().accepted and "after" in inbox.newest()
    ztportal.set_request_hook(lambda request: None)
    assert report.send().outcome is ztportal.Outcome.DROPPED
    ztportal.set_request_hook(lambda request: 1 / 0)
    assert report.send().outcome is ztportal.Outcome.DROPPED
    assert uncaught == [ZeroDivisionError]


def test_own_transport(create):
    requests = []

    def send(request):
        requests.append(request)
        if request.method == "GET":
            return ztportal.Response(200, b"<configuration><defSOAP>http://server/</defSOAP>"
                                          b"</configuration>")
        if b"<getVersionInfo" in request.body:
            return ztportal.Response(200, b"<versioninfo>9.1</versioninfo>")
        return ztportal.Response(503, retry_after=7)
    ztportal.set_transport(ztportal.TransportOptions(transport=send, headers={"X-Setup": "yes"}))
    report = create()
    assert report.serverVersion == "9.1"
    report.start()
    receipt = report.send()
    assert (receipt.http_status, receipt.retry_after) == (503, 7)
    assert requests[-1].url == "http://server/" and report.reportId.encode() in requests[-1].body
    assert ("X-Setup", "yes") in requests[-1].headers


def test_failing_transport_is_a_failed_request(create):
    report = create()

    def send(request):
        raise OSError("no carrier \ud800")
    report.set_transport(ztportal.TransportOptions(transport=send))
    report.start()
    receipt = report.send()
    assert receipt.error is ztportal.DeliveryError.HOST and "no carrier \\ud800" in receipt.message


def test_durations_of_options():
    from ztportal._library import milliseconds
    assert [milliseconds(value) for value in (None, 0, 0.0001, 2, 1.5, math.inf)] == [
        0, 1, 1, 2000, 1500, -1]
    options = ztportal.TransportOptions(timeout=1.5, client_key_password="secret")
    assert options._structure().timeout_ms == 1500 and "secret" not in repr(options)


def test_log_goes_to_logging(create, caplog):
    caplog.set_level(logging.DEBUG)
    ztportal.log_to(logging.getLogger("setup"))
    report = create(configurationUrl="http://127.0.0.1:1/")
    report.start()
    report.send()
    records = {(record.name, record.levelname) for record in caplog.records}
    assert ("setup.configuration", "WARNING") in records
    assert ("setup.store", "INFO") in records
    ztportal.log_to(None)
    caplog.clear()
    report.send()
    assert not caplog.records


def test_failing_log_handler_stops_nothing(create):
    class Failing(logging.Handler):
        def emit(self, record):
            raise ZeroDivisionError
    logger = logging.Logger("setup")
    logger.addHandler(Failing())
    ztportal.log_to(logger)
    report = create()
    report.start()
    assert report.send().accepted


def test_sender_sends_in_the_background(create, inbox, refused):
    with ztportal.BackgroundSender(inbox.configuration) as sender:
        reports = [create(configurationUrl="", offline=True) for _ in range(3)]
        for report in reports:
            report.start()
            sender.send(report)
        assert sender.flush(20) == 0
        assert select.select([sender], [], [], 0)[0]
        receipts = sender.receipts()
        assert {saved.report_id for saved, _ in receipts} == set(inbox.ids())
        assert len(receipts) == 4 and all(receipt.accepted for _, receipt in receipts)
        assert sender.receipts() == [] and not select.select([sender], [], [], 0)[0]


def test_stopped_sender_only_saves(create, inbox):
    sender = ztportal.BackgroundSender(inbox.configuration)
    assert sender.stop() == 0
    report = create()
    report.start()
    sender.send(report)
    assert len(ztportal.Store().list()) == 1 and inbox.ids() == []


def test_sender_that_cannot_save_is_an_error(create, inbox, data_folder):
    data_folder.write_text("in the way")
    with ztportal.BackgroundSender(inbox.configuration) as sender:
        report = create()
        report.start()
        with pytest.raises(ztportal.Error) as caught:
            sender.send(report)
    assert caught.value.status is ztportal.Status.SYSTEM


def test_receipts_in_an_event_loop(create, inbox):
    async def main():
        loop = asyncio.get_running_loop()
        done = loop.create_future()
        with ztportal.BackgroundSender(inbox.configuration) as sender:
            loop.add_reader(sender.fileno(), lambda: done.set_result(sender.receipts()))
            report = create(configurationUrl="", offline=True)
            report.start()
            sender.send(report)
            receipts = await asyncio.wait_for(done, 20)
            loop.remove_reader(sender.fileno())
        return receipts
    [(_, receipt)] = asyncio.run(main())
    assert receipt.accepted


def test_event_loop_goes_on_while_threads_deliver(create, inbox):
    """A call releases the interpreter's lock while it waits."""
    inbox.behave(answer="accept", slow=200)

    async def main():
        turns = 0
        reports = [create() for _ in range(3)]
        for report in reports:
            report.start()
        deliveries = asyncio.gather(*(asyncio.to_thread(report.send) for report in reports))
        while not deliveries.done():
            await asyncio.sleep(0.001)
            turns += 1
        return turns, await deliveries
    turns, receipts = asyncio.run(main())
    assert all(receipt.accepted for receipt in receipts) and turns > 10


def test_threads_take_turns_with_one_report(create, inbox):
    report = create()
    report.start()

    def work(number):
        for i in range(200):
            report.execution.startPoint = f"thread {number}"
            report.execution.add_step(f"{number} {i}", stepType="INFO").stepMessageCode = "0"
            report.execution.add_field(f"{number} {i}", [i, {"name": "value"}])
            if i % 50 == 0:
                report.render()
    threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    text = report.render()
    assert text.count("STEP_NAME") == 800 and report.send().accepted


def test_run_of_a_built_in_customer(inbox):
    with pytest.raises(ztportal.Error) as caught:
        ztportal.Run("Nobody")
    assert caught.value.status is ztportal.Status.UNKNOWN_KEY
    ztportal.set_transport(ztportal.TransportOptions(
        transport=lambda request: ztportal.Response(404)))
    with ztportal.Run("Kelvane") as run:
        run.execution.add_step("Copy")
        run.set_fact("EDITION", "Home")
        run.set_fact("DESKTOP_ICON", True)
    receipt = run.save()
    text = run.render()
    for word in ("COMPUTER_SYSTEM", "EDITION", "DESKTOP_ICON", ">Copy<"):
        assert word in text
    assert receipt.saved_to and run.customerId == "Kelvane"
    assert not run.send().accepted
