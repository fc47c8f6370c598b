"""A directory that answers every request with one page and notes when it came."""

import socket
import threading
import time


class PageServer:
    def __init__(self, page):
        self.answer = (b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: %d\r\n\r\n"
                       % len(page)) + page
        self.times = []
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def close(self):
        self.listener.close()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=self.serve, args=(client,), daemon=True).start()

    def serve(self, client):
        received = b""
        with client:
            while data := client.recv(65536):
                received += data
                while b"\r\n\r\n" in received:
                    received = received.split(b"\r\n\r\n", 1)[1]
                    self.times.append(time.monotonic())
                    client.sendall(self.answer)

    def take_span(self):
        """Milliseconds from the first request to the last."""
        span = (self.times[-1] - self.times[0]) * 1000
        self.times.clear()
        return span
