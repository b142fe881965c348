"""The server of `voxloc live`, byte by byte: who gets an answer and which."""

import argparse
import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import inputs

CHANNELS = 6
FRAME_BYTES = inputs.FRAME * CHANNELS * 3
TOKEN = "a-token.of_some~length-0123456789"


class Server:
    """The program with its page at a free port, fed with the same second over and over."""

    def __init__(self, arguments, folder, *words, host="127.0.0.1"):
        self.sound = subprocess.run([*inputs.program()[:-1], arguments.talker, "aster", "2", "-30"],
                                    stdout=subprocess.PIPE, check=True).stdout
        serve = "0" if host == "127.0.0.1" else f"{host}:0"
        self.run = subprocess.Popen(
            [*inputs.program(), "live", "-", "--array", "aster", "--raw", "S24_3",
             "--raw-channels", str(CHANNELS), "--serve", serve, *words],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, cwd=folder)
        said = self.run.stderr.readline().decode()
        self.port = int(re.search(r":(\d+)/$", said.strip()).group(1))
        self.said = said

    def feed(self, frames=20):
        self.run.stdin.write(self.sound[:frames * FRAME_BYTES])
        self.run.stdin.flush()

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=10)

    def ask(self, path="/", *headers, method="GET", host=None, body=b""):
        """Status, headers with lower-case names, body."""
        host = f"127.0.0.1:{self.port}" if host is None else host
        lines = [f"{method} {path} HTTP/1.1"] + ([f"Host: {host}"] if host else []) + list(headers)
        with self.connect() as link:
            link.sendall("\r\n".join(lines).encode() + b"\r\n\r\n" + body)
            return parsed(everything(link))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.run.kill()
        self.run.wait()


def everything(link):
    """What comes until the other side closes."""
    answer = b""
    while True:
        try:
            part = link.recv(65536)
        except ConnectionResetError:
            return answer
        if not part:
            return answer
        answer += part


def parsed(answer):
    head, _, body = answer.partition(b"\r\n\r\n")
    lines = head.decode().split("\r\n")
    words = lines[0].split(" ")
    headers = {name.lower(): value for name, _, value in
               (line.partition(": ") for line in lines[1:])}
    return (int(words[1]) if len(words) > 1 else 0), headers, body


def wrong(cases, answer):
    """Those of the cases (expected status, arguments) that got another one."""
    seen = []
    for expected, words, options in cases:
        status = answer(*words, **options)[0]
        if status != expected:
            seen.append((words, options, status))
    return seen


def only_its_own_names(arguments, folder):
    with Server(arguments, folder) as server:
        port = server.port
        cases = [(200, (), {"host": name}) for name in
                 (f"127.0.0.1:{port}", f"localhost:{port}", f"LOCALHOST:{port}", f"[::1]:{port}",
                  f"127.1.2.3:{port}")]
        cases += [(403, (path,), {"host": name}) for path in ("/", "/events", "/mark", "/live.js")
                  for name in
                  ("evil.example", f"evil.example:{port}", "127.0.0.1", "localhost",
                   f"127.0.0.1:{port + 1}", f"localhost.evil.example:{port}",
                   f"127.0.0.1.evil.example:{port}", f"localhost.:{port}", f"::1:{port}",
                   f"127.0.0.1:{port}@evil.example", f"192.168.1.2:{port}", "", ":", f":{port}")]
        cases.append((403, ("/", f"Host: localhost:{port}"), {}))  # two of them
        seen = wrong(cases, server.ask)
        return not seen, seen


def only_get(arguments, folder):
    with Server(arguments, folder) as server:
        cases = [(405, ("/",), {"method": method}) for method in
                 ("POST", "PUT", "DELETE", "HEAD", "OPTIONS", "PATCH")]
        cases.append((405, ("/mark?label=x", "X-Voxloc-Mark: 1", "Content-Length: 3"),
                      {"method": "POST", "body": b"abc"}))
        cases.append((404, ("/nothing",), {}))
        cases.append((404, ("/../../etc/passwd",), {}))
        seen = wrong(cases, server.ask)
        return not seen, seen


def nothing_for_other_sites(arguments, folder):
    """What a browser sends for the pages of others."""
    with Server(arguments, folder, "--record", "x.rec") as server:
        server.feed()
        here = f"Origin: http://127.0.0.1:{server.port}"
        cross = ["Sec-Fetch-Site: cross-site"]
        link = cross + ["Sec-Fetch-Mode: navigate", "Sec-Fetch-Dest: document"]
        frame = cross + ["Sec-Fetch-Mode: navigate", "Sec-Fetch-Dest: iframe"]
        mark = ("/mark?label=x", "X-Voxloc-Mark: 1")
        cases = [
            (403, ("/events", "Origin: http://evil.example"), {}),
            (403, ("/events", "Origin: null"), {}),
            (403, ("/events", f"Origin: http://localhost:{server.port}"), {}),
            (403, ("/events", *cross), {}), (403, ("/events", *link), {}),
            (403, ("/events", "Sec-Fetch-Site: same-site"), {}),
            (403, ("/live.js", *cross), {}), (403, ("/", *frame), {}), (200, ("/", *link), {}),
            (403, ("/mark?label=x",), {}), (403, (*mark, *cross), {}), (403, (*mark, *link), {}),
            (403, (*mark, "Origin: http://evil.example"), {}),
            (200, (*mark, here, "Sec-Fetch-Site: same-origin"), {}), (200, mark, {}),
        ]
        seen = wrong(cases, server.ask)
        marks = (pathlib.Path(folder) / "x.rec.marks.jsonl").read_text().count("\n")
        return not seen and marks == 2, (seen, marks)


def page_is_whole(arguments, folder):
    """The page names its files, and each comes as it is in the tree."""
    sources = pathlib.Path(__file__).resolve().parents[4] / "apps/voxloc/page/live"
    with Server(arguments, folder) as server:
        page = server.ask("/")[2]
        names = re.findall(r'(?:src|href)="/([\w.]+)"', page.decode())
        seen = [name for name in names if name.rpartition(".")[2] in ("js", "css")
                and server.ask("/" + name)[2] != (sources / name).read_bytes()]
        return (page == (sources / "live.html").read_bytes() and len(names) >= 4
                and not seen), (names, seen)


def headers_are_strict(arguments, folder):
    with Server(arguments, folder) as server:
        seen = []
        for path in ("/", "/live.js", "/nothing", "/mark"):
            headers = server.ask(path)[1]
            expected = {
                "content-security-policy":
                    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
                    "img-src 'self' data:; frame-ancestors 'none'; base-uri 'none'; "
                    "form-action 'none'",
                "x-content-type-options": "nosniff", "cross-origin-resource-policy": "same-origin",
                "cross-origin-opener-policy": "same-origin", "referrer-policy": "no-referrer",
                "cache-control": "no-store"}
            seen += [(path, name, headers.get(name)) for name, value in expected.items()
                     if headers.get(name) != value]
            seen += [(path, name) for name in headers if name.startswith("access-control")]
        return not seen, seen


def token_is_demanded(arguments, folder):
    path = pathlib.Path(folder) / "token"
    path.write_text(TOKEN + "\n")
    path.chmod(0o600)
    with Server(arguments, folder, "--token-file", str(path), host="0.0.0.0") as server:
        cookie = f"voxloc-{server.port}"
        cases = [
            (401, ("/",), {}), (401, ("/live.js",), {}), (401, ("/events",), {}),
            (401, ("/mark", "X-Voxloc-Mark: 1"), {}), (401, (f"/?token={TOKEN}x",), {}),
            (401, (f"/?token={TOKEN[:-1]}",), {}), (401, ("/?token=",), {}),
            (401, ("/", "Authorization: Bearer " + TOKEN[:-1] + "8"), {}),
            (401, ("/", f"Authorization: {TOKEN}"), {}),
            (401, ("/", f"Cookie: {cookie}=x"), {}), (401, ("/", f"Cookie: {TOKEN}"), {}),
            (401, (f"/live.js?token={TOKEN}",), {}), (401, (f"/events?token={TOKEN}",), {}),
            (200, ("/", f"Authorization: Bearer {TOKEN}"), {}),
            (200, ("/live.js", f"Cookie: a=b; {cookie}={TOKEN}; c=d"), {}),
            (200, (f"/?token={TOKEN}",), {}),
            (200, (f"/?token={TOKEN}",), {"host": f"192.168.1.2:{server.port}"}),
            (403, (f"/?token={TOKEN}",), {"host": f"evil.example:{server.port}"}),
        ]
        seen = wrong(cases, server.ask)
        set_cookie = server.ask(f"/?token={TOKEN}")[1].get("set-cookie")
        said = server.run.stderr.readline() + server.run.stderr.readline()
        return (not seen and b"needs the token" in said and b"nothing is encrypted" in said
                and set_cookie == f"{cookie}={TOKEN}; Path=/; HttpOnly; SameSite=Strict"), \
            (seen, set_cookie, said)


def token_files_are_checked(arguments, folder):
    seen = []
    path = pathlib.Path(folder) / "token"
    for content in ("", "short", "x" * 300, "sixteen chars and a blank"):
        path.write_text(content)
        run = subprocess.run([*inputs.program(), "live", "-", "--array", "aster", "--serve",
                              "127.0.0.1:0", "--token-file", str(path)], capture_output=True,
                             stdin=subprocess.DEVNULL, timeout=20)
        if run.returncode != 1 or b"a token is a line of 16 to 256" not in run.stderr:
            seen.append((content, run))
    return not seen, seen


def taken_port_is_named(arguments, folder):
    with Server(arguments, folder) as server:
        run = subprocess.run([*inputs.program(), "live", "-", "--array", "aster", "--raw",
                              "S16", "--raw-channels", "6", "--serve", str(server.port)],
                             capture_output=True, stdin=subprocess.DEVNULL, timeout=20)
        expected = (f"voxloc: cannot serve on http://127.0.0.1:{server.port}/: "
                    "Address already in use\n")
        return run.returncode == 1 and run.stderr.decode() == expected, run


def requests_are_bounded(arguments, folder):
    """Long ones and slow ones are cut off; the page is there for others meanwhile."""
    with Server(arguments, folder) as server:
        long_header = server.ask("/", "X-Long: " + "a" * 9000)[0]
        many_headers = server.ask("/", *(f"X-{n}: {n}" for n in range(2000)))[0]
        long_path = server.ask("/" + "a" * 9000)[0]
        idle = [server.connect() for _ in range(15)]
        for link in idle:
            link.sendall(b"GET / HTTP/1.1\r\nHost: ")
        began = time.monotonic()
        status = server.ask("/")[0]
        served = time.monotonic() - began
        cut = [everything(link) for link in idle]
        cut_after = time.monotonic() - began
        for link in idle:
            link.close()
        return (200 not in (long_header, many_headers, long_path) and status == 200 and served < 2
                and cut_after < 8 and not any(b"200 OK" in answer for answer in cut)), \
            (long_header, many_headers, long_path, status, served, cut_after)


def followers_are_bounded(arguments, folder):
    """Eight may look on, the ninth is told so; a place is free again when one leaves."""
    with Server(arguments, folder) as server:
        def follow():
            link = server.connect()
            link.sendall(f"GET /events HTTP/1.1\r\nHost: 127.0.0.1:{server.port}\r\n\r\n".encode())
            return link, link.recv(12)

        links = [follow() for _ in range(8)]
        ninth = server.ask("/events")
        page = server.ask("/")[0]
        links[0][0].close()
        deadline = time.monotonic() + 8
        again = b""
        while b"200" not in again and time.monotonic() < deadline:
            time.sleep(0.2)
            link, again = follow()
            links.append((link, again))
        for link, _ in links:
            link.close()
        return (all(start == b"HTTP/1.1 200" for _, start in links[:8]) and ninth[0] == 503
                and page == 200 and again == b"HTTP/1.1 200"), (links, ninth, page, again)


def slow_follower_holds_nobody_up(arguments, folder):
    """Who does not read is left behind: the server waits five seconds, the tracker never."""
    with Server(arguments, folder) as server:
        links = []
        for _ in range(4):
            link = socket.socket()
            link.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            link.connect(("127.0.0.1", server.port))
            link.sendall(f"GET /events HTTP/1.1\r\nHost: 127.0.0.1:{server.port}\r\n\r\n".encode())
            links.append(link)
        time.sleep(0.3)
        longest = 0.0
        for _ in range(200):
            began = time.monotonic()
            server.feed(40)  # which waits for the tracker as soon as the pipe is full
            longest = max(longest, time.monotonic() - began)
        server.run.stdin.close()
        status = server.run.wait(timeout=60)
        return status == 0 and longest < 2, (status, longest)


def events_carry_the_records(arguments, folder):
    """History first, then each frame; the end is told."""
    with Server(arguments, folder, "-f", "text") as server:
        server.feed(20)
        time.sleep(0.5)
        with server.connect() as link:
            link.sendall(f"GET /events HTTP/1.1\r\nHost: 127.0.0.1:{server.port}\r\n\r\n".encode())
            time.sleep(0.5)
            threading.Timer(0.1, server.feed, (10,)).start()
            threading.Timer(0.8, server.run.stdin.close).start()
            body = parsed(everything(link))[2].decode()
    events = [(re.search(r"^event: (.*)$", event, re.M), re.search(r"^data: (.*)$", event, re.M))
              for event in body.split("\n\n")]
    events = [(name.group(1) if name else "message", json.loads(data.group(1)))
              for name, data in events if data]
    frames = []
    for name, data in events:
        if name in ("history", "frames"):
            frames += [record[0] for record in data]
        elif name == "message":
            frames.append(data[0])
    names = [name for name, _ in events]
    lengths = {len(record) for name, data in events if name == "history" for record in data}
    last = [data for name, data in events if name == "status"][-1]
    return (names[:3] == ["hello", "status", "history"] and frames == list(range(30))
            and lengths == {9 + CHANNELS} and last["state"] == "ended"), (names, frames, last)


def interrupt_ends_it_soon(arguments, folder):
    """Also while somebody looks on."""
    with Server(arguments, folder) as server:
        with server.connect() as link:
            link.sendall(f"GET /events HTTP/1.1\r\nHost: 127.0.0.1:{server.port}\r\n\r\n".encode())
            link.recv(100)
            began = time.monotonic()
            server.run.send_signal(signal.SIGINT)
            status = server.run.wait(timeout=20)
            took = time.monotonic() - began
        return status == 130 and took < 3, (status, took)


def marks_are_written(arguments, folder):
    with Server(arguments, folder, "--record", "marked.rec") as server:
        server.feed(20)
        time.sleep(0.5)
        label = "caf%C3%A9%20%22q%22%0D%0Aevent:%20x"
        answer = server.ask("/mark?label=" + label, "X-Voxloc-Mark: 1")
        long = server.ask("/mark?label=" + "x" * 300, "X-Voxloc-Mark: 1")[0]
    mark = json.loads((pathlib.Path(folder) / "marked.rec.marks.jsonl").read_text())
    with Server(arguments, folder) as server:
        unrecorded = server.ask("/mark?label=x", "X-Voxloc-Mark: 1")[0]
    return (answer[0] == 200 and json.loads(answer[2])["frame"] == 19 == mark["frame"]
            and mark["label"] == 'café "q"  event: x' and mark["type"] == "mark"
            and abs(mark["time"] - 19 * inputs.FRAME / 48000) < 1e-9
            and long == 400 and unrecorded == 409), (answer, long, mark, unrecorded)


def array_is_checked(arguments, folder):
    """Only when the page asks for it; one check at a time."""
    with Server(arguments, folder) as server:
        idle = json.loads(server.ask("/check")[2])
        foreign = server.ask("/check/start")[0]
        begun = server.ask("/check/start", "X-Voxloc-Mark: 1")
        again = server.ask("/check/start", "X-Voxloc-Mark: 1")[0]
        server.feed(20)
        end = time.monotonic() + 20
        while time.monotonic() < end and not json.loads(server.ask("/check")[2])["voice"]:
            time.sleep(0.1)
        now = json.loads(server.ask("/check")[2])
    return (idle["state"] == "idle" and foreign == 403 and begun[0] == 200 and again == 409
            and json.loads(begun[2])["state"] == now["state"] == "gathering"
            and now["voice"] > 0), (idle, foreign, begun, again, now)


CHECKS = [only_its_own_names, only_get, nothing_for_other_sites, page_is_whole, headers_are_strict,
          token_is_demanded, token_files_are_checked, taken_port_is_named, requests_are_bounded,
          followers_are_bounded, slow_follower_holds_nobody_up, events_carry_the_records,
          interrupt_ends_it_soon, marks_are_written, array_is_checked]

# Those that track minutes of sound, which takes an emulator or a sanitiser as many.
LONG = [slow_follower_holds_nobody_up]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--talker", required=True)
    parser.add_argument("--short", action="store_true")
    arguments = inputs.options(parser)
    failed = 0
    for one in CHECKS:
        if one in LONG and arguments.short:
            print("left out: " + one.__name__)
            continue
        with tempfile.TemporaryDirectory() as folder:
            passed, seen = one(arguments, folder)
        print(("ok      " if passed else "FAILED  ") + one.__name__)
        if not passed:
            print("        " + str(seen))
            failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    os.environ.pop("ALSA_CONFIG_PATH", None)
    sys.exit(main())
