# SPDX-License-Identifier: Apache-2.0
"""python3 -m ztportal: checks the package and its library, without a network."""

import os
import sys
import tempfile

import ztportal
from ztportal._library import library_path


def accept(request: ztportal.Request) -> ztportal.Response:
    """A configuration host, and a reporting server that accepts every report."""
    if request.method == "GET":
        text = "<configuration><defSOAP>http://127.0.0.1/</defSOAP></configuration>"
    else:
        text = "<versioninfo>1.0</versioninfo><postPoolDatasResponse>true"
    return ztportal.Response(200, text.encode())


def main() -> int:
    print(f"ztportal {ztportal.__version__}, {library_path}")
    ztportal.set_broadcast_enabled(False)
    ztportal.set_transport(ztportal.TransportOptions(transport=accept))
    with ztportal.Report(customerId="Kelvane", applicationId="smoke test", applicationVersion="1.0",
                         configurationUrl="http://127.0.0.1/") as report:
        report.execution.add_step("Check", stepType="INFO")
    print(report.render(soap=False))
    receipt = report.send()
    print(f"{receipt.outcome.name}: {receipt.message}")
    return 0 if receipt.accepted else 1


if __name__ == "__main__":
    # A report that is not accepted must not stay in the user's store.
    with tempfile.TemporaryDirectory() as folder:
        os.environ["XDG_DATA_HOME"] = folder
        sys.exit(main())
