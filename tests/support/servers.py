"""The servers of the tests: nginx and tinyproxy as they are used in the world, and one that misbehaves on request.

All listen on 127.0.0.1 on a free port, keep everything in a private folder and end with stop().
"""
import contextlib
import ctypes
import io
import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse
import zipfile


def end_with_parent():
    """In a child, before its program: no server and no installer outlives a test that is killed."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)      # PR_SET_PDEATHSIG


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def links_of(listener):
    """Each connection that comes, until the listener is closed."""
    while True:
        try:
            link, _ = listener.accept()
        except OSError:
            return
        yield link


class Daemon:
    """A server program on a free port. Another process may take the port between the look and the start: then again."""
    host = "127.0.0.1"

    def __init__(self, folder):
        os.makedirs(folder)
        self.folder = folder
        for _ in range(5):
            self.port = free_port()
            with open(self.path("out"), "wb") as out:
                self.process = subprocess.Popen(self.command(), stdin=subprocess.DEVNULL, cwd=folder, stdout=out,
                                                stderr=subprocess.STDOUT, start_new_session=True,
                                                preexec_fn=end_with_parent)
            if self.answers():
                return
            self.stop()
        with open(self.path("out"), errors="replace") as text:
            raise RuntimeError(f"{type(self).__name__} does not start: {text.read()}")

    @property
    def address(self):
        return f"{self.host}:{self.port}"

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as out:
            out.write(text)
        return self.path(name)

    def answers(self):
        deadline = time.monotonic() + 10
        while time.monotonic() < deadline and self.process.poll() is None:
            try:
                with socket.create_connection((self.host.strip("[]"), self.port), timeout=1) as link:
                    return self.greets(link)
            except OSError:
                time.sleep(0.02)
        return False

    def greets(self, link):
        return self.process.poll() is None

    def log(self):
        with open(self.path("log"), encoding="utf-8", errors="surrogateescape") as text:
            return text.read()

    def stop(self):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()


class Authority:
    """A certificate authority of the tests' own: `certificate` is what a client has to trust."""

    def __init__(self, folder):
        os.makedirs(folder)
        self.folder, self.made = folder, 0
        self.key, self.certificate = os.path.join(folder, "ca.key"), os.path.join(folder, "ca.pem")
        self.openssl("req", "-x509", "-nodes", "-subj", "/CN=Test authority", "-days", "3650",
                     "-keyout", self.key, "-out", self.certificate)

    def openssl(self, command, *options):
        more = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1"] if command == "req" else []
        subprocess.run([find_program("openssl"), command, *more, *options], check=True, capture_output=True)

    def issue(self, names, days=30):
        """(certificate, key) for `names`, such as "DNS:host" and "IP:127.0.0.1"; below 0 `days` it ended yesterday."""
        self.made += 1
        key, request, certificate, extensions = (os.path.join(self.folder, f"{self.made}.{end}")
                                                 for end in ("key", "csr", "pem", "ext"))
        with open(extensions, "w", encoding="utf-8") as text:
            text.write(f"subjectAltName={','.join(names)}\n")
        self.openssl("req", "-nodes", "-subj", "/CN=server", "-keyout", key, "-out", request)
        self.openssl("x509", "-req", "-in", request, "-CA", self.certificate, "-CAkey", self.key, "-CAcreateserial",
                     "-days", str(days), "-extfile", extensions, "-out", certificate)
        return certificate, key


class Nginx(Daemon):
    """Serves the folder `root`; `rate` limits a transfer to so many bytes a second, `tls` is a certificate and its key,
    `more` stands in the configuration of the server."""

    def __init__(self, root, folder, rate=0, tls=None, more="", address="127.0.0.1"):
        self.root, self.rate, self.tls, self.more, self.host = os.path.abspath(root), rate, tls, more, address
        self.program, self.marks = find_program("nginx"), 0
        super().__init__(folder)

    def listening(self):
        plain = f"listen {self.host}:{self.port};"
        if not self.tls:
            return plain
        self.tls_port = free_port()
        return (f"{plain} listen {self.host}:{self.tls_port} ssl; ssl_certificate {self.tls[0]}; "
                f"ssl_certificate_key {self.tls[1]};")

    def command(self):
        self.word = os.urandom(8).hex()  # proves that it is this server that answers
        return [self.program, "-e", self.path("errors"), "-p", self.folder, "-c", self.write("conf", f"""
{"user root;" if os.geteuid() == 0 else ""}
daemon off;
pid {self.path("pid")};
worker_processes 1;
events {{ worker_connections 256; }}
http {{
  log_format short escape=none '$status $request_uri';
  access_log "{self.path("log")}" short;
  client_body_temp_path "{self.path("t1")}";
  proxy_temp_path "{self.path("t2")}";
  fastcgi_temp_path "{self.path("t3")}";
  uwsgi_temp_path "{self.path("t4")}";
  scgi_temp_path "{self.path("t5")}";
  default_type application/octet-stream;
  server {{
    {self.listening()}
    root "{self.root}";
    limit_rate {self.rate};
    {self.more}
    location = /word {{ return 200 {self.word}; }}
  }}
}}
""")]

    def greets(self, link):
        link.sendall(b"GET /word HTTP/1.0\r\n\r\n")
        answer = b""
        while part := link.recv(4096):
            answer += part
        return self.word.encode() in answer

    def requests(self):
        """What was asked for, as (status, path)."""
        self.marks += 1             # the one worker logs in order: once the mark is there, all before it is
        mark = f"/word?{self.marks}"
        with socket.create_connection((self.host.strip("[]"), self.port), timeout=10) as link:
            link.sendall(f"GET {mark} HTTP/1.0\r\n\r\n".encode())
            while link.recv(4096):
                pass
        deadline = time.monotonic() + 10
        while f"200 {mark}\n" not in (log := self.log()) and time.monotonic() < deadline:
            time.sleep(0.01)
        pairs = (line.split(" ", 1) for line in log.splitlines())
        return [(int(status), request_path(target)) for status, target in pairs if not target.startswith("/word")]


class Tinyproxy(Daemon):
    """A proxy that hands hosts ending in ".example" to `upstream`, as a firewall's only way out; `login` is "user:password"."""

    def __init__(self, folder, upstream=None, login=None):
        self.upstream, self.login = upstream, login
        self.program = find_program("tinyproxy")
        super().__init__(folder)

    def command(self):
        upstream = f'Upstream http {self.upstream} ".example"' if self.upstream else ""
        login = f"BasicAuth {self.login.replace(':', ' ')}" if self.login else ""
        return [self.program, "-d", "-c", self.write("conf", f"""
Port {self.port}
Listen 127.0.0.1
Timeout 60
Allow 127.0.0.1
MaxClients 50
LogFile "{self.path("log")}"
LogLevel Connect
PidFile "{self.path("pid")}"
{upstream}
{login}
""")]

    def requests(self):
        return re.findall(r"Request \(file descriptor \d+\): [A-Z]+ (\S.*?) HTTP/1\.[01]", self.log())


class Squid(Daemon):
    """A proxy that keeps connections on both of its sides. It gives up root's rights, so its folder lies in the open."""

    def __init__(self):
        self.program = find_program("squid")
        self.room = tempfile.mkdtemp(prefix="velaris-squid-")
        os.chmod(self.room, 0o755)
        super().__init__(os.path.join(self.room, "squid"))

    def stop(self):
        super().stop()
        shutil.rmtree(self.room, ignore_errors=True)

    def command(self):
        os.chmod(self.folder, 0o777)
        return [self.program, "-N", "-f", self.write("conf", f"""
http_port 127.0.0.1:{self.port}
http_access allow localhost
cache_mem 8 MB
pid_filename none
access_log stdio:{self.path("log")}
cache_log {self.path("cache.log")}
coredump_dir {self.folder}
shutdown_lifetime 0 seconds
""")]

    def requests(self):
        return [line.split()[6] for line in self.log().splitlines()]


class Meter:
    """Stands before a server and counts what goes through, as (time, bytes); little is on its way at any time."""

    def __init__(self, port):
        self.target, self.seen = port, []
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.address = f"127.0.0.1:{self.listener.getsockname()[1]}"
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        for link in links_of(self.listener):
            link.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 4096)
            far = socket.create_connection(("127.0.0.1", self.target))
            threading.Thread(target=self.pass_on, args=(link, far, None), daemon=True).start()
            threading.Thread(target=self.pass_on, args=(far, link, self.seen), daemon=True).start()

    def pass_on(self, source, sink, seen):
        try:
            while part := source.recv(4096):
                sink.sendall(part)
                if seen is not None:
                    seen.append((time.monotonic(), len(part)))
        except OSError:
            pass
        with contextlib.suppress(OSError):
            sink.shutdown(socket.SHUT_RDWR)
        source.close()

    def stop(self):
        self.listener.close()


def find_program(name):
    found = shutil.which(name, path=os.environ.get("PATH", "") + ":/usr/sbin:/sbin")
    if not found:
        raise RuntimeError(f"{name} is not installed")
    return found


def request_path(target):
    if target.startswith("http://"):
        target = "/" + target[7:].partition("/")[2]
    return urllib.parse.unquote(target, errors="surrogateescape")


class FaultServer:
    """Serves the folder `root`, but does to each request what its script says.

    `script` maps a path to the faults of the first, second, ... try, the last of which stays; "*" stands for every path
    that is not named. `replies` maps a path to other bytes than the folder's. A mirror of another one shares all three,
    so that a file's next fault comes whichever of them is asked next.
    """

    def __init__(self, root, mirror_of=None):
        self.root = root
        self.script, self.replies, self.tries = {}, {}, {}
        self.counting = threading.Lock()
        if mirror_of:
            self.script, self.replies, self.tries = mirror_of.script, mirror_of.replies, mirror_of.tries
            self.counting = mirror_of.counting
        self.asked = []             # every path, in order
        self.lock = threading.Lock()
        self.gate = None
        self.links = set()
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    @property
    def address(self):
        return f"127.0.0.1:{self.port}"

    def stop(self):
        if self.gate:
            self.gate.open()
        self.listener.close()
        with self.lock:
            for link in self.links:
                cut(link)

    def hold_after(self, count):
        """Lets `count` files through and holds the next ones until the gate that is returned opens."""
        self.gate = Gate(count)
        return self.gate

    def accept(self):
        for link in links_of(self.listener):
            with self.lock:
                self.links.add(link)
            threading.Thread(target=self.talk, args=(link,), daemon=True).start()

    def talk(self, link):
        try:
            request = b""
            while b"\r\n\r\n" not in request:
                part = link.recv(65536)
                if not part:
                    return
                request += part
            path = request_path(os.fsdecode(request.split(b"\r\n")[0]).split(" ", 1)[1].rsplit(" ", 1)[0])
            self.fault_for(path)(link, *self.body_of(path))
        except OSError:
            pass                    # the other side left
        finally:
            with self.lock:
                self.links.discard(link)
            link.close()

    def fault_for(self, path):
        with self.counting:
            self.asked.append(path)
            turn = self.tries[path] = self.tries.get(path, 0) + 1
            faults = self.script.get(path) or self.script.get("*") or [serve]
        if self.gate and path.startswith("/beta/") and not path.endswith("/directory.txt.zip"):
            self.gate.enter()
        return faults[min(turn, len(faults)) - 1]

    def body_of(self, path):
        if path in self.replies:
            return 200, self.replies[path]
        try:
            with open(self.root + path, "rb") as data:
                return 200, data.read()
        except OSError:
            return 404, b"no such file"


class Gate:
    def __init__(self, count):
        self.left, self.held = count, 0
        self.lock = threading.Lock()
        self.reached = threading.Event()   # a file is being held
        self.is_open = threading.Event()

    def enter(self):
        with self.lock:
            self.left -= 1
            if self.left >= 0:
                return
            self.held += 1
        self.reached.set()
        self.is_open.wait()

    def open(self):
        self.is_open.set()


# The faults. Each gets the connection and what the folder would have answered.

def head(status, length, reason="Whatever"):
    length = "" if length is None else f"Content-Length: {length}\r\n"
    return f"HTTP/1.1 {status} {reason}\r\nServer: fault\r\n{length}Connection: close\r\n\r\n".encode()


def cut(link, *_):
    """Without a word."""
    try:
        link.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        link.shutdown(socket.SHUT_RD)
    except OSError:
        pass
    link.close()


def say_nothing(link, *_):
    while link.recv(4096):
        pass                        # until the other side gives up


def sending(share, promised=1.0, then=None):
    """Sends a share of the body, having promised another, and then ..."""
    def fault(link, status, body):
        link.sendall(head(status, int(len(body) * promised)) + body[:int(len(body) * share)])
        if then:
            then(link)
    return fault


def refuse(status, reason="Whatever"):
    """Answers with a status and a short page, complete in itself."""
    return lambda link, _, body: link.sendall(head(status, 5, reason) + b"sorry")


serve, end_early = sending(1), sending(0.5)
reset, stall = sending(0.5, then=cut), sending(0.5, then=say_nothing)
promise_less, promise_more = sending(1, promised=0.5), sending(1, promised=2, then=cut)
hang_up = cut


def no_length(link, status, body):
    link.sendall(head(status, None) + body)


def drip(link, status, body):
    """Byte by byte, each in a packet of its own as far as the system lets it; the tail in one piece."""
    link.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    whole = head(status, len(body)) + body
    for place in range(min(len(whole), 400)):
        link.sendall(whole[place:place + 1])
        time.sleep(0.0005)
    link.sendall(whole[400:])


def interim(link, status, body):
    link.sendall(b"HTTP/1.1 100 Continue\r\n\r\n")
    time.sleep(0.05)                # so that it arrives on its own
    serve(link, status, body)


def corrupt(link, status, body):
    """One byte in the middle of the packed data is another."""
    packed, _, name, extra = struct.unpack_from("<IIHH", body, 18)
    place = 30 + name + extra + packed // 2     # elsewhere lie a date and a mode, which no checksum covers
    serve(link, status, body[:place] + bytes([body[place] ^ 0x55]) + body[place + 1:])


def dawdle(link, status, body):
    """Stands still in the middle, and goes on before anyone gives up."""
    whole = head(status, len(body)) + body
    link.sendall(whole[:len(whole) // 2])
    time.sleep(0.3)
    link.sendall(whole[len(whole) // 2:])


# Those that lie: a right status and a right length, and not the file.

def web_page(link, status, body):
    """What the gate of a hotel's network answers to everything."""
    serve(link, 200, b"<html><body>Please sign in.</body></html>")


def nothing(link, status, body):
    serve(link, 200, b"")


def cut_short(link, status, body):
    serve(link, status, body[:len(body) * 2 // 3])


def other_content(link, status, body):
    """The archive is sound and the file in it has the right name; its bytes are others."""
    answer = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(body)) as true, zipfile.ZipFile(answer, "w", zipfile.ZIP_DEFLATED) as made:
        for entry in true.infolist():
            made.writestr(entry, b"not this: " + true.read(entry))
    serve(link, status, answer.getvalue())


def main(root, folder):
    """Serves `root` with nginx: prints host:port; ends on SIGTERM and with its parent."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    end_with_parent()
    try:
        server = Nginx(root, folder)
    except RuntimeError as problem:
        sys.exit(str(problem))
    try:
        print(server.address, flush=True)
        signal.pause()
    finally:
        server.stop()


if __name__ == "__main__":
    main(*sys.argv[1:])
