#!/usr/bin/python3
"""A maker's TLS web server that serves a folder, and goes wrong where it is told to.

    faulty_site.py CERTIFICATE KEY ROOT

ROOT/faults.json maps "HOST PATH" (HOST is "short" or "long") to what the first, second, ... request for it gets, the
last for all that follow: "good", one of the misbehaving server's paths such as "/truncated", "halt" (the connection
stays open and nothing is said), or "file:NAME", another file of ROOT. Both files are read afresh at each request, and
each request is a line in ROOT/requests.log before it is answered. Prints its port and serves until its standard input
ends.
"""

import json
import pathlib
import ssl
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "platform" / "network"))
import misbehaving_server as wrong  # noqa: E402

counts = {}
lock = threading.Lock()


def read_head(stream):
    text = b""
    while b"\r\n\r\n" not in text:
        part = stream.recv(4096)
        if not part:
            return None, None
        text += part
    lines = text.decode("latin-1").split("\r\n")
    host = next((line[5:].strip() for line in lines if line.lower().startswith("host:")), "")
    return ("long" if host.startswith("www.") else "short"), lines[0].split(" ")[1]


def behaviour(root, key):
    with lock:
        number = counts.get(key, 0)
        counts[key] = number + 1
        with open(root / "requests.log", "a", encoding="utf-8") as log:
            log.write(key + "\n")
    planned = json.loads((root / "faults.json").read_text()).get(key, ["good"])
    return planned[min(number, len(planned) - 1)]


def answer(stream, root, table, host, path):
    how = behaviour(root, f"{host} {path}")
    if how == "halt":
        time.sleep(60)
    elif how.startswith("/"):
        table[how](stream)
    else:
        name = path.lstrip("/") if how == "good" else how.removeprefix("file:")
        file = (root / name).resolve()
        if root in file.parents and file.is_file():
            wrong.whole(stream, file.read_bytes())
        else:
            table["/404"](stream)


def converse(connection, context, root, table):
    stream = None
    try:
        connection.settimeout(60)
        stream = context.wrap_socket(connection, server_side=True)
        host, path = read_head(stream)
        if path is not None:
            answer(stream, root, table, host, path)
        if stream.fileno() >= 0:
            stream.unwrap()
    except (OSError, ValueError):
        pass  # The client hung up, or was killed.
    finally:
        if stream is not None and stream.fileno() >= 0:
            stream.close()
        connection.close()


def main():
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[1], sys.argv[2])
    root = pathlib.Path(sys.argv[3]).resolve()
    listener = wrong.listen()
    table = wrong.answers(listener.getsockname()[1])

    def start(connection):
        threading.Thread(target=converse, args=(connection, context, root, table), daemon=True).start()

    threading.Thread(target=wrong.accept_all, args=(listener, start), daemon=True).start()
    print(listener.getsockname()[1], flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
