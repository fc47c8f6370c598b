"""A directory that answers every request with one page and notes when it came."""

import socketserver
import threading
import time


class _Client(socketserver.StreamRequestHandler):
    disable_nagle_algorithm = True

    def handle(self):
        for line in self.rfile:
            if line == b"\r\n":  # the end of a request
                self.server.times.append(time.monotonic())
                self.wfile.write(self.server.answer)


class PageServer(socketserver.ThreadingTCPServer):
    daemon_threads = True

    def __init__(self, page):
        super().__init__(("127.0.0.1", 0), _Client)
        self.answer = (b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: %d\r\n\r\n"
                       % len(page)) + page
        self.times = []
        self.port = self.server_address[1]
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def take_span(self):
        """Milliseconds from the first request to the last."""
        span = (self.times[-1] - self.times[0]) * 1000
        self.times.clear()
        return span
