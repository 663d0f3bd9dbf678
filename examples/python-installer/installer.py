#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""An installer that copies a folder, and reports how that went.

    installer.py SOURCE TARGET [CONFIGURATION_URL]
"""

from __future__ import annotations

import logging
import os
import pathlib
import shutil
import sys

import ztportal

CONFIGURATION_URL = "http://config.kelvane.example/reporting/kelvane.xml"
APPLICATION_ID = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}"


def hide_home(pool_type: str, name: str, value: str) -> str:
    """No report shows the name of the user."""
    return value.replace(os.path.expanduser("~"), "~")


def install(source: pathlib.Path, target: pathlib.Path, execution: ztportal.ExecutionPool) -> None:
    """Copies each entry of `source` as a step of the report."""
    for entry in sorted(source.iterdir()):
        execution.add_step(f"Copy {entry.name}", stepType="ENTER")
        if entry.is_dir():
            shutil.copytree(entry, target / entry.name)
        else:
            shutil.copy2(entry, target / entry.name)
        execution.add_step(f"Copy {entry.name}", stepType="LEAVE")
    usage = shutil.disk_usage(target)
    execution.add_fields({"TARGET": str(target), "DISK_MIB": {"TOTAL": usage.total // 2**20,
                                                              "FREE": usage.free // 2**20}})


def main() -> int:
    if len(sys.argv) not in (3, 4):
        print("usage: installer.py SOURCE TARGET [CONFIGURATION_URL]", file=sys.stderr)
        return 2
    source, target = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])

    logging.basicConfig(level=logging.WARNING)
    ztportal.log_to(logging.getLogger("ztportal"))
    ztportal.set_host_info(CFBundleName="Kelvane Installer", CFBundleShortVersionString="2.1")
    ztportal.set_value_filter(hide_home)
    report = ztportal.Report(
        customerId="Kelvane", applicationId=APPLICATION_ID, applicationVersion="2.1",
        configurationUrl=sys.argv[3] if len(sys.argv) > 3 else CONFIGURATION_URL)
    try:
        with report:
            report.execution.startPoint = "setup"
            install(source, target, report.execution)
            report.execution.endResultString = "installed"
    except OSError as error:
        print(f"installer.py: {error}", file=sys.stderr)
    receipt = report.send()
    if not receipt.accepted and receipt.saved_to is None:
        print(f"installer.py: the report is lost: {receipt.message}", file=sys.stderr)
    return 0 if report.execution.successfull else 1


if __name__ == "__main__":
    sys.exit(main())
