"""Runs the installer as a user would, in a world of its own: home, preferences, state and temporary folder."""
import atexit
import contextlib
import dataclasses
import fcntl
import json
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import tempfile
import termios
import time
import unittest

import folders
import release
import servers

ROOT = os.environ.get("VELARIS_ROOT") or os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAMS = os.environ.get("VELARIS_BIN") or os.path.join(ROOT, "build")
INSTALLER = os.path.join(PROGRAMS, "velaris-installer")
BUILDER = os.path.join(PROGRAMS, "velaris-builder")
# The programs are built with a sanitizer: they need more memory, and its frames stand on their stacks.
SANITIZED = bool(os.environ.get("VELARIS_SANITIZE"))


@dataclasses.dataclass
class Outcome:
    status: int
    out: str
    err: str

    def events(self):
        return [json.loads(line) for line in self.out.splitlines()]

    def __str__(self):
        return f"status {self.status}\n--- out\n{self.out}\n--- err\n{self.err}"


class Desk:
    """One user's world below `folder`."""

    def __init__(self, folder):
        self.folder = folder
        self.home, self.config, self.state, self.tmp, self.bin = (
            os.path.join(folder, name) for name in ("home", "config", "state", "tmp", "bin"))
        for path in (self.home, self.config, self.state, self.tmp, self.bin):
            os.makedirs(path)
        # A copy of its own: the log lies beside the program, and runs at the same time would share it.
        self.program = shutil.copy(INSTALLER, folder)
        # A browser that only remembers what it was to open.
        browser = os.path.join(self.bin, "xdg-open")
        with open(browser, "w", encoding="utf-8") as script:
            script.write(f'#!/bin/sh\necho "$@" >> "{folder}/browser"\n')
        os.chmod(browser, 0o755)

    def environment(self, **more):
        for name in ("LSAN_OPTIONS", "TSAN_OPTIONS"):
            more.setdefault(name, os.environ.get(name, ""))
        return {"PATH": f"{self.bin}:{os.environ['PATH']}", "HOME": self.home, "XDG_CONFIG_HOME": self.config,
                "XDG_STATE_HOME": self.state, "TMPDIR": self.tmp, "TZ": release.ZONE, "LANG": "C.UTF-8",
                "TERM": "xterm-256color", **more}

    def preferences(self):
        path = os.path.join(self.config, "velaris", "Velaris Installer.prf")
        with open(path, encoding="utf-8") as text:
            lines = text.read().splitlines()
        return dict(line.partition(" ")[::2] for line in lines[2:])

    def log(self):
        with open(os.path.join(self.folder, "Log.txt"), encoding="utf-8", errors="surrogateescape") as text:
            return text.read()


class Scene(unittest.TestCase):
    """A test with a private folder, a user's desk and the ways to run the installer on it."""

    def setUp(self):
        self.folder = private_folder(self)
        self.desk = Desk(os.path.join(self.folder, "desk"))
        self.dest = os.path.join(self.folder, "Flight Sims", "Velaris")
        self.host = None            # where the server list lies

    def start(self, *options, dest=None, stdin=subprocess.DEVNULL, wrap=(), stdout=subprocess.PIPE,
              stderr=subprocess.PIPE, preexec=None, **environment):
        """Starts the console installer; it does not outlive the test. `dest` False: no -path."""
        command = [*wrap, self.desk.program]
        if dest is not False:
            command += ["-path", dest or self.dest]
        command.append("--console")
        if self.host:
            command.append(f"--list_host={self.host}")

        def before_program():
            servers.end_with_parent()
            if preexec:
                preexec()

        process = subprocess.Popen(command + list(options), env=self.desk.environment(**environment), cwd=self.folder,
                                   stdin=stdin, stdout=stdout, stderr=stderr, preexec_fn=before_program)
        at_end(self, put_down, process)
        return process

    def finish(self, process, timeout=60):
        try:
            out, err = process.communicate(timeout=timeout)
        except subprocess.TimeoutExpired:
            process.kill()
            out, err = process.communicate()
            self.fail(f"no end within {timeout} s\n--- out\n{text_of(out)}\n--- err\n{text_of(err)}")
        return Outcome(process.returncode, text_of(out), text_of(err))

    def run_installer(self, *options, timeout=60, **how):
        return self.finish(self.start(*options, **how), timeout)

    def install(self, *options, status=0, **how):
        """A run without questions, which must end with `status`."""
        outcome = self.run_installer("--agree", *options, **how)
        self.assertEqual(outcome.status, status, outcome)
        return outcome

    def run_measured(self, *options, status=0, **how):
        """A run that must end with `status`: what it said, and what it used.

        The memory is of this process alone; what forked it does not count as long as it is smaller."""
        with tempfile.TemporaryFile() as output:
            run = self.start("--agree", *options, stdout=output, stderr=output, **how)
            _, ended, used = os.wait4(run.pid, 0)
            run.returncode = os.waitstatus_to_exitcode(ended)
            output.seek(0)
            said = text_of(output.read())
        self.assertEqual(run.returncode, status, said)
        return said, used

    def assert_installed(self, items, where=None, besides=None):
        """`items` as Tree.installed gives them; `besides`: what else lies there, in the form of a snapshot."""
        wanted = folders.expected(items)
        wanted.update(besides or {})
        wrong = folders.differences(wanted, folders.snapshot(where or self.dest))
        self.assertEqual(wrong, [], "\n" + "\n".join(wrong))

    def assert_same(self, before, where=None):
        wrong = folders.differences(before, folders.snapshot(where or self.dest))
        self.assertEqual(wrong, [], "\n" + "\n".join(wrong))

    def put(self, path, text, where=None):
        """The user writes a file below the destination."""
        full = os.path.join(where or self.dest, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with contextlib.suppress(FileNotFoundError):
            os.unlink(full)
        with open(full, "w", encoding="utf-8") as out:
            out.write(text)

    def place(self, items, where=None):
        """A copy as an earlier install left it, without the work of installing it."""
        where = where or self.dest
        for folder in release.OWN_FOLDERS:
            os.makedirs(os.path.join(where, folder), exist_ok=True)
        release.lay_out(items, where)

    def terminal(self, *options, columns=100, **environment):
        return Terminal(self, options, columns, environment)


class Terminal:
    """The installer on a terminal of its own, as a person sees it: wait for words, type an answer."""

    def __init__(self, scene, options, columns, environment):
        self.seen, self.scene = b"", scene
        self.master, slave = pty.openpty()
        scene.addCleanup(self.close)
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))

        def own_terminal():
            os.setsid()
            fcntl.ioctl(0, termios.TIOCSCTTY, 0)

        self.process = scene.start(*options, stdin=slave, stdout=slave, stderr=slave, preexec=own_terminal,
                                   **environment)
        os.close(slave)

    def read(self, timeout):
        """More of the output; False at its end or when none came in time."""
        ready, _, _ = select.select([self.master], [], [], max(timeout, 0))
        if not ready:
            return False
        try:
            part = os.read(self.master, 65536)
        except OSError:             # the other end is gone
            return False
        self.seen += part
        return bool(part)

    def expect(self, words, timeout=30):
        """Waits until `words` have been written since the last answer; returns all that was."""
        deadline = time.monotonic() + timeout
        while words.encode() not in self.seen:
            if not self.read(deadline - time.monotonic()):
                self.scene.fail(f"never saw {words!r} in:\n{text_of(self.seen)}")
        return text_of(self.seen)

    def type(self, keys):
        self.seen = b""
        os.write(self.master, keys.encode())

    def end(self, timeout=60):
        """Reads to the end; returns the exit status."""
        deadline = time.monotonic() + timeout
        while self.read(deadline - time.monotonic()):
            pass
        try:
            return self.process.wait(max(deadline - time.monotonic(), 0.1))
        except subprocess.TimeoutExpired:
            self.scene.fail(f"no end within {timeout} s:\n{text_of(self.seen)}")

    def close(self):
        if self.master >= 0:
            os.close(self.master)
            self.master = -1


def at_end(test, act, *arguments):
    """At the end of the test, or of the class when that is given; or of the process, if it is broken off before."""
    (test.addClassCleanup if isinstance(test, type) else test.addCleanup)(act, *arguments)
    atexit.register(act, *arguments)


def private_folder(test):
    """A folder that goes with the test, or with the class when that is given."""
    folder = os.path.realpath(tempfile.mkdtemp(prefix="velaris-e2e-"))
    at_end(test, shutil.rmtree, folder, True)
    return folder


def keep_up(test, server):
    """Stops `server` at the end of the test or class."""
    at_end(test, server.stop)
    return server


def publish(test, *trees):
    """Publishes one after the other for the whole class, the last as release.NEW; the publisher and the releases."""
    publisher = release.Publisher(BUILDER, private_folder(test))
    numbers = range(90020 - len(trees), 90020)
    return publisher, [publisher.publish(tree, release.name_of(number), number) for tree, number in zip(trees, numbers)]


def nginx_for(test, publisher, newest, **how):
    """A web server with the list that offers `newest`."""
    server = keep_up(test, servers.Nginx(publisher.web, os.path.join(private_folder(test), "nginx"), **how))
    publisher.announce(newest, [server.address])
    return server


def faulty(test, publisher, newest, mirrors=None):
    """A server of the same releases that misbehaves on request; its list names itself, or `mirrors`."""
    server = keep_up(test, servers.FaultServer(publisher.web))
    text = release.server_list(newest.name, mirrors or [server.address])
    server.replies["/serverlist.txt"] = text.encode()
    return server


def put_down(process):
    if process.poll() is None:
        process.send_signal(signal.SIGKILL)
        process.wait()
    for stream in (process.stdout, process.stderr):
        if stream:
            stream.close()


def text_of(data):
    return (data or b"").decode("utf-8", "replace")


def plain(text):
    """Without the colours of a terminal."""
    return re.sub(r"\x1b\[[0-9;]*m", "", text)


def wait_until(fact, timeout=30):
    deadline = time.monotonic() + timeout
    while not fact():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.002)
    return True


def main():
    if not os.access(INSTALLER, os.X_OK):
        raise SystemExit(f"VELARIS_BIN is to name the folder of the programs; there is no {INSTALLER}")
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    unittest.main(verbosity=2)
