"""A stand-in for the chat completions service: HTTP/1.1 on a loopback socket, byte for byte under control."""

import json
import select
import socket
import ssl
import struct
import subprocess
import threading
import time
from dataclasses import dataclass, field

from .waiting import wait_until


def sse(text):
    """One streamed chunk that carries `text`, as the service writes it."""
    chunk = {"id": "chatcmpl-1", "object": "chat.completion.chunk", "created": 1700000000, "model": "gpt-4o-mini",
             "choices": [{"index": 0, "delta": {"content": text}, "finish_reason": None}]}
    return b"data: " + json.dumps(chunk, ensure_ascii=False, separators=(",", ":")).encode() + b"\n\n"


DONE = b"data: [DONE]\n\n"


@dataclass
class Request:
    """`received_at` is of time.monotonic(). `abandoned`: the client closed the connection while it was answered."""
    method: str
    path: str
    headers: dict
    body: bytes
    connection: int
    received_at: float
    abandoned: bool = False
    answered: threading.Event = field(default_factory=threading.Event)

    @property
    def json(self):
        return json.loads(self.body)

    @property
    def messages(self):
        return [(message["role"], message["content"]) for message in self.json["messages"]]

    @property
    def prompt(self):
        """The content of the last message."""
        return self.messages[-1][1]


class Exchange:
    """One request and the pen that writes its answer. Methods raise ConnectionError once the client is gone."""

    def __init__(self, connection, request, stopping):
        self.connection = connection
        self.request = request
        self._stopping = stopping
        self._chunked = False

    def head(self, status=200, reason="OK", headers=(), chunked=True):
        self._chunked = chunked
        lines = [f"HTTP/1.1 {status} {reason}", "Content-Type: text/event-stream; charset=utf-8"]
        lines += ["Transfer-Encoding: chunked"] if chunked else []
        lines += [f"{name}: {value}" for name, value in headers]
        self.write(("\r\n".join(lines) + "\r\n\r\n").encode())

    def write(self, data):
        """Bytes as they are, in a packet of their own."""
        self.connection.sendall(data)

    def send(self, data):
        """Bytes of the body."""
        self.write(b"%x\r\n%s\r\n" % (len(data), data) if self._chunked else data)

    def text(self, text):
        self.send(sse(text))

    def end(self):
        """The end of the body."""
        if self._chunked:
            self.write(b"0\r\n\r\n")

    def error(self, status, reason, body=b'{"error":{"message":"Not for the user"}}'):
        self.write(b"HTTP/1.1 %d %s\r\nContent-Type: application/json\r\nContent-Length: %d\r\n\r\n%s"
                   % (status, reason.encode(), len(body), body))

    def answer(self, *texts, pace=0.0):
        """A whole well-formed answer, one chunk per text."""
        self.head()
        for text in texts:
            self.text(text)
            if pace:
                self.pause(pace)
        self.send(DONE)
        self.end()

    def pause(self, seconds):
        """Silence; ConnectionError when the client closes meanwhile."""
        self._wait(lambda: False, seconds)

    def until(self, event, timeout=30.0):
        """Silence until a threading.Event is set."""
        self._wait(event.is_set, timeout)

    def hold(self, timeout=30.0):
        """Silence until the client closes the connection."""
        try:
            self._wait(lambda: False, timeout)
        except ConnectionError:
            return
        raise TimeoutError("the client kept the connection")

    def is_abandoned(self, milliseconds=0):
        """Whether the client has closed the connection, or does within that time."""
        if not self.request.abandoned:
            poll = select.poll()
            poll.register(self.connection, select.POLLRDHUP)
            if poll.poll(milliseconds):
                self.request.abandoned = True
        return self.request.abandoned

    def _wait(self, condition, timeout):
        deadline = time.monotonic() + timeout
        while not condition() and time.monotonic() < deadline:
            if self.is_abandoned(1):
                raise ConnectionError("closed by the client")
            if self._stopping.is_set():
                raise ConnectionError("the service stops")

    def reset(self):
        """Breaks the connection off with a TCP reset."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.connection.close()
        raise ConnectionError("reset")


def _make_certificate(folder):
    """A certificate for 127.0.0.1 in a folder in the form in which OpenSSL looks certificates up."""
    key, certificate = folder / "key", folder / "authority.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                    "-keyout", key, "-out", certificate, "-days", "2", "-subj", "/CN=Stand-in", "-addext",
                    "subjectAltName=IP:127.0.0.1"], check=True, capture_output=True)
    subprocess.run(["openssl", "rehash", folder], check=True, capture_output=True)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    return context


class StandInService:
    """`answer(exchange)` is called for each request on the thread of its connection.

    With a folder for a `certificate` it speaks TLS; the folder is then what SSL_CERT_DIR has to name.
    """

    def __init__(self, answer=None, certificate=None):
        self.answer = answer or (lambda exchange: exchange.answer("Answer."))
        self.requests = []
        self.connections = 0
        self.failures = []
        self._stopping = threading.Event()
        self._sockets = []
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._tls = certificate and _make_certificate(certificate)
        self.url = f"{'https' if certificate else 'http'}://127.0.0.1:{self.port}/v1"
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            self.connections += 1
            self._sockets.append(connection)
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=self._serve, args=(connection, self.connections), daemon=True).start()

    def _serve(self, connection, number):
        try:
            if self._tls:
                connection = self._tls.wrap_socket(connection, server_side=True)
            while request := self._read(connection, number):
                self.requests.append(request)
                try:
                    self.answer(Exchange(connection, request, self._stopping))
                finally:
                    request.answered.set()
        except (ConnectionError, OSError):
            pass
        except Exception as error:  # a mistake in a test's answer must not look like a silent server
            self.failures.append(error)
        finally:
            connection.close()

    @staticmethod
    def _read(connection, number):
        data = b""
        received_at = None
        while b"\r\n\r\n" not in data:
            more = connection.recv(65536)
            received_at = received_at or time.monotonic()
            if not more:
                return None
            data += more
        head, _, body = data.partition(b"\r\n\r\n")
        first, *lines = head.decode("latin-1").split("\r\n")
        headers = {name.strip().lower(): value.strip() for name, _, value in (line.partition(":") for line in lines)}
        if headers.get("expect") == "100-continue":
            connection.sendall(b"HTTP/1.1 100 Continue\r\n\r\n")
        while len(body) < int(headers.get("content-length", 0)):
            more = connection.recv(65536)
            if not more:
                return None
            body += more
        method, path, _ = first.split(" ", 2)
        return Request(method, path, headers, body, number, received_at)

    def wait_for_requests(self, count, timeout=15.0):
        """The newest request, once there have been `count` of them."""
        wait_until(lambda: len(self.requests) >= count, f"request {count} (there are {len(self.requests)})", timeout)
        return self.requests[count - 1]

    def close(self):
        self._stopping.set()
        # The shutdown wakes accept(); closing alone leaves it waiting.
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        for connection in self._sockets:
            connection.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
