#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A reporting server: keeps each report as a file in FOLDER.

    server.py PORT FOLDER      (PORT 0: any free port; the address is printed)
"""
import http.server
import os
import re
import sys
import uuid

PORT, FOLDER = int(sys.argv[1]), sys.argv[2]
XML = "application/xml; charset=utf-8"


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"  # keeps connections open

    def do_GET(self):  # the configuration document of a customer
        if not re.fullmatch(r"/reporting/\w+\.xml", self.path):
            return self.answer(404, "<error>no such document</error>")
        url = f"http://{self.headers['Host']}/soap"
        self.answer(200, f"<configuration><defSOAP>{url}</defSOAP>"
                         f"<defTestSOAP>{url}</defTestSOAP></configuration>")

    def do_POST(self):
        text = self.rfile.read(int(self.headers["Content-Length"]))
        if b"getVersionInfo" in text:
            return self.answer(200, "<versioninfo>1.0</versioninfo>")
        found = re.search(rb"<ReportID[^>]*>\{([0-9A-F-]{36})\}", text)
        name = found[1].decode() if found else str(uuid.uuid4())
        path = os.path.join(FOLDER, name + ".xml")
        with open(path + ".new", "wb") as file:  # the same report may arrive twice
            file.write(text)
            os.fsync(file.fileno())
        os.replace(path + ".new", path)
        self.answer(200, "<postPoolDatasResponse><return>true</return></postPoolDatasResponse>")

    def answer(self, status, text):
        self.send_response(status)
        self.send_header("Content-Type", XML)
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text.encode())


os.makedirs(FOLDER, exist_ok=True)
server = http.server.ThreadingHTTPServer(("127.0.0.1", PORT), Handler)
print(f"http://127.0.0.1:{server.server_port}/", flush=True)
server.serve_forever()
