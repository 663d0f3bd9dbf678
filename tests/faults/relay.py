# SPDX-License-Identifier: Apache-2.0
"""An HTTP relay in front of the server that cuts, resets, delays or drips the bytes it forwards."""

import re
import select
import socket
import struct
import threading
import time

INTERIM_RESPONSE = b"HTTP/1.1 102 Processing\r\n\r\n"


def exchange_of(request):
    """Which of the library's three exchanges this request belongs to."""
    if request.startswith(b"GET"):
        return "configuration"
    return "version" if b"<getVersionInfo " in request else "report"


def is_whole(message):
    head, end, body = message.partition(b"\r\n\r\n")
    if not end:
        return False
    length = re.search(rb"\r\nContent-Length: *(\d+)", head, re.IGNORECASE)
    return len(body) >= (int(length.group(1)) if length else 0)


def receive(source, watched=None):
    """Reads one HTTP message, incomplete if `source` ends early; None if `watched` disconnects."""
    message = b""
    while not is_whole(message):
        ready = select.select([source] + ([watched] if watched else []), [], [])[0]
        if watched in ready:
            return None
        part = source.recv(65536)
        if not part:
            break
        message += part
    return message


def reset(connection):
    """Makes the next close() reset the connection."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


class Relay:
    """Listens on a free port and plays `fault` in each exchange of the kind `exchange`.

    Depending on the fault, `amount` is the number of bytes to forward before it (modulo the length of
    the response), or in microseconds the pause between bytes or the delay before the server is killed.
    """

    def __init__(self, server_port, kill_server):
        self.server_port = server_port
        self._kill_server = kill_server
        self.play()
        self._listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def play(self, fault=None, exchange="report", amount=0):
        self._plan = (fault, exchange, amount)

    def _accept(self):
        while True:
            client = self._listener.accept()[0]
            threading.Thread(target=self._serve, args=[client], daemon=True).start()

    def _serve(self, client):
        with client:
            client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            try:
                while self._relay(client):
                    pass
            except OSError:
                pass  # either side reset its connection

    def _relay(self, client):
        """Forwards one exchange. Returns whether the connection can be used for another."""
        request = receive(client)
        fault, exchange, amount = self._plan
        if not is_whole(request):
            return False
        if exchange_of(request) != exchange:
            fault = None
        if fault == "reset before request":
            reset(client)
            return False
        if fault == "hang":
            client.recv(1)
            return False
        if fault == "kill first":
            self._kill_server()
        with socket.create_connection(("127.0.0.1", self.server_port)) as server:
            server.sendall(request)
            if fault == "kill":
                time.sleep(amount / 1e6)
                self._kill_server()
            response = receive(server, client)
        return response is not None and self._respond(client, response, fault, amount)

    def _respond(self, client, response, fault, amount):
        if fault == "interim":
            client.sendall(INTERIM_RESPONSE)
        if fault == "drip":
            for byte in response:
                time.sleep(amount / 1e6)
                client.sendall(bytes([byte]))
        elif fault in ("cut", "reset"):
            client.sendall(response[: amount % (len(response) + 1)])
        else:
            client.sendall(response)
        if fault in ("reset", "reset after"):
            reset(client)
        return fault not in ("cut", "reset", "reset after") and is_whole(response)
