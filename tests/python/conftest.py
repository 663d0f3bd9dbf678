# SPDX-License-Identifier: Apache-2.0
"""A real inbox for the tests of the Python package. CTest sets ZT_INBOX and ZTPORTAL_LIBRARY."""

from __future__ import annotations

import json
import os
import pathlib
import subprocess
import sys
import urllib.request

import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(SOURCE / "python"), str(pathlib.Path(__file__).parent)]
os.environ["PYTHONPATH"] = str(SOURCE / "python")
sys.dont_write_bytecode = True
os.environ["PYTHONDONTWRITEBYTECODE"] = "1"
for name in ("DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "http_proxy", "all_proxy"):
    os.environ.pop(name, None)


class Inbox:
    """A running ztinbox."""

    def __init__(self, folder: pathlib.Path) -> None:
        self._process = subprocess.Popen(
            [os.environ["ZT_INBOX"], "--listen", "127.0.0.1:0", "--data", str(folder)],
            stdout=subprocess.PIPE, text=True)
        line = self._process.stdout.readline()
        self.url = line.removeprefix("ztinbox: listening on ").strip().rstrip("/")
        self.configuration = self.url + "/reporting/kelvane.xml"

    def _call(self, path: str, method: str = "GET", body: object = None) -> bytes:
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.url + path, data, method=method)
        with urllib.request.urlopen(request, timeout=30) as response:
            return response.read()

    def ids(self) -> list[str]:
        """The IDs of the reports, newest first."""
        return [report["reportId"] for report in
                json.loads(self._call("/api/v1/reports?limit=1000"))]

    def newest(self) -> str:
        number = json.loads(self._call("/api/v1/reports?limit=1"))[0]["number"]
        return self._call(f"/api/v1/reports/{number}/raw").decode("utf-8", "surrogateescape")

    def wait(self, count: int) -> None:
        self._call(f"/api/v1/wait?count={count}&timeout=20")

    def behave(self, **behaviour: object) -> None:
        self._call("/api/v1/behaviour", "PUT", behaviour)

    def reset(self) -> None:
        self.behave(answer="accept")
        self._call("/api/v1/reports", "DELETE")

    def stop(self) -> None:
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()


@pytest.fixture(scope="session")
def running_inbox(tmp_path_factory):
    inbox = Inbox(tmp_path_factory.mktemp("inbox"))
    yield inbox
    inbox.stop()


@pytest.fixture
def inbox(running_inbox):
    running_inbox.reset()
    return running_inbox


@pytest.fixture(autouse=True)
def data_folder(tmp_path, monkeypatch):
    """Each test has a store of its own."""
    monkeypatch.setenv("XDG_DATA_HOME", str(tmp_path / "data"))
    import ztportal
    ztportal.set_host_info(CFBundleName="PythonTest")
    ztportal.set_transport(ztportal.TransportOptions(timeout=60))  # on a busy machine, too
    return tmp_path / "data"


@pytest.fixture
def create(inbox):
    """Creates reports for the inbox."""
    import ztportal

    def function(**values):
        return ztportal.Report(**{"customerId": "Kelvane", "applicationId": "{A}",
                                  "applicationVersion": "2.1",
                                  "configurationUrl": inbox.configuration} | values)
    return function


@pytest.fixture
def run(tmp_path):
    """Runs Python code in a process of its own; returns what it printed."""
    def function(code, *arguments, status=0, timeout=60, **environment):
        result = subprocess.run([sys.executable, "-c", code, *arguments], timeout=timeout,
                                env=os.environ | environment, capture_output=True, text=True)
        assert result.returncode == status, result.stderr
        return result.stdout + result.stderr
    return function
