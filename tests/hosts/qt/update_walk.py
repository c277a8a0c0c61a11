#!/usr/bin/env python3
"""Frames travel, as a person sees it: a newer catalogue is published and served over HTTPS; the window offers it, fetches
it and shows the new frame; another frame is imported, and deleted again.

Usage: update_walk.py WINDOW-PROGRAM COMMAND SOURCE-DIR (status 77: something needed is not installed)
"""
import functools
import http.server
import json
import pathlib
import shutil
import ssl
import subprocess
import sys
import tempfile
import threading

import window_session

HOSTS = ["quillomat.localhost", "www.quillomat.localhost"]


def make_certificate(folder):
    """An authority of our own, and a certificate of it for both host names."""
    def openssl(*arguments):
        subprocess.run(["openssl", *arguments], check=True, cwd=folder, capture_output=True)

    (folder / "ca.cnf").write_text("[req]\ndistinguished_name=dn\nx509_extensions=ca\nprompt=no\n[dn]\nCN=Test authority\n"
                                   "[ca]\nbasicConstraints=critical,CA:true\n")
    (folder / "leaf.ext").write_text("subjectAltName=" + ",".join("DNS:" + host for host in HOSTS) + "\n")
    openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-config", "ca.cnf", "-keyout", "ca.key",
            "-out", "ca.pem")
    openssl("req", "-new", "-newkey", "rsa:2048", "-nodes", "-config", "ca.cnf", "-keyout", "leaf.key", "-out",
            "leaf.csr")
    openssl("x509", "-req", "-in", "leaf.csr", "-CA", "ca.pem", "-CAkey", "ca.key", "-CAcreateserial", "-days", "2",
            "-extfile", "leaf.ext", "-out", "leaf.pem")


def serve(site, certificates):
    class Quiet(http.server.SimpleHTTPRequestHandler):
        def log_message(self, *arguments):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=str(site)))
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificates / "leaf.pem", certificates / "leaf.key")
    server.socket = context.wrap_socket(server.socket, server_side=True)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def make_frame(folder, name, picture):
    folder.mkdir(parents=True, exist_ok=True)
    shutil.copy(picture, folder / f"{name}.png")
    corners = {"left_top": (153, 48), "right_top": (327, 48), "left_bottom": (153, 423), "right_bottom": (327, 423)}
    definition = {"template_width": 480, "template_height": 480, "corner_radius": 24, "author": "Ada"}
    for corner, (x, y) in corners.items():
        definition[corner + "_x"], definition[corner + "_y"] = x, y
    (folder / f"{name}.cfg").write_text(json.dumps(definition))


def walk(program, command, source, folder):
    catalogue = source / "tests/fixtures/catalogue"
    frame = catalogue / "images/upright.png"
    make_frame(folder / "maker", "visitor", frame)
    make_frame(folder / "visit/home/Downloads", "mine", frame)
    make_certificate(folder)
    subprocess.run([command, "publish", str(folder / "site"), "--row", "Fresh", "--resources", str(catalogue),
                    "--documents", str(folder / "maker")], check=True)
    port = serve(folder / "site", folder)

    session = window_session.Session(program, folder / "visit", "--resources", str(catalogue), "--reduce-motion",
                                     "--server", f"{HOSTS[0]}:{port}", "--cacert", str(folder / "ca.pem"))
    try:
        session.expect("Update Available", 20)
        session.press("Update Available")
        session.expect("Fresh", 30)
        session.expect_gone("Update Available")
        session.click("Fresh")
        session.expect("visitor.png")
        session.press("Back")
        print("the published frame has arrived")

        for name in ("mine.cfg", "mine.png"):
            session.press("Options")
            session.press("Import Mockup")
            session.click(name)
            session.expect_gone(name)
        for name in ("mine.cfg", "mine.png"):
            assert (session.documents / name).read_bytes() == (folder / "visit/home/Downloads" / name).read_bytes()
        session.click("Imported")
        session.click("mine.png")
        session.expect("Preview")
        print("the imported frame opens")

        session.press("Options")
        session.press("Delete Mockup")
        session.press("Ok")
        session.expect("Imported")
        assert not (session.documents / "mine.cfg").exists() and not (session.documents / "mine.png").exists()
        print("and is deleted again")
    finally:
        session.close()


if __name__ == "__main__":
    if shutil.which("openssl") is None:
        print("skipped: not installed: openssl")
        sys.exit(77)
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-update-") as scratch:
        walk(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]), pathlib.Path(scratch))
