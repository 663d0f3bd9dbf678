# SPDX-License-Identifier: Apache-2.0
"""python3 -m ztportal: checks the package and its library with a server in this process."""

import http.server
import os
import sys
import tempfile
import threading

import ztportal
from ztportal._library import library_path


class _Server(http.server.BaseHTTPRequestHandler):
    """A reporting server that accepts every report."""

    def do_GET(self) -> None:
        url = f"http://{self.headers['Host']}/"
        self._respond(f"<configuration><defSOAP>{url}</defSOAP></configuration>")

    def do_POST(self) -> None:
        self.rfile.read(int(self.headers["Content-Length"]))
        self._respond("<versioninfo>1.0</versioninfo><postPoolDatasResponse>true")

    def _respond(self, text: str) -> None:
        self.send_response(200)
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text.encode())

    def log_message(self, format: str, *args: object) -> None:
        pass


def main() -> int:
    print(f"ztportal {ztportal.__version__}, {library_path}")
    with http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Server) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        ztportal.set_broadcast_enabled(False)
        ztportal.set_transport(ztportal.TransportOptions(proxy="", timeout=30))
        url = f"http://127.0.0.1:{server.server_port}/"
        with ztportal.Report(customerId="Kelvane", applicationId="smoke test",
                             applicationVersion="1.0", configurationUrl=url) as report:
            report.execution.add_step("Check", stepType="INFO")
        print(report.render(soap=False))
        receipt = report.send()
        server.shutdown()
    print(f"{receipt.outcome.name}: {receipt.message}")
    return 0 if receipt.accepted else 1


if __name__ == "__main__":
    # A report that is not accepted must not stay in the user's store.
    with tempfile.TemporaryDirectory() as folder:
        os.environ["XDG_DATA_HOME"] = folder
        sys.exit(main())
