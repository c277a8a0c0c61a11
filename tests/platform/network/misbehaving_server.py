#!/usr/bin/python3
"""A TLS web server that answers wrongly, each path in a way of its own.

    misbehaving_server.py CERTIFICATE KEY

Prints one line of JSON with its ports ("tls", and "mute", which accepts connections and never speaks) and serves until
its standard input ends.
"""

import gzip
import json
import socket
import ssl
import struct
import sys
import threading
import time

DOCUMENT = b'{"version": "2.0"}' * 50
requests = []


def head(status="200 OK", *fields):
    lines = [f"HTTP/1.1 {status}", "Content-Type: application/json", *fields]
    return ("\r\n".join(lines) + "\r\n\r\n").encode()


def length(number):
    return f"Content-Length: {number}"


def send(stream, *parts):
    for part in parts:
        stream.sendall(part)


def whole(stream, body, status="200 OK", *fields):
    send(stream, head(status, length(len(body)), *fields), body)


def drip(stream, first, piece, pause):
    send(stream, first)
    while True:
        time.sleep(pause)
        send(stream, piece)


def flood(stream, first, piece):
    send(stream, first)
    while True:
        send(stream, piece)


def break_off(stream):
    stream.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    drop(stream)


def drop(stream):
    """Closes the connection without the words that end a TLS session."""
    socket.socket(fileno=stream.detach()).close()


def chunk(body):
    return b"%x\r\n%s\r\n" % (len(body), body)


def redirect(target):
    return lambda stream: whole(stream, b"elsewhere", "302 Found", f"Location: {target}")


def answers(port):
    megabyte = bytes(1 << 20)
    here = f"https://localhost:{port}"
    chunked = "Transfer-Encoding: chunked"
    packed = gzip.compress(DOCUMENT)
    bomb = gzip.compress(bytes(50 << 20), 9)
    return {
        "/good": lambda s: whole(s, DOCUMENT),
        "/good-gzip": lambda s: whole(s, packed, "200 OK", "Content-Encoding: gzip"),
        "/good-chunked": lambda s: send(s, head("200 OK", chunked), chunk(DOCUMENT), chunk(b"")),
        "/good-then-reset": lambda s: (whole(s, DOCUMENT), time.sleep(0.1), break_off(s)),
        "/good-then-silent": lambda s: (whole(s, DOCUMENT), time.sleep(60)),
        "/without-length": lambda s: send(s, head("200 OK", "Connection: close"), DOCUMENT),
        "/count": lambda s: whole(s, str(len(requests)).encode()),
        "/silent": lambda s: time.sleep(60),
        "/silent-after-head": lambda s: (send(s, head("200 OK", length(100))), time.sleep(60)),
        "/slow": lambda s: drip(s, head("200 OK", length(100000)), b"x", 0.2),
        "/steady-but-endless": lambda s: drip(s, head(), bytes(20000), 0.05),
        "/slow-head": lambda s: drip(s, b"HTTP/1.1 200 OK\r\n", b"X", 0.2),
        "/endless": lambda s: flood(s, head(), megabyte),
        "/endless-chunks": lambda s: flood(s, head("200 OK", chunked), chunk(megabyte)),
        "/endless-head": lambda s: flood(s, b"HTTP/1.1 200 OK\r\n", b"X-Again: and again\r\n" * 100),
        "/endless-line": lambda s: flood(s, b"HTTP/1.1 200 OK\r\nX-Long: ", b"x" * 4096),
        "/gigabytes": lambda s: flood(s, head("200 OK", length(8 << 30)), megabyte),
        "/gzip-bomb": lambda s: whole(s, bomb, "200 OK", "Content-Encoding: gzip"),
        "/truncated": lambda s: send(s, head("200 OK", length(len(DOCUMENT))), DOCUMENT[:200]),
        "/truncated-chunks": lambda s: send(s, head("200 OK", chunked), chunk(DOCUMENT)[:200]),
        "/last-chunk-missing": lambda s: send(s, head("200 OK", chunked), chunk(DOCUMENT)),
        "/truncated-gzip": lambda s: whole(s, packed[:-12], "200 OK", "Content-Encoding: gzip"),
        "/damaged-gzip": lambda s: whole(s, packed[:30] + b"!!" + packed[32:], "200 OK", "Content-Encoding: gzip"),
        "/no-gzip-at-all": lambda s: whole(s, DOCUMENT, "200 OK", "Content-Encoding: gzip"),
        "/unknown-compression": lambda s: whole(s, DOCUMENT, "200 OK", "Content-Encoding: br"),
        "/dropped-without-length": lambda s: (send(s, head("200 OK", "Connection: close"), DOCUMENT[:200]), drop(s)),
        "/longer-than-announced": lambda s: send(s, head("200 OK", length(200)), DOCUMENT),
        "/negative-length": lambda s: send(s, head("200 OK", length(-5)), DOCUMENT),
        "/two-lengths": lambda s: send(s, head("200 OK", length(5), length(len(DOCUMENT))), DOCUMENT),
        "/length-of-no-number": lambda s: send(s, head("200 OK", "Content-Length: 900 and some"), DOCUMENT),
        "/reset": lambda s: (
            send(s, head("200 OK", length(len(DOCUMENT))), DOCUMENT[:200]),
            time.sleep(0.1),
            break_off(s),
        ),
        "/empty": lambda s: whole(s, b""),
        "/no-content": lambda s: whole(s, b"", "204 No Content"),
        "/partial": lambda s: whole(s, DOCUMENT, "206 Partial Content", "Content-Range: bytes 0-899/1800"),
        "/404": lambda s: whole(s, b"<html>not here</html>", "404 Not Found"),
        "/500": lambda s: whole(s, DOCUMENT, "500 Internal Server Error"),
        "/endless-500": lambda s: flood(s, head("500 Internal Server Error"), megabyte),
        "/not-http": lambda s: send(s, b"\x00\x01\x02 what is this\r\n\r\n" * 20),
        "/closed-at-once": lambda s: None,
        "/garbage": lambda s: whole(s, bytes(range(256))),
        "/html": lambda s: whole(s, b"<html>please log in</html>", "200 OK", "Content-Type: text/html"),
        "/redirect": redirect(f"{here}/good"),
        "/redirect-relative": redirect("/good"),
        "/redirect-to-http": redirect(f"http://localhost:{port}/good"),
        "/redirect-to-file": redirect("file:///etc/hostname"),
        "/redirect-loop": redirect(f"{here}/redirect-loop"),
        "/redirect-to-another-host": redirect(f"https://127.0.0.1:{port}/good"),
    }


def read_request(stream):
    """One request's path, or nothing when the client is done with the connection."""
    text = b""
    while b"\r\n\r\n" not in text:
        part = stream.recv(4096)
        if not part:
            return None
        text += part
    return text.split(b" ", 2)[1].decode()


def converse(connection, context, table):
    stream = None
    try:
        connection.settimeout(60)
        stream = context.wrap_socket(connection, server_side=True)
        path = read_request(stream)
        if path is None:
            return
        requests.append(path)
        table.get(path, table["/404"])(stream)
        if stream.fileno() >= 0:
            stream.unwrap()
    except (OSError, ValueError):
        pass  # The client hung up, as it should here and there.
    finally:
        if stream is not None and stream.fileno() >= 0:
            stream.close()
        connection.close()


def listen():
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    listener.bind(("127.0.0.1", 0))
    listener.listen(32)
    return listener


def accept_all(listener, handle):
    kept = []
    while True:
        connection, _ = listener.accept()
        kept.append(handle(connection))


def main():
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[1], sys.argv[2])
    tls, mute = listen(), listen()
    table = answers(tls.getsockname()[1])

    def start(connection):
        threading.Thread(target=converse, args=(connection, context, table), daemon=True).start()

    threading.Thread(target=accept_all, args=(tls, start), daemon=True).start()
    threading.Thread(target=accept_all, args=(mute, lambda connection: connection), daemon=True).start()
    print(json.dumps({"tls": tls.getsockname()[1], "mute": mute.getsockname()[1]}), flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
