#!/usr/bin/env python3
"""A small HTTP/1.1 server that misbehaves on request, for testing download clients.

It serves the files below --root on 127.0.0.1, on a free port chosen at start, and
prints that port as the first line of its output. It stops by itself after
--lifetime seconds (or on SIGTERM/SIGINT).

GET /<file>?<behaviour>&... serves the file; behaviours combine where they make sense:

  (none)              the file, honouring "Range: bytes=A-" and "bytes=A-B" (206, Content-Range);
                      a range that starts at or past the end gets 416 with "bytes */<size>"
  status=N            answer status N with a short text body instead of the file
  ignore_range=1      answer 200 with the whole file even when a range was asked for
  lenient_range=1     answer a range past the end with 206, "bytes */<size>" and no body
  cut_at=N            close the connection when the body reaches file offset N
  stall_at=N          pause stall_ms (default 3000) when the body reaches file offset N
  corrupt_at=N        send the byte at file offset N inverted
  corrupt_ranges=1    send the first byte of every 206 body inverted (whole bodies stay sound)
  no_length=1         send no Content-Length; the body ends when the connection closes
  encoding=gzip|deflate  send the whole file compressed with that content coding when the
                      request's Accept-Encoding names it (as a real server would)
  redirect=/other     answer 302 with Location: /other
  chunk=N             write the body in pieces of N bytes (default 65536)
  trickle_ms=N        pause N ms before each piece
  endless=1           answer 200 with the file over and over, without Content-Length, until
                      the client hangs up; only a client that keeps no cap gets to the end,
                      after 64 MiB, which the file's log then shows as "ENDLESS BODY SENT WHOLE"
                      (a test fails there rather than exhaust the machine's memory)

The offset rules apply only to a response that starts before the offset, so a client
that resumes past it is served normally.

Behaviours may also be written beside a file, as a query string in <file>.fault, for
clients whose addresses cannot carry one (a patch host's files); the request's own
query comes on top.

GET /__log/<file> lists the requests seen for /<file>, one line each:
"GET <target> | Range: <value or -> | User-Agent: <value> | Accept-Encoding: <value>".
"""

import argparse
import gzip
import os
import signal
import socket
import sys
import threading
import time
import zlib
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, unquote, urlsplit

LOG_PREFIX = "/__log/"
ENDLESS_LIMIT = 64 * 1024 * 1024


class RequestLog:
    def __init__(self):
        self._lock = threading.Lock()
        self._lines = {}

    def add(self, path, line):
        with self._lock:
            self._lines.setdefault(path, []).append(line)

    def lines(self, path):
        with self._lock:
            return list(self._lines.get(path, []))


def parse_range(header, size):
    """Returns (start, end_inclusive) for a single "bytes=" range, or None when absent or malformed."""
    if not header or not header.startswith("bytes=") or "," in header:
        return None
    first, _, last = header[len("bytes="):].partition("-")
    if not first.isdigit() or (last and not last.isdigit()):
        return None
    start = int(first)
    end = int(last) if last else size - 1
    return start, min(end, size - 1)


class FaultHandler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    server_version = "fault-server"

    def log_message(self, fmt, *args):
        pass

    def do_GET(self):
        target = urlsplit(self.path)
        path = unquote(target.path)
        if path.startswith(LOG_PREFIX):
            self.send_log("/" + path[len(LOG_PREFIX):])
            return
        self.server.request_log.add(path, " | ".join([
            "GET " + self.path,
            "Range: " + (self.headers.get("Range") or "-"),
            "User-Agent: " + (self.headers.get("User-Agent") or "-"),
            "Accept-Encoding: " + (self.headers.get("Accept-Encoding") or "-"),
        ]))
        options = self.sidecar_options(path)
        options.update({k: v[-1] for k, v in parse_qs(target.query).items()})
        if "status" in options:
            self.send_text(int(options["status"]), "status %s\n" % options["status"])
            return
        if "redirect" in options:
            self.send_response(302)
            self.send_header("Location", options["redirect"])
            self.send_header("Content-Length", "0")
            self.end_headers()
            return
        data = self.read_file(path)
        if data is None:
            self.send_text(404, "no such file\n")
            return
        self.send_file(path, data, options)

    def read_file(self, path):
        relative = os.path.normpath(path.lstrip("/"))
        if relative.startswith("..") or os.path.isabs(relative):
            return None
        try:
            with open(os.path.join(self.server.root, relative), "rb") as f:
                return f.read()
        except OSError:
            return None

    def sidecar_options(self, path):
        data = self.read_file(path + ".fault")
        return {} if data is None else {k: v[-1] for k, v in parse_qs(data.decode().strip()).items()}

    def send_text(self, status, text):
        body = text.encode()
        self.send_response(status)
        self.send_header("Content-Type", "text/plain")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def send_log(self, path):
        self.send_text(200, "".join(line + "\n" for line in self.server.request_log.lines(path)))

    def send_file(self, path, data, options):
        size = len(data)
        encoding = options.get("encoding")
        accepted = [c.split(";")[0].strip() for c in (self.headers.get("Accept-Encoding") or "").split(",")]
        if encoding in accepted:
            self.send_encoded(data, encoding)
            return
        if options.get("endless"):
            self.send_endless(path, data, options)
            return
        wanted = None if options.get("ignore_range") else parse_range(self.headers.get("Range"), size)
        start, end, status = 0, size - 1, 200
        if wanted is not None:
            start, end = wanted
            if start >= size:
                if not options.get("lenient_range"):
                    self.send_response(416)
                    self.send_header("Content-Range", "bytes */%d" % size)
                    self.send_header("Content-Length", "0")
                    self.end_headers()
                    return
                start, end = size, size - 1
            status = 206
        self.send_response(status)
        self.send_header("Content-Type", "application/octet-stream")
        self.send_header("Accept-Ranges", "bytes")
        if status == 206:
            if start < size:
                self.send_header("Content-Range", "bytes %d-%d/%d" % (start, end, size))
            else:
                self.send_header("Content-Range", "bytes */%d" % size)
        if options.get("no_length"):
            self.send_header("Connection", "close")
            self.close_connection = True
        else:
            self.send_header("Content-Length", str(max(0, end + 1 - start)))
        self.end_headers()
        self.stream_body(data, start, end + 1, options, status == 206 and options.get("corrupt_ranges"))

    def send_encoded(self, data, encoding):
        if encoding == "gzip":
            body = gzip.compress(data)
        else:
            body = zlib.compress(data)
        self.send_response(200)
        self.send_header("Content-Type", "application/octet-stream")
        self.send_header("Content-Encoding", encoding)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def send_endless(self, path, data, options):
        self.send_response(200)
        self.send_header("Content-Type", "application/octet-stream")
        self.send_header("Connection", "close")
        self.close_connection = True
        self.end_headers()
        unit = (data or b"\0") * max(1, 65536 // max(1, len(data)))  # few writes even for a tiny file
        for _ in range(ENDLESS_LIMIT // len(unit)):
            if not self.stream_body(unit, 0, len(unit), options):
                return
        self.server.request_log.add(path, "ENDLESS BODY SENT WHOLE")

    def stream_body(self, data, start, stop, options, corrupt_first=False):
        """Writes data[start:stop] with the options' faults; false once the connection is gone or cut."""
        chunk = max(1, int(options.get("chunk", 65536)))
        cut_at = self.offset_option(options, "cut_at", start)
        stall_at = self.offset_option(options, "stall_at", start)
        corrupt_at = start if corrupt_first else self.offset_option(options, "corrupt_at", start)
        stall_seconds = int(options.get("stall_ms", 3000)) / 1000.0
        trickle_seconds = int(options.get("trickle_ms", 0)) / 1000.0
        position = start
        while position < stop:
            piece_end = min(stop, position + chunk)
            for mark in (cut_at, stall_at):
                if mark is not None and position < mark < piece_end:
                    piece_end = mark
            if position == cut_at:
                self.cut_connection()
                return False
            if position == stall_at:
                self.wfile.flush()
                time.sleep(stall_seconds)
            if trickle_seconds:
                self.wfile.flush()
                time.sleep(trickle_seconds)
            piece = bytearray(data[position:piece_end])
            if corrupt_at is not None and position <= corrupt_at < piece_end:
                piece[corrupt_at - position] ^= 0xFF
            try:
                self.wfile.write(piece)
            except OSError:
                return False
            position = piece_end
        return True

    @staticmethod
    def offset_option(options, name, start):
        value = options.get(name)
        if value is None or int(value) <= start:
            return None
        return int(value)

    def cut_connection(self):
        self.wfile.flush()
        self.close_connection = True
        try:
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass


class FaultServer(ThreadingHTTPServer):
    daemon_threads = True
    block_on_close = False  # a stalled response must not hold up the shutdown

    def __init__(self, root):
        super().__init__(("127.0.0.1", 0), FaultHandler)
        self.root = root
        self.request_log = RequestLog()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", required=True, help="folder whose files are served")
    parser.add_argument("--lifetime", type=float, default=900, help="seconds before the server stops by itself")
    args = parser.parse_args()

    server = FaultServer(os.path.abspath(args.root))
    print(server.server_address[1], flush=True)

    stop = threading.Event()
    for sig in (signal.SIGTERM, signal.SIGINT):
        signal.signal(sig, lambda *_: stop.set())
    worker = threading.Thread(target=server.serve_forever, daemon=True)
    worker.start()
    stop.wait(args.lifetime)
    server.shutdown()
    server.server_close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
