# SPDX-License-Identifier: Apache-2.0
"""The host under test, with its store, its server and its session bus."""

import http.client
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import struct
import subprocess
import tempfile
import time

READY, NOT_ACCEPTED, ACCEPTED, THREW, NO_DOCUMENT = 1, 2, 3, 4, 5  # Outcome in Host.cpp
HANG = 120  # seconds, more than all timeouts of an operation together, also on a busy machine
EXCHANGE_TIMEOUT = 2  # seconds, the library's limit for one exchange


class Inbox:
    """A running ztinbox with its reports in `folder`."""

    def __init__(self, program, folder):
        command = [program, "--listen", "127.0.0.1:0", "--data", folder]
        self._process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        greeting = self._process.stdout.readline()
        self.port = int(greeting.rsplit(":", 1)[1])

    def _ask(self, method, path, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request(method, "/api/v1/" + path, body, {"Content-Type": "application/json"})
        response = connection.getresponse()
        content = response.read()
        connection.close()
        if response.status != 200:
            raise RuntimeError(f"ztinbox: {method} {path}: {response.status}")
        return content

    def behave(self, **behaviour):
        self._ask("PUT", "behaviour", json.dumps({"answer": "accept", "slow": 0, **behaviour}))

    def clear(self):
        self._ask("DELETE", "reports")

    def records(self, newest=None):
        """(report ID, text, whether it was accepted) of the received reports, newest first."""
        found, before = [], ""
        while not newest or not found:
            page = json.loads(self._ask("GET", f"reports?limit={newest or 1000}{before}"))
            if not page:
                break
            for entry in page:
                text = self._ask("GET", f"reports/{entry['number']}/raw")
                found.append((entry["reportId"], text, entry["answer"] == "accepted"))
            before = f"&before={page[-1]['number']}"
        return found

    def kill(self):
        self._process.kill()
        self._process.wait()


class Run:
    """The result of one run of the host."""

    def __init__(self, status, seconds, journal, log):
        self.status, self.seconds, self.log = status, seconds, log
        with open(journal, "rb") as file:
            header = struct.unpack("4i", file.read(16))
            self.outcome, self.descriptors, self.children, size = header
            self.text = file.read(size)
        report_id = re.search(rb"<ReportID[^>]*>([^<]*)<", self.text)
        self.report_id = report_id.group(1).decode() if report_id else ""
        self.file = self.report_id + ".ztr"


class Scene:
    """A data folder, a server, a session bus, and the host that uses them."""

    def __init__(self, programs):
        self._programs = programs
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zt-faults-"))
        self.home = self.folder / "home"
        self.store = self.home / "Kelvane" / "Faults" / "reports"
        self._journal = self.folder / "journal"
        with open(self._journal, "wb") as file:
            file.truncate(8 << 20)  # Journal in Host.cpp
        self.start_inbox()
        self._bus = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self._environment = {
            "HOME": str(self.home),
            "LANG": "de_DE.UTF-8",
            "PATH": "/usr/bin:/bin",
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "XDG_DATA_DIRS": str(self.folder / "data"),
            "XDG_DATA_HOME": str(self.home),
            "DBUS_SESSION_BUS_ADDRESS": self._bus.stdout.readline().strip(),
        }
        self._saved = {}
        for number in range(3):
            self.run("save", seed=number)
        self._saved = self.stored()
        if len(self._saved) != 3:
            raise RuntimeError("reports cannot be saved even without faults")

    def close(self):
        self.inbox.kill()
        self._bus.kill()
        self._bus.wait()
        shutil.rmtree(self.folder)

    def finish(self):
        """Called at the end of a campaign. Returns figures to add."""
        return {}

    def start_inbox(self):
        self.inbox = Inbox(self._programs.inbox, self.folder / "inbox")

    def url(self):
        return f"http://127.0.0.1:{self.inbox.port}/reporting/kelvane.xml"

    def stored(self):
        """All files of the store: their names and contents."""
        if not self.store.is_dir():
            return {}
        return {path.name: path.read_bytes() for path in self.store.iterdir()}

    def prepare(self, answer, with_store):
        """Sets up the initial state of an operation: a browser, and a store with three reports."""
        self.inbox.clear()
        self.inbox.behave(answer=answer)
        shutil.rmtree(self.home, ignore_errors=True)
        firefox = self.home / "firefox"
        firefox.mkdir(parents=True)
        (firefox / "firefox").write_text("#!/bin/sh\n")
        (firefox / "firefox").chmod(0o700)
        (firefox / "application.ini").write_text("[App]\nVersion=115.0\n")
        (self.home / "applications").mkdir()
        (self.home / "applications" / "firefox.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Firefox\nExec={firefox}/firefox %u\n")
        if with_store:
            self.store.mkdir(parents=True)
            (self.store / "notes.txt").write_text("not a report")
            for name, text in self._saved.items():
                (self.store / name).write_bytes(text)

    def run(self, operation, url="", seed=1, proxy=None, inject=None, trace=None, size_limit=None,
            kill_after=None):
        """Runs the host; with `inject` or `trace`, under strace with this expression.

        `size_limit` is the size of the largest file that the host can write, and whether exceeding it
        kills the host. With `kill_after` it is killed after so many seconds.
        """
        def limit():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            resource.setrlimit(resource.RLIMIT_FSIZE, (size_limit[0], size_limit[0]))
            signal.signal(signal.SIGXFSZ, signal.SIG_DFL if size_limit[1] else signal.SIG_IGN)

        with open(self._journal, "r+b") as file:
            file.write(bytes(16))
        command = [self._programs.host, operation, url, self._journal, str(seed)]
        start = time.monotonic()
        host = subprocess.Popen(
            command + (["--stop"] if inject or trace else []),
            env={**self._environment, **({"http_proxy": proxy} if proxy else {})},
            stdin=subprocess.DEVNULL, preexec_fn=limit if size_limit else None)
        log = self._trace(host.pid, inject, trace) if inject or trace else list
        try:
            status = host.wait(timeout=kill_after or HANG)
        except subprocess.TimeoutExpired:
            host.kill()
            killed = host.wait()
            status = killed if kill_after else "a timeout"
        return Run(status, time.monotonic() - start, self._journal, log())

    def _trace(self, pid, inject, trace):
        """Attaches strace to the stopped host and continues it. Returns a function that reads the log."""
        path = self.folder / "strace.log"
        os.waitid(os.P_PID, pid, os.WSTOPPED | os.WNOWAIT)
        command = ["strace", "-f", "-y", "-e", "signal=none", "-o", path, "-p", str(pid),
                   "-e", "trace=" + (trace or inject.split(":")[0])]
        if inject:
            command += ["-e", "inject=" + inject]
        tracer = subprocess.Popen(command, stderr=subprocess.PIPE)
        message = tracer.stderr.readline()
        if b" attached" not in message:
            raise RuntimeError(f"strace cannot attach: {message}")
        os.kill(pid, signal.SIGCONT)

        def log():
            tracer.communicate()
            return path.read_text(errors="replace").splitlines()
        return log

    def resend(self):
        """Sends the store again without faults; repeats this if the machine was too slow."""
        for _ in range(5):
            if self.run("resend", self.url()).seconds < EXCHANGE_TIMEOUT:
                return

