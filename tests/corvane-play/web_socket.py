"""A browser's side of HTTP and of a WebSocket, plain enough to send what no browser sends."""
import base64
import os
import socket
import struct

TEXT, BINARY, CLOSE, PING, PONG = 1, 2, 8, 9, 10
PATIENCE = 60


def read_head(connection):
    """The status and the headers of a reply, and what came behind them; status 0 for no reply."""
    data = b""
    while b"\r\n\r\n" not in data:
        piece = connection.recv(65536)
        if not piece:
            return 0, {}, b""
        data += piece
    head, rest = data.split(b"\r\n\r\n", 1)
    lines = head.decode("latin-1").split("\r\n")
    headers = dict(line.split(": ", 1) for line in lines[1:])
    return int(lines[0].split()[1]), headers, rest


def request(port, target, method="GET", body=b"", **headers):
    """Status, headers and body of the reply to one request. A header of None is left out."""
    fields = {"Host": f"127.0.0.1:{port}", "Connection": "close"}
    fields |= {name.replace("_", "-"): value for name, value in headers.items()}
    if body:
        fields["Content-Length"] = str(len(body))
    head = "".join(f"{name}: {value}\r\n" for name, value in fields.items() if value is not None)
    with socket.create_connection(("127.0.0.1", port), timeout=PATIENCE) as connection:
        connection.sendall(f"{method} {target} HTTP/1.1\r\n{head}\r\n".encode() + body)
        status, answered, rest = read_head(connection)
        while piece := connection.recv(1 << 20):
            rest += piece
    return status, answered, rest


class Refused(Exception):
    """The WebSocket was not accepted; the status of the reply."""


class WebSocket:
    """Raises Refused when it is not accepted. A header of None is left out."""

    def __init__(self, port, target, receive_buffer=None, **headers):
        fields = {"Host": f"127.0.0.1:{port}", "Origin": f"http://127.0.0.1:{port}",
                  "Connection": "Upgrade", "Upgrade": "websocket", "Sec-WebSocket-Version": "13",
                  "Sec-WebSocket-Key": base64.b64encode(os.urandom(16)).decode()}
        fields |= {name.replace("_", "-"): value for name, value in headers.items()}
        self.socket = socket.socket()
        if receive_buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(("127.0.0.1", port))
        head = "".join(f"{name}: {value}\r\n" for name, value in fields.items()
                       if value is not None)
        self.socket.sendall(f"GET {target} HTTP/1.1\r\n{head}\r\n".encode())
        status, self.headers, self.rest = read_head(self.socket)
        if status != 101:
            self.socket.close()
            raise Refused(status)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, data, kind=BINARY, final=True):
        size = len(data)
        length = (struct.pack("!B", 128 | size) if size < 126 else
                  struct.pack("!BH", 128 | 126, size) if size < 65536 else
                  struct.pack("!BQ", 128 | 127, size))
        # A mask of zeros leaves the data as it is.
        self.socket.sendall(bytes([(128 if final else 0) | kind]) + length + bytes(4) + data)

    def close(self):
        self.send(struct.pack("!H", 1000), CLOSE)

    def reset(self):
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()

    def _take(self, count):
        pieces, size = [self.rest], len(self.rest)
        while size < count:
            piece = self.socket.recv(1 << 20)
            if not piece:
                raise ConnectionError("the connection has ended")
            pieces.append(piece)
            size += len(piece)
        data = b"".join(pieces)
        self.rest = data[count:]
        return data[:count]

    def frame(self):
        """Kind and data of the next frame."""
        kind, size = self._take(2)
        if size == 126:
            (size,) = struct.unpack("!H", self._take(2))
        elif size == 127:
            (size,) = struct.unpack("!Q", self._take(8))
        return kind & 15, self._take(size)

    def receive(self, count):
        """At least `count` bytes of data."""
        data = bytearray()
        while len(data) < count:
            kind, piece = self.frame()
            if kind == CLOSE:
                raise ConnectionError("the WebSocket has ended")
            if kind == PING:
                self.send(piece, PONG)
            else:
                assert kind == BINARY, kind
                data += piece
        return bytes(data)
