# SPDX-License-Identifier: Apache-2.0
"""Whole processes: their end in the middle of a delivery, forks, memory, smoke test, examples."""

import multiprocessing
import os
import pathlib
import re
import socket
import subprocess
import sys
import threading

import pytest

import ztportal
from conftest import SOURCE

HEAD = """import atexit, gc, logging, os, sys, threading, time, ztportal
ztportal.set_host_info(CFBundleName="PythonTest")
ztportal.set_transport(ztportal.TransportOptions(timeout=60))
def create(**values):
    report = ztportal.Report(**{"customerId": "Kelvane", "applicationId": "{A}",
        "applicationVersion": "2.1", "offline": True} | values)
    report.start("setup")
    return report
"""


@pytest.fixture
def silent_server():
    """A server that accepts connections and says nothing."""
    with socket.create_server(("127.0.0.1", 0), backlog=100) as server:
        yield f"http://127.0.0.1:{server.getsockname()[1]}/kelvane.xml"


# Each prepares a delivery from another thread, and goes on once that has begun.
BUSY = {
    "sender": """
sender = ztportal.BackgroundSender(url)
sender.send(create())
""",
    "sender with a log": """
logging.basicConfig(level=logging.DEBUG, stream=open(os.devnull, "w"))
ztportal.log_to(logging.getLogger("ztportal"))
sender = ztportal.BackgroundSender(url, transport=ztportal.TransportOptions(timeout=0.05),
                                   retry_delay=0.001, longest_delay=0.001)
sender.send(create())
""",
    "sender with hooks and a transport": """
begun = threading.Event()
def send(request):
    begun.set()
    time.sleep(0.02)
    return ztportal.Response(503)
ztportal.set_request_hook(lambda request: request)
ztportal.set_value_filter(lambda pool, name, value: value)
sender = ztportal.BackgroundSender(url, transport=ztportal.TransportOptions(transport=send))
sender.send(create())
begun.wait()
""",
    "sender that is garbage": """
begun = threading.Event()
def send(request):
    begun.set()
    time.sleep(0.02)
    raise OSError
sender = ztportal.BackgroundSender(url, transport=ztportal.TransportOptions(transport=send))
sender.send(create())
begun.wait()
del sender
gc.collect()
""",
    "daemon thread": """
begun = threading.Event()
def send(request):
    begun.set()
    time.sleep(0.02)
    return ztportal.Response(200)
ztportal.set_value_filter(lambda pool, name, value: value)
ztportal.set_transport(ztportal.TransportOptions(transport=send))
def work():
    while True:
        create(offline=False, configurationUrl=url).send()
threading.Thread(target=work, daemon=True).start()
begun.wait()
""",
    "daemon thread that resends": """
create().save()
begun = threading.Event()
def work():
    ztportal.Store().send(url, retry=True, retry_delay=0.001, longest_delay=0.001, attempts=None,
                          transport=ztportal.TransportOptions(timeout=0.02),
                          progress=lambda *_: begun.set())
threading.Thread(target=work, daemon=True).start()
time.sleep(0.05)
""",
}


@pytest.mark.parametrize("name", BUSY)
def test_interpreter_ends_in_the_middle_of_a_delivery(name, silent_server):
    """No process crashes, hangs, or says anything: ZT_ROUNDS times four at the same time."""
    code = HEAD + f"url = {silent_server!r}\n" + BUSY[name]
    for _ in range(int(os.environ.get("ZT_ROUNDS", "1"))):
        running = [subprocess.Popen([sys.executable, "-c", code], stdout=subprocess.PIPE,
                                    stderr=subprocess.STDOUT) for _ in range(4)]
        for process in running:
            output, _ = process.communicate(timeout=60)
            assert (process.returncode, output) == (0, b"")


def test_daemon_thread_completes_its_delivery(inbox, run):
    """The report is not lost when the main thread ends first."""
    inbox.behave(answer="accept", slow=300)
    code = HEAD + """
report = create(offline=False, configurationUrl=sys.argv[1])
threading.Thread(target=report.send, daemon=True).start()
time.sleep(0.05)"""
    assert run(code, inbox.configuration) == ""
    assert len(inbox.ids()) == 1


def _deliver(report):
    """In the child: a handle of the parent, and a new one."""
    report.execution.add_step("child")
    own = ztportal.Report(customerId="Kelvane", applicationId="{B}", applicationVersion="1",
                          configurationUrl=report.configurationUrl)
    own.start("child")
    return report.send().accepted, own.send().accepted, report.render().count(">child<")


def _child(number):
    return _deliver(_child.report)


def test_fork_pool_uses_handles_of_the_parent(create, inbox):
    report = create()
    report.start("parent")
    assert report.send().accepted
    _child.report = report
    with multiprocessing.get_context("fork").Pool(2) as pool:
        results = pool.map(_child, range(6), chunksize=1)
    assert all(result[:2] == (True, True) for result in results)
    assert len(inbox.ids()) == 13 and ">child<" not in report.render()


def test_forked_sender_only_saves_and_the_child_ends(create, inbox):
    with ztportal.BackgroundSender(inbox.configuration) as sender:
        report = create(offline=True)
        report.start()
        child = os.fork()
        if child == 0:
            status = 1
            try:
                sender.send(report)
                status = 0 if sender.flush(1) == 1 and sender.stop() == 1 else 2
            finally:
                os._exit(status)
        assert os.waitpid(child, 0)[1] == 0
        assert sender.flush(20) == 0
    assert inbox.ids() == [report.reportId]


def test_fork_while_another_thread_delivers(run, inbox):
    """The child does not wait at its end for a thread that it does not have."""
    inbox.behave(answer="accept", slow=300)
    code = HEAD + """
report = create(offline=False, configurationUrl=sys.argv[1])
thread = threading.Thread(target=report.send)
thread.start()
time.sleep(0.05)
child = os.fork()
if child == 0:
    create().render()
    sys.exit(0)
print(os.waitpid(child, 0)[1])
thread.join()"""
    assert run(code, inbox.configuration) == "0\n"


def test_objects_are_destroyed_in_any_order(run):
    code = HEAD + """
for first in range(4):
    report = create()
    objects = [report, report.execution, report.execution.add_step("Copy"), report._owner]
    del report
    objects.append(objects)  # a cycle, which the garbage collector breaks
    objects[0].cycle = objects
    del objects[first]
    del objects
    gc.collect()
class Late:
    def __init__(self):
        self.report = create()
    def __del__(self):
        self.report.execution.startPoint = "late"
        print(len(self.report.render()) > 100)
late = Late()
late.myself = late
"""
    assert run(code) == "True\n"


def resident():
    return int(re.search(r"VmRSS:\s*(\d+)", pathlib.Path("/proc/self/status").read_text())[1])


def test_ten_thousand_reports_leave_no_memory():
    def use(count):
        for _ in range(count):
            report = ztportal.Report(customerId="K", applicationId="A", applicationVersion="1",
                                     offline=True)
            with report:
                report.execution.add_step("Copy").stepMessageString = "x" * 1000
                report.execution.add_field("list", [1, {"deep": "text"}])
    use(1000)
    before = resident()
    use(10_000)
    assert resident() - before < 2000, "KiB"


def test_module_checks_itself(tmp_path):
    result = subprocess.run([sys.executable, "-m", "ztportal"], capture_output=True, text=True,
                            env=os.environ | {"HOME": str(tmp_path)})
    assert result.returncode == 0, result.stderr
    lines = result.stdout.splitlines()
    assert lines[0] == f"ztportal {ztportal.__version__}, {os.environ['ZTPORTAL_LIBRARY']}"
    assert any("STEP_NAME" in line for line in lines)
    assert lines[-1] == "ACCEPTED: The server has accepted the report."
    assert not list(tmp_path.iterdir())


# For code with the usual time limit of two seconds, which a busy machine may exceed.
PATIENT = """import ztportal
ztportal.set_transport(ztportal.TransportOptions(timeout=60))
"""


def test_code_of_the_page_runs(inbox, run, data_folder):
    text = (SOURCE / "docs" / "python.md").read_text()
    blocks = re.findall(r"^```python\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)
    assert len(blocks) == 6 and len(blocks[0].splitlines()) == 10
    in_readme = re.findall(r"^```python\n(.*?)^```$", (SOURCE / "README.md").read_text(),
                           re.DOTALL | re.MULTILINE)
    assert len(in_readme) == 1
    code = "".join(blocks + in_readme).replace("http://127.0.0.1:8025/reporting/kelvane.xml",
                                   inbox.configuration)
    printed = run(PATIENT + code)
    assert "SIGNAL" in printed and "DONE 0" in printed
    assert "The server has accepted the report." in printed and len(inbox.ids()) == 3


def install(source, target, inbox):
    installer = SOURCE / "examples" / "python-installer" / "installer.py"
    code = PATIENT + f"import runpy; runpy.run_path({str(installer)!r}, run_name='__main__')"
    return subprocess.run([sys.executable, "-c", code, source, target, inbox.configuration],
                          capture_output=True, text=True, env=os.environ | {"HOME": str(source)})


def test_example_installs_and_reports(inbox, tmp_path):
    source, target = tmp_path / "source", tmp_path / "target"
    (source / "folder").mkdir(parents=True)
    (source / "program").write_text("program")
    target.mkdir()
    result = install(source, target, inbox)
    assert (result.returncode, result.stderr) == (0, "")
    assert (target / "program").read_text() == "program" and (target / "folder").is_dir()
    report = inbox.newest()
    for word in ("Copy program", "Copy folder", "installed", "TARGET", "FREE"):
        assert word in report

    result = install(source, target, inbox)
    assert result.returncode == 1 and "folder" in result.stderr
    report = inbox.newest()
    assert "FileExistsError" in report and "ERROR" in report and str(source) not in report
