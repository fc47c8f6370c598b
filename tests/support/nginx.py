"""nginx in front of a radio, with an authority and certificates of the test's own;
what stands behind it, and what cuts the line in between."""

import os
import select
import shutil
import socket
import struct
import subprocess
import threading

import processes

# Host, who signs, and for how many days.
CERTIFICATES = {
    "good": ("localhost", "authority", 2),
    "expired": ("localhost", "authority", -1),
    "wrong-host": ("radio.example", "authority", 2),
    "unknown": ("localhost", "other", 2),
}
# Of a kind that is made in no time.
NEW_KEY = "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"


def openssl(folder, *words):
    processes.run(["openssl", *words], cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def listening():
    return socket.create_server(("127.0.0.1", 0))


def free_ports(count):
    sockets = [listening() for _ in range(count)]
    ports = [s.getsockname()[1] for s in sockets]
    for each in sockets:
        each.close()
    return ports


class Authority:
    """Certificates by name, as files NAME.pem and NAME.key; its own as authority.pem."""

    def __init__(self, folder):
        self.folder = folder
        for name in "authority", "other":
            self._sign_itself(name, f"/CN=Kestrel test {name}")
        self._sign_itself("self-signed", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost")
        for name, (host, issuer, days) in CERTIFICATES.items():
            openssl(folder, "req", *NEW_KEY, "-subj", "/CN=" + host, "-addext",
                    "subjectAltName=DNS:" + host, "-keyout", name + ".key", "-out", name + ".csr")
            openssl(folder, "x509", "-req", "-in", name + ".csr", "-CA", issuer + ".pem", "-CAkey",
                    issuer + ".key", "-CAcreateserial", "-copy_extensions", "copy", "-days", str(days),
                    "-out", name + ".pem")

    def _sign_itself(self, name, subject, *words):
        openssl(self.folder, "req", "-x509", *NEW_KEY, "-days", "2", "-subj", subject,
                *words, "-keyout", name + ".key", "-out", name + ".pem")


class Nginx:
    """A port for each certificate, one for plain http; all lead to the same places:
    /files/ (in the folder), /radio/ and /scripted/ (two servers behind), /dead/,
    /to/ADDRESS (a redirect)."""

    def __init__(self, folder, radio_port, scripted_port):
        self.folder = folder
        self.names = ["http", *CERTIFICATES, "self-signed"]
        os.mkdir(os.path.join(folder, "files"))
        for _ in range(5):  # somebody may take a port in between
            self.ports = dict(zip(self.names, free_ports(len(self.names))))
            self._write(radio_port, scripted_port)
            if self.start():
                return
        with open(os.path.join(folder, "error.log")) as log:
            raise RuntimeError("nginx does not start: " + log.read())

    def url(self, path, name="good"):
        return f"{'http' if name == 'http' else 'https'}://localhost:{self.ports[name]}{path}"

    def start(self):
        program = shutil.which("nginx", path=os.environ["PATH"] + ":/usr/sbin")
        self.process = processes.start([program, "-p", self.folder, "-c", "nginx.conf", "-e", "error.log"],
                                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
        processes.wait_for(lambda: self.process.poll() is not None or self._answers(), "nginx")
        return self.process.poll() is None

    def _answers(self):
        with socket.socket() as client:
            return client.connect_ex(("127.0.0.1", self.ports["http"])) == 0

    def kill(self):
        self.process.kill()
        self.process.wait()

    def close(self):
        processes.end(self.process)

    def _write(self, radio_port, scripted_port):
        places = f"""
            location /files/ {{ root .; }}
            location /radio/ {{ proxy_pass http://127.0.0.1:{radio_port}/; }}
            location /scripted/ {{ proxy_pass http://127.0.0.1:{scripted_port}/; }}
            location /dead/ {{ proxy_pass http://127.0.0.1:9/; }}
            location ~ ^/to/(.*)$ {{ return 302 $1; }}
            location /loop {{ return 302 $scheme://$http_host/loop; }}
            location /page {{ default_type text/html; return 200 "<html>about us</html>"; }}"""
        servers = "".join(
            f"server {{ listen 127.0.0.1:{port}"
            + ("; " if name == "http" else f" ssl; ssl_certificate {name}.pem; ssl_certificate_key {name}.key; ")
            + places + "}\n"
            for name, port in self.ports.items())
        temporary = "".join(f"{kind}_temp_path temporary;" for kind in
                            ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
        with open(os.path.join(self.folder, "nginx.conf"), "w") as file:
            file.write(f"""daemon off; master_process off; pid nginx.pid;
                events {{ worker_connections 200; }}
                http {{ access_log off; {temporary} merge_slashes off; lingering_close off;
                proxy_buffering off; proxy_read_timeout 1h;
                {servers} }}""")


class ScriptedServer:
    """One connection after another whose answer the test writes itself."""

    def __init__(self):
        self.listener = listening()
        self.listener.settimeout(20)
        self.port = self.listener.getsockname()[1]
        self.client = None

    def answer(self, data):
        """Waits for a client's request."""
        self.leave()
        self.client, _ = self.listener.accept()
        self.client.settimeout(20)
        request = b""
        while b"\r\n\r\n" not in request and (piece := self.client.recv(4096)):
            request += piece
        self.send(data)

    def send(self, data):
        self.client.sendall(data)

    def leave(self):
        if self.client:
            self.client.close()
        self.client = None

    def close(self):
        self.leave()
        self.listener.close()


class Line:
    """Lies in front of a port and passes on what comes, until it is told to break."""

    def __init__(self, port):
        self.inner_port = port
        self.break_next = threading.Event()
        self.listener = listening()
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def close(self):
        self.listener.close()

    def _accept(self):
        try:
            while True:
                client, _ = self.listener.accept()
                threading.Thread(target=self._join, args=(client,), daemon=True).start()
        except OSError:
            pass  # it is closed

    def _join(self, client):
        try:
            with client, socket.create_connection(("127.0.0.1", self.inner_port)) as server:
                while data := (ready := select.select([client, server], [], [])[0][0]).recv(65536):
                    if ready is client:
                        server.sendall(data)
                    elif not self.break_next.is_set():
                        client.sendall(data)
                    else:
                        # Within one of TLS's records: none is so short.
                        self.break_next.clear()
                        client.sendall(data[:-5])
                        client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
                        return
        except OSError:
            pass  # one of them has left
