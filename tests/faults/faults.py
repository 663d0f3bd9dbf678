# SPDX-License-Identifier: Apache-2.0
"""Injects faults into a host of the library; see docs/reliability.md.

script/faults builds the programs that this needs and runs it.
"""

import argparse
import collections
import concurrent.futures
import os
import random
import re
import signal
import subprocess
import sys
import threading
import time

from relay import Relay
from scene import ACCEPTED, EXCHANGE_TIMEOUT, NO_DOCUMENT, NOT_ACCEPTED, THREW, Scene

CONFIGURATION_URL = "http://config.kelvane.example/reporting/kelvane.xml"
OPERATIONS = {  # name: (operation of the host, answer of the inbox, whether the store exists)
    "send": ("send", "accept", True),
    "send, refused": ("send", "refuse", True),
    "send, refused, no store yet": ("send", "refuse", False),
    "save": ("save", "accept", True),
    "save, no store yet": ("save", "accept", False),
    "save again": ("resave", "accept", True),
    "resend": ("resend", "accept", True),
    "resend from two processes": ("store", "accept", True),
    "probe": ("probe", "accept", True),
}


class Broken(Exception):
    """A broken promise."""


def check(condition, promise):
    if not condition:
        raise Broken(promise)


def resent(text):
    """The text that arrives when the file `text` is sent again: XML has only LF as line end."""
    return text.replace(b"\r", b"")


def judge_records(scene, known):
    """Checks that the server has only texts that were written. Returns the accepted ones by report ID."""
    accepted = {}
    for report_id, text, is_accepted in scene.inbox.records():
        check(text in known, f"the server has a text that was never written: {text[:60]} ({len(text)} bytes)")
        if is_accepted:
            accepted[report_id] = text
    return accepted


def judge_others(before, after, own):
    """Checks that every file of the store except `own` is unchanged."""
    for name in before.keys() | after.keys() - {own}:
        check(name in after or name == own, f"another file of the store is gone: {name}")
        check(name in before or name == own, f"the store has an extra file: {name}")
        check(name == own or after[name] == before[name], f"another file was changed: {name}")


def judge_report(scene, run, before):
    """Checks the store and the server. Returns whether the server accepted the report, and its file."""
    after = scene.stored()
    judge_others(before, after, run.file)
    accepted = judge_records(scene, {run.text})
    if run.outcome == ACCEPTED:
        check(run.report_id in accepted, "accepted, but the server does not have it")
        check(run.file not in after, "accepted, but also stored")
    return run.report_id in accepted, after.get(run.file)


def judge_resent(scene, before):
    """Checks that each report of `before` is unchanged in the store, or at the server and not stored."""
    after = scene.stored()
    accepted = judge_records(scene, {resent(text) for text in before.values()})
    for name, text in before.items():
        if name in after:
            check(after[name] == text, f"a stored report was changed: {name}")
        else:
            check(accepted.get(name.removesuffix(".ztr")) == resent(text), f"lost: {name}")
    check(after.keys() <= before.keys(), "the store has an extra file")


def judge_recovery(scene, torn=None):
    """Checks that everything in the store arrives without faults, except for the file `torn`."""
    scene.inbox.clear()
    scene.inbox.behave()
    before = scene.stored()
    scene.resend()
    whole = {name: text for name, text in before.items() if name != torn}
    after = scene.stored()
    if torn:
        check(after.pop(torn, None) == before[torn], "the torn file was changed")
        (scene.store / torn).unlink()
        scene.resend()
    judge_resent(scene, whole)
    left = [name for name in scene.stored() if name.endswith(".ztr")]
    check(not left, f"a stored report cannot be sent again: {left}")


# Campaign "faults": a system call fails once or from then on.

PASSING = {"EINTR", "EAGAIN"}  # interruptions, after which nothing may be lost
ERRORS = {  # the errors of each call; the first one is also tried as a lasting error
    "access": ["EACCES"],
    "clone": ["EAGAIN"],
    "clone3": ["EAGAIN"],
    "close": ["EIO", "ENOSPC", "EINTR"],
    "connect": ["ENETUNREACH", "ECONNREFUSED", "ETIMEDOUT", "EINTR"],
    "execve": ["ENOENT", "ENOMEM"],
    "ftruncate": ["EIO", "EINTR"],
    "getrandom": ["ENOSYS", "EINTR"],
    "mkdir": ["EROFS", "ENOSPC", "EACCES"],
    "mkdirat": ["EROFS", "ENOSPC", "EACCES"],
    "openat": ["EMFILE", "EACCES", "EIO", "EINTR"],
    "pipe2": ["EMFILE", "ENFILE"],
    "poll": ["ENOMEM", "EINTR"],
    "read": ["EIO", "EINTR"],
    "recvfrom": ["ECONNRESET", "EAGAIN", "EINTR"],
    "recvmsg": ["ECONNRESET", "EAGAIN", "EINTR"],
    "sendmsg": ["ECONNRESET", "EPIPE", "EAGAIN", "EINTR"],
    "sendto": ["ECONNRESET", "EPIPE", "EAGAIN", "EINTR"],
    "socket": ["EMFILE", "ENOBUFS"],
    "socketpair": ["EMFILE"],
    "unlink": ["EROFS", "EACCES", "EIO"],
    "unlinkat": ["EROFS", "EACCES", "EIO"],
    "wait4": ["ECHILD", "EINTR"],
    "write": ["ENOSPC", "EIO", "EINTR"],
}
OTHER_ERRORS = ["EIO"]
MEMORY = {"mmap", "mprotect"}  # without memory there may be no text to save
# Calls that report no errors, calls whose failure the C library treats as fatal, and calls that only
# main() of the host makes.
EXEMPT = {"brk", "exit", "exit_group", "fstat", "futex", "getegid", "geteuid", "getgid", "getpgrp",
          "getpid", "getppid", "gettid", "getuid", "rt_sigreturn", "set_tid_address", "waitid"}


def system_calls(log):
    """For each kind of call, the number of calls by the thread or process that makes the most."""
    counts = collections.Counter(
        call.groups() for call in (re.match(r"(\d+) +(\w+)\(", line) for line in log) if call)
    most = collections.Counter()
    for (_, name), count in counts.items():
        most[name] = max(most[name], count)
    return {name: count for name, count in most.items() if name not in EXEMPT}


def start(scene, name, **options):
    """Runs the operation `name` from its initial state. Returns the run, and the store before it."""
    operation, answer, with_store = OPERATIONS[name]
    scene.prepare(answer, with_store)
    before = scene.stored()
    is_online = operation in ("send", "resend", "store")
    return scene.run(operation, scene.url() if is_online else "", **options), before


def judge_operation(scene, name, run, before, usual=False, may_lose=False, may_throw=False):
    """Checks a run that was not killed; `usual` means that no fault was injected."""
    check(run.status == 0, f"the host ends with {run.status}")
    out_of_memory = may_throw and run.text == b"std::bad_alloc"
    check(run.outcome != THREW or out_of_memory, f"throws {run.text}")
    if run.outcome in (THREW, NO_DOCUMENT):
        return judge_others(before, scene.stored(), None)
    if name.startswith("resend"):
        judge_resent(scene, before)
        check(not usual or scene.stored().keys() == {"notes.txt"}, "not all was sent")
        check(not usual or len(scene.inbox.records()) == len(before) - 1, "sent more than once")
    elif name == "probe":
        check(run.text.endswith(b"</SOAP-ENV:Envelope>\r\n"), "the probe's text is cut short")
        check(not usual or b">Firefox<" in run.text, "the probe did not find the browser")
    else:
        with_server, stored = judge_report(scene, run, before)
        check(stored in (None, run.text), "the stored report is not as written")
        check(with_server or stored or may_lose, "lost: neither at the server nor in the store")
        check(not usual or (run.outcome == ACCEPTED) == (name == "send"), "not the usual result")
    judge_recovery(scene)


def fault_cases(scene):
    """Yields (operation, call and error, strace's fault expression or the size limit of a file)."""
    for name in OPERATIONS:
        run, before = start(scene, name, trace="all")
        judge_operation(scene, name, run, before, usual=run.seconds < EXCHANGE_TIMEOUT)
        for call, count in system_calls(run.log).items():
            if (name, call) == ("probe", "close"):
                continue  # strace leaves the descriptor open, and the reader of a pipe waits for its end
            errors = ERRORS.get(call, OTHER_ERRORS)
            for error, plus in [(error, "") for error in errors] + [(errors[0], "+")]:
                for number in range(1, count + 1):
                    yield name, (call, error + plus), f"{call}:error={error}:when={number}{plus}"
        if name in ("save", "send, refused"):
            for limit in range(0, len(run.text), 101):
                yield name, ("full disk", "EFBIG"), limit


def try_fault(scene, name, kind, fault):
    call, error = kind
    if call == "full disk":
        run, before = start(scene, name, size_limit=(fault, False))
        judge_operation(scene, name, run, before, may_lose=True)
        return [call]
    run, before = start(scene, name, inject=fault)
    struck = [line for line in run.log if "(INJECTED)" in line]
    in_store = any(str(scene.home) in line for line in struck)
    judge_operation(
        scene, name, run, before, usual=not struck and run.seconds < EXCHANGE_TIMEOUT,
        may_lose=name != "save again" and (call in MEMORY or in_store and error not in PASSING),
        may_throw=call in MEMORY)
    # strace does not execute a close() that it makes fail. A connection that fstat() cannot identify is
    # left open, because its number may be the host's.
    unidentified = any(re.search(r"newfstatat\(\d+<socket:", line) for line in struck)
    check(call == "close" or unidentified or run.descriptors <= 0,
          f"{run.descriptors} more descriptors are open")
    check(call == "wait4" or not run.children, "a subprocess is left behind")
    return [call if struck else "not reached"]


# Campaign "kills": the host is killed at a file call, or in the middle of writing.

def kill_cases(scene):
    for name in OPERATIONS:
        if name == "probe":
            continue
        run, _ = start(scene, name, trace="%file,%desc")
        for call, count in system_calls(run.log).items():
            for number in range(1, count + 1):
                yield name, call, f"{call}:signal=KILL:when={number}"
        if name in ("save", "send, refused"):
            for limit in range(0, len(run.text), 23):
                yield name, "in the middle of a write", limit


def try_kill(scene, name, kind, kill):
    midway = kind == "in the middle of a write"
    run, before = start(scene, name, **({"size_limit": (kill, True)} if midway else {"inject": kill}))
    check(run.status in (0, -signal.SIGKILL, -signal.SIGXFSZ), f"the host ends with {run.status}")
    torn = None
    if name.startswith("resend"):
        judge_resent(scene, before)
    else:
        _, stored = judge_report(scene, run, before)
        if stored not in (None, run.text):
            check(run.text.startswith(stored), "the stored file is not the beginning of the report")
            torn = run.file
        check(name != "save again" or stored == run.text, "lost while it was saved again")
    judge_recovery(scene, torn)
    return [kind if run.status else "not reached"] + (["torn files"] if torn else [])


# Campaign "delivery": the server and the network fail.

def any_byte(draw):
    return draw.randrange(900)  # approximately the size of a response


STATUSES = [200, 201, 202, 204, 205, 206, 299, 300, 301, 302, 303, 304, 307, 308, 400, 401, 403, 404,
            407, 408, 413, 429, 500, 502, 503, 504]
KINDS = [  # weight, name, settings; a setting that is a function is drawn at random
    (200, "no fault", {}),
    (80, "refused", {"answer": "refuse"}),
    (80, "garbage", {"answer": "garbage"}),
    (200, "status", {"answer": lambda draw: f"error:{draw.choice(STATUSES)}"}),
    (40, "dropped", {"answer": "drop"}),
    (40, "truncated", {"answer": "truncate"}),
    (6, "hangs", {"answer": "hang"}),
    (30, "slow", {"slow": lambda draw: draw.randint(1, 50)}),
    (6, "slower than the timeout", {"slow": 60_000, "loses": True}),
    (30, "unreachable", {"unreachable": True}),
    (40, "interim status first", {"relay": "interim"}),
    (40, "reset before the request", {"relay": "reset before request"}),
    (40, "reset before the response", {"relay": "reset", "loses": True}),
    (80, "reset in the response", {"relay": "reset", "amount": any_byte, "loses": True}),
    (40, "reset after the response", {"relay": "reset after", "loses": True}),
    (80, "cut in the response", {"relay": "cut", "amount": any_byte, "loses": True}),
    (30, "byte by byte", {"relay": "drip", "amount": lambda draw: draw.randrange(300), "loses": True}),
    (6, "byte by byte, beyond the timeout", {"relay": "drip", "amount": 20_000, "loses": True}),
    (60, "configuration or version reset", {"relay": "reset", "amount": any_byte, "early": True}),
    (60, "configuration or version cut", {"relay": "cut", "amount": any_byte, "early": True}),
    (4, "configuration or version hangs", {"relay": "hang", "early": True}),
    (20, "server killed before the report", {"relay": "kill first", "loses": True}),
    (60, "server killed at the report",
     {"relay": "kill", "amount": lambda draw: draw.randrange(4000), "loses": True}),
]


class Delivery(Scene):
    """A scene whose host reaches the server through a relay and keeps its store between reports."""

    def __init__(self, options):
        super().__init__(options)
        self.prepare("accept", with_store=False)
        self._relay = Relay(self.inbox.port, lambda: self.inbox.kill())
        self.seed = options.seed
        self._written = {}  # texts of stored reports by file name

    def deliver(self, number):
        draw = random.Random(f"{self.seed} {number}")
        kind = draw.choices(KINDS, [kind[0] for kind in KINDS])[0]
        plan = {key: value(draw) if callable(value) else value for key, value in kind[2].items()}
        self.inbox.behave(answer=plan.get("answer", "accept"), slow=plan.get("slow", 0))
        exchange = draw.choice(["configuration", "version"]) if "early" in plan else "report"
        self._relay.play(plan.get("relay"), exchange, plan.get("amount", 0))
        port = 1 if "unreachable" in plan else self._relay.port
        run = self.send(draw, f"http://127.0.0.1:{port}")
        if str(plan.get("relay")).startswith("kill"):
            self.restart_inbox()
        try:
            return [kind[1], self._judge(run, plan)]
        except Broken as broken:
            raise Broken(f"{kind[1]} {plan}: {broken}") from None

    def send(self, draw, proxy):
        return self.run("send", CONFIGURATION_URL, seed=draw.getrandbits(32), proxy=proxy)

    def restart_inbox(self):
        """Starts the inbox with the same data on another port, as after a restart of the machine."""
        self.inbox.kill()
        self.start_inbox()
        self._relay.server_port = self.inbox.port

    def _judge(self, run, plan):
        check(run.status == 0 and run.outcome in (ACCEPTED, NOT_ACCEPTED), f"ends with {run.status}")
        stored = self.stored().get(run.file)
        check(stored in (None, run.text), "the stored report is not as written")
        records = [r for r in self.inbox.records(newest=10) if r[0] == run.report_id]
        check(all(text == run.text for _, text, _ in records), "the server has another text")
        with_server = any(accepted for _, _, accepted in records)
        if stored:
            self._written[run.file] = run.text
        if run.outcome == ACCEPTED:
            check(with_server and not stored, f"accepted; server: {with_server}, stored: {bool(stored)}")
            return "accepted"
        check(stored, "lost: neither accepted nor in the store")
        loses = "loses" in plan or run.seconds >= EXCHANGE_TIMEOUT
        check(not with_server or loses, "accepted by the server, but also stored")
        return "both" if with_server else "stored"

    def finish(self):
        """Checks that everything in the store arrives when it is sent again."""
        self._relay.play()
        self.inbox.behave()
        self.inbox.clear()
        check(self.stored() == self._written, "the store does not contain the stored reports")
        self.resend()
        check(not self.stored(), "a stored report cannot be sent again")
        arrived = judge_records(self, {resent(text) for text in self._written.values()})
        for name, text in self._written.items():
            check(arrived.get(name.removesuffix(".ztr")) == resent(text), f"lost: {name}")
        return {"sent again": len(arrived)}


# Campaign "background": the same faults, for a background sender whose process is also killed.

class Background(Delivery):
    """Each run hands over one report and sends what earlier runs have left."""

    def deliver(self, number):
        (self.store.parent / "sending.state").unlink(missing_ok=True)  # no waiting for a server that asks
        return super().deliver(number)

    def send(self, draw, proxy):
        kill_after = draw.uniform(0.001, 0.1) if draw.random() < 0.5 else None
        return self.run("background", CONFIGURATION_URL, seed=draw.getrandbits(32), proxy=proxy,
                        kill_after=kill_after)

    def _judge(self, run, plan):
        check(run.status in (0, -signal.SIGKILL), f"ends with {run.status}")
        stored = self.stored().get(run.file)
        if run.outcome != NOT_ACCEPTED:
            if stored not in (None, run.text):
                check(run.text.startswith(stored), "the stored file is not the beginning of the report")
                (self.store / run.file).unlink()
            return "killed before it was handed over"
        self._written[run.file] = run.text
        check(stored in (None, run.text), "the stored report is not as written")
        return "stored" if stored else "sent"

    def finish(self):
        """Checks that everything that was handed over has arrived, or arrives when it is sent again."""
        self._relay.play()
        self.inbox.behave()
        (self.store.parent / "sending.state").unlink(missing_ok=True)
        self.resend()
        left = [name for name in self.stored() if name in self._written]
        check(not left, f"a stored report cannot be sent again: {left}")
        texts = {(report_id, text) for report_id, text, accepted in self.inbox.records() if accepted}
        for name, text in self._written.items():
            check((name.removesuffix(".ztr"), resent(text)) in texts, f"lost: {name}")
        return {"handed over": len(self._written)}


CAMPAIGNS = {  # name: (scene, function that lists the cases, function that tries one)
    "delivery": (Delivery, lambda scene: ((number,) for number in range(2000)), Delivery.deliver),
    "background": (Background, lambda scene: ((number,) for number in range(2000)), Background.deliver),
    "faults": (Scene, fault_cases, try_fault),
    "kills": (Scene, kill_cases, try_kill),
}


def sampled(cases, seed):
    """The cases in random order, but first one of each kind, then a second one of each, and so on."""
    random.Random(seed).shuffle(cases)
    seen = collections.Counter()
    ranks = {}
    for case in cases:
        ranks[case] = seen[case[:-1]]
        seen[case[:-1]] += 1
    return sorted(cases, key=ranks.get)


def run_campaign(name, options):
    """Tries the cases of a campaign in parallel scenes. Returns whether every promise was kept."""
    kind, list_cases, attempt = CAMPAIGNS[name]
    scenes = [kind(options) for _ in range(os.cpu_count())]
    cases = [case for case in list_cases(scenes[0]) if re.search(options.only, str(case))]
    began = time.monotonic()
    deadline = began + options.seconds if options.seconds else float("inf")
    pending = iter(sampled(cases, options.seed))
    figures, lock = collections.Counter(), threading.Lock()

    def attempt_all(scene):
        while time.monotonic() < deadline:
            with lock:
                case = next(pending, None)
            if case is None:
                return
            try:
                counted = attempt(scene, *case)
            except Broken as promise:
                counted = ["BROKEN"]
                print(f"  {name}: {case}: {promise}", flush=True)
            with lock:
                figures.update(["cases"] + counted)

    with concurrent.futures.ThreadPoolExecutor() as pool:
        list(pool.map(attempt_all, scenes))
    for scene in scenes:
        try:
            figures.update(scene.finish())
        except Broken as promise:
            figures["BROKEN"] += 1
            print(f"  {name}: at the end: {promise}")
        scene.close()
    tried, broken = figures.pop("cases", 0), figures.pop("BROKEN", 0)
    print(f"{name}: {tried} of {len(cases)} cases in {time.monotonic() - began:.0f} s, {broken} broken: "
          + ", ".join(f"{key} {value}" for key, value in figures.most_common()), flush=True)
    return tried > 0 and not broken


def leave_other_processes():
    """Continues in a PID namespace, if permitted, because the library inspects all visible processes."""
    command = ["unshare", "--pid", "--fork", "--mount-proc", "--kill-child"]
    command += ["--map-root-user"] if os.geteuid() else []
    if subprocess.run(command + ["true"], stderr=subprocess.DEVNULL).returncode == 0:
        os.execvp(command[0], command + [sys.executable, *sys.argv, "--alone"])


def main():
    parser = argparse.ArgumentParser(prog="script/faults", description=__doc__)
    parser.add_argument("campaigns", nargs="*", metavar="CAMPAIGN", help=" ".join(CAMPAIGNS))
    parser.add_argument("--seconds", type=float, help="the time limit of all campaigns together")
    parser.add_argument("--seed", type=int, default=1, help="the seed of the faults and their order")
    parser.add_argument("--only", default="", metavar="REGEX", help="try only the cases that match")
    parser.add_argument("--host", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--inbox", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--alone", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if not options.alone:
        leave_other_processes()
    campaigns = options.campaigns or CAMPAIGNS
    if options.seconds:
        options.seconds /= len(campaigns)
    for name in campaigns:
        if name not in CAMPAIGNS:
            parser.error(f"unknown campaign {name}; choose from {', '.join(CAMPAIGNS)}")
    kept = [run_campaign(name, options) for name in campaigns]
    print("script/faults: " + ("every promise was kept" if all(kept) else "A PROMISE WAS BROKEN"))
    return 0 if all(kept) else 1


if __name__ == "__main__":
    sys.exit(main())
