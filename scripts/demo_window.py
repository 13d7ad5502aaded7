"""Drives the installer's window for the demo, by the mouse and the keyboard of the display.

    demo_window.py install INSTALLER LIST_HOST DESTINATION [DIR]   installs or updates; pictures of its screens to DIR
    demo_window.py pictures INSTALLER WEB DIR                      a picture of every other screen and state, to DIR

Uses the display that is there, else a hidden one. Where somebody may watch, the mouse takes its time.
"""
import contextlib
import io
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import zipfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "support"))
try:
    import desktop
    import release
    import servers
except ImportError as missing:
    sys.exit(f"demo_window.py: Python's {missing.name} is missing; run scripts/setup first")

KEEP = (162 + 96, 311 + 28)
SYSTEMS = (212 + 200, 194 + 313)
RED = (196, 43, 36)
BAR = (40, 120, 208)                    # its fill while it moves
LOG_ACTIONS = "--pref:_log_actions=1"


class Album:
    """The pictures, each under the name of what it shows, each once."""

    def __init__(self, folder):
        self.folder, self.taken = folder, set()
        if folder:
            os.makedirs(folder, exist_ok=True)

    def keep(self, name, picture):
        if not self.folder or name in self.taken:
            return
        self.taken.add(name)
        picture.save(os.path.join(self.folder, name + ".png"), optimize=True)
        print(f"picture: {name}.png", flush=True)


@contextlib.contextmanager
def running(display, installer, *words, **environment):
    """The window of an installer that ends with the block. In a copy of its own, or its log would replace the story's."""
    program = subprocess.Popen([installer, *words], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               env={**os.environ, "DISPLAY": display.name, **environment}, start_new_session=True)
    try:
        yield desktop.Window(display, program)
    except desktop.NoWindow as problem:
        sys.exit(f"demo_window.py: {problem}")
    finally:
        if program.poll() is None:
            os.killpg(program.pid, signal.SIGTERM)
            try:
                program.wait(5)
            except subprocess.TimeoutExpired:
                os.killpg(program.pid, signal.SIGKILL)
        program.wait()


class Story:
    def __init__(self, display, album):
        self.display, self.album = display, album
        self.pace = 0 if display.server else 1.2    # seconds for an onlooker

    def tell(self, text):
        print(text, flush=True)
        time.sleep(self.pace)

    def click(self, window, place):
        window.move(*place)
        time.sleep(self.pace / 2)
        window.click(*place)

    def wait(self, fact, what):
        if not desktop.until(fact):
            sys.exit(f"demo_window.py: {what} did not come")

    def install(self, installer, list_host, destination):
        with running(self.display, installer, "-path", destination, f"--list_host={list_host}", LOG_ACTIONS) as window:
            self.wait(window.install_is_live, "the offer")
            self.album.keep("offer", window.steady())
            self.tell("The window shows the offer. She clicks INSTALL.")
            self.click(window, desktop.INSTALL)
            self.wait(lambda: window.screen() == "agreement", "the agreement")
            self.album.keep("agreement", window.steady())
            self.tell("It asks for her agreement. She clicks I AGREE.")
            self.click(window, desktop.AGREE)
            self.answer_questions(window)
            self.album.keep("complete", window.steady())
            self.tell("INSTALLATION COMPLETE! She clicks QUIT.")
            self.click(window, desktop.QUIT)
            self.wait(lambda: window.process.poll() is not None, "the end")
            if window.process.returncode:
                sys.exit(f"demo_window.py: the installer ended with status {window.process.returncode}")

    def answer_questions(self, window):
        """KEEP THE OLD FILE, for as long as it asks."""
        seen = None
        while not window.is_complete():
            if window.screen() != "changed file":
                seen = None
                time.sleep(0.02)
                continue
            # The next question looks like the last one but for its words.
            question = self.words_of(window)
            if seen == question:
                time.sleep(0.02)
                continue
            seen = question
            name = "changed-file-to-delete" if self.asks_to_delete(window) else "changed-file"
            self.album.keep(name, window.steady())
            self.tell("It found a file that she had changed. She clicks KEEP THE OLD FILE.")
            self.click(window, KEEP)

    @staticmethod
    def words_of(window):
        return window.steady().crop((172, 340, 852, 384)).tobytes()

    @staticmethod
    def asks_to_delete(window):
        """The question of a deletion is the longer one."""
        return window.has_colour((162 + 380, 311 + 76, 162 + 440, 311 + 88), (36, 43, 53))


class Faults:
    """A web server of the demo's release that can be told to misbehave."""

    def __init__(self, web):
        self.web = web
        self.name = sorted(os.listdir(os.path.join(web, "beta")))[0]
        self.server = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.server:
            self.server.stop()

    def fresh(self):
        """A new one: what the one before was told is forgotten."""
        if self.server:
            self.server.stop()
        self.server = servers.FaultServer(self.web)
        mirrors = [self.server.address] * 2
        self.server.replies["/serverlist.txt"] = release.server_list(self.name, mirrors).encode()
        return self.server

    def with_huge_file(self):
        """The catalogue, with a file that no disk here can hold."""
        path = f"/beta/{self.name}/directory.txt.zip"
        with zipfile.ZipFile(self.web + path) as packed:
            rows = packed.read("directory.txt").decode()
        rows = re.sub(r"(FILE 0 0 \d+) \d+ \d+ ", r"\1 999999999 999999999 ", rows, count=1)
        answer = io.BytesIO()
        with zipfile.ZipFile(answer, "w") as made:
            made.writestr("directory.txt", rows)
        self.server.replies[path] = answer.getvalue()


def take_pictures(installer, web, folder):
    display, album = desktop.Display(private=False), Album(folder)
    with tempfile.TemporaryDirectory() as scratch, Faults(web) as faults:
        installer = shutil.copy(installer, scratch)
        scene = Pictures(display, album, installer, scratch, faults)
        for take in (scene.start_up, scene.looking_for_servers, scene.not_enough_space, scene.scanning, scene.installing,
                     scene.cannot_download, scene.failed, scene.preferences, scene.alert, scene.folder_chooser):
            take()
    display.stop()


class Pictures:
    def __init__(self, display, album, installer, scratch, faults):
        self.display, self.album, self.installer, self.faults = display, album, installer, faults
        self.scratch, self.count = scratch, 0

    def open(self, *words, host=None, destination=None, **environment):
        self.count += 1
        destination = destination or os.path.join(self.scratch, f"home {self.count}", "Velaris")
        return running(self.display, self.installer, "-path", destination + "/",
                       f"--list_host={host or self.faults.server.address}", *words, **environment)

    def keep(self, name, window, fact):
        """Once `fact` holds, which is waited for however busy the machine is."""
        if not desktop.until(fact):
            sys.exit(f"demo_window.py: the picture '{name}' did not come, but '{window.screen()}'")
        self.album.keep(name, window.steady())

    def start_up(self):
        """Stands until the first frame. A folder dialog that nobody answers would hold that off: it is stopped before."""
        with running(self.display, self.installer, "--list_host=127.0.0.1:1") as window:
            os.kill(window.process.pid, signal.SIGSTOP)
            picture = window.grab()
            os.kill(window.process.pid, signal.SIGCONT)
            if window.screen(picture) == "start-up":
                self.album.keep("start-up", picture)
                return
        self.start_up()

    def looking_for_servers(self):
        with self.open(host="127.0.0.1:1") as window:
            self.keep("looking-for-servers", window, lambda: window.screen() == "main")

    def not_enough_space(self):
        self.faults.fresh()
        self.faults.with_huge_file()
        destination = os.path.join(self.scratch, "small disk")
        os.makedirs(destination)
        with self.open(destination=destination) as window:
            self.keep("not-enough-space", window,
                      lambda: window.has_colour((140, 34, 700, 45), RED))

    def scanning(self):
        """A file of some gigabytes that is in the way takes its time to be signed."""
        self.faults.fresh()
        destination = os.path.join(self.scratch, "large")
        os.makedirs(os.path.join(destination, "Instructions"))
        path = f"/beta/{self.faults.name}/directory.txt.zip"
        with zipfile.ZipFile(self.faults.web + path) as packed:
            rows = packed.read("directory.txt").decode()
        place = re.search(r"DIR All/(.*/)\n(?:FILE .*\n)*?FILE (?:\S+ ){6}(.*)\n", rows[len(rows) // 2:])
        os.makedirs(os.path.join(destination, place[1]), exist_ok=True)
        with open(os.path.join(destination, place[1], place[2]), "wb") as large:
            large.truncate(6 << 30)
        with self.open(destination=destination) as window:
            self.keep("scanning", window,
                      lambda: window.screen() == "scan" and window.has_colour((330, 348, 340, 352), BAR))

    def start_install(self, window):
        if not desktop.until(window.install_is_live) or not window.install_and_agree():
            sys.exit("demo_window.py: the install could not be started")

    def installing(self):
        gate = self.faults.fresh().hold_after(150)
        with self.open() as window:
            self.start_install(window)
            # The bar follows slowly; by then it has come this far.
            self.keep("installing", window, lambda: gate.reached.is_set() and window.has_colour((300, 12, 310, 18), BAR))
            gate.open()

    def red_status(self, window):
        return window.has_colour((140, 34, 1010, 66), RED)

    def cannot_download(self):
        server = self.faults.fresh()
        server.script["*"] = [servers.refuse(404, "Not Found")]
        for path in ("/serverlist.txt", f"/beta/{self.faults.name}/directory.txt.zip"):
            server.script[path] = [servers.serve]
        with self.open() as window:
            self.start_install(window)
            self.keep("cannot-download", window, lambda: self.red_status(window))

    def failed(self):
        """A folder of the user's own stands where a file belongs."""
        self.faults.fresh()
        destination = os.path.join(self.scratch, "in the way")
        os.makedirs(os.path.join(destination, "Airfoils", "NACA 2412.afl"))
        with open(os.path.join(destination, "Airfoils", "NACA 2412.afl", "mine.txt"), "w", encoding="utf-8") as own:
            own.write("My own notes.\n")
        with self.open(destination=destination) as window:
            self.start_install(window)
            self.keep("alert-install", window, lambda: window.screen() == "alert")
            window.keys("Return")
            self.keep("failed", window, lambda: window.screen() == "main" and self.red_status(window))

    def preferences(self):
        self.faults.fresh()
        with self.open("--pref:_stream_count=3") as window:
            window.wait_for("main")
            window.click(*desktop.PREFERENCES)
            window.wait_for("preferences")
            self.album.keep("preferences", window.steady())
            window.click(*SYSTEMS)
            window.move(SYSTEMS[0], SYSTEMS[1] + 12)
            self.keep("pop-up", window, lambda: window.pixel(384, 520) != window.pixel(384, 532))    # the row is lit

    def alert(self):
        server = self.faults.fresh()
        server.replies[f"/beta/{self.faults.name}/directory.txt.zip"] = b"this is no archive"
        with self.open() as window:
            self.keep("alert", window, lambda: window.screen() == "alert")

    def folder_chooser(self):
        self.faults.fresh()
        with self.open(destination=os.path.dirname(os.path.abspath(__file__)), PATH="/nonexistent") as window:
            window.wait_for("main")
            window.click(*desktop.DESTINATION)
            self.keep("folder-chooser", window, lambda: window.screen() == "folder")


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    if len(sys.argv) in (5, 6) and sys.argv[1] == "install":
        display = desktop.Display(private=False)
        try:
            Story(display, Album(sys.argv[5] if len(sys.argv) == 6 else None)).install(*sys.argv[2:5])
        finally:
            display.stop()
    elif len(sys.argv) == 5 and sys.argv[1] == "pictures":
        take_pictures(*sys.argv[2:])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
