"""Takes pictures of the installer's window for the demo: demo_pictures.py INSTALLER LIST_HOST DESTINATION DIR

Uses the display that is there, else one of its own under Xvfb. Prints the name of each picture it wrote.
"""
import os
import signal
import subprocess
import sys
import tempfile
import time

try:
    from PIL import ImageGrab
except ImportError:
    sys.exit("demo_pictures.py: Python's imaging library is missing; run scripts/setup first")

TITLE = "Velaris Installer"


class Display:
    """The user's display, or a private one that ends with the block."""

    def __enter__(self):
        self.server = None
        if os.environ.get("DISPLAY"):
            return self
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x900x24", "-nolisten",
                                        "tcp", "-noreset"], pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        return self

    def __exit__(self, *_):
        if self.server:
            self.server.terminate()
            self.server.wait()
            del os.environ["DISPLAY"]


def run(*words):
    return subprocess.run(words, capture_output=True, text=True, check=False).stdout


def window_of(process, deadline=20):
    """The window's place as left, top, right, bottom."""
    end = time.monotonic() + deadline
    while time.monotonic() < end and process.poll() is None:
        found = run("xdotool", "search", "--onlyvisible", "--name", TITLE).split()
        if found:
            shell = dict(line.split("=") for line in run("xdotool", "getwindowgeometry", "--shell", found[0]).split()
                         if "=" in line)
            if "X" in shell:
                x, y = int(shell["X"]), int(shell["Y"])
                return x, y, x + int(shell["WIDTH"]), y + int(shell["HEIGHT"])
        time.sleep(0.01)
    raise SystemExit("demo_pictures.py: the installer's window did not appear")


def grab(place):
    return ImageGrab.grab(bbox=place, xdisplay=os.environ["DISPLAY"]).convert("RGB")


def save(picture, folder, name):
    path = os.path.join(folder, name + ".png")
    picture.save(path, optimize=True)
    print(path)


def start(installer, *words):
    return subprocess.Popen([installer, *words], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def take_start_up(installer, folder):
    """The start-up screen stands until the first frame. A folder dialog that nobody answers holds that off."""
    with tempfile.TemporaryDirectory() as programs:
        dialog = os.path.join(programs, "zenity")
        with open(dialog, "w", encoding="utf-8") as script:
            script.write("#!/bin/sh\nexec sleep 60\n")
        os.chmod(dialog, 0o755)
        process = subprocess.Popen([installer, "--list_host=127.0.0.1:1", "--pref:_always_ask_dir=1"],
                                   env={**os.environ, "PATH": programs + ":" + os.environ["PATH"]},
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            place = window_of(process)
            end = time.monotonic() + 20
            while not is_start_up(picture := grab(place)):
                if time.monotonic() > end:
                    raise SystemExit("demo_pictures.py: the start-up screen did not appear")
                time.sleep(0.05)
            save(picture, folder, "start-up")
        finally:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def is_start_up(picture):
    """The window's own dark blue all round, and the panel's near-black at the lower left."""
    red, green, blue = picture.getpixel((700, 100))
    return abs(red - 51) < 6 and abs(green - 67) < 6 and abs(blue - 86) < 6 and max(picture.getpixel((40, 690))) < 60


def take_main(installer, destination, list_host, folder, name):
    """Once the screen has stood still for a second."""
    process = start(installer, "-path", destination, "--list_host=" + list_host)
    try:
        place = window_of(process)
        end = time.monotonic() + 30
        before = None
        while time.monotonic() < end:
            time.sleep(1)
            picture = grab(place)
            if picture == before:
                break
            before = picture
        save(picture, folder, name)
    finally:
        process.terminate()
        process.wait()


def main():
    installer, list_host, destination, folder = sys.argv[1:]
    os.makedirs(folder, exist_ok=True)
    with Display():
        take_start_up(installer, folder)
        take_main(installer, destination, "127.0.0.1:1", folder, "looking-for-servers")
        take_main(installer, destination, list_host, folder, "offer")


if __name__ == "__main__":
    main()
