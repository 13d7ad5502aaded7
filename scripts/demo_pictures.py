"""Takes pictures of the installer's window for the demo: demo_pictures.py INSTALLER LIST_HOST DESTINATION DIR

Uses the display that is there, else one of its own under Xvfb. Prints the name of each picture it wrote.
"""
import os
import signal
import subprocess
import sys
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
                                        "tcp"], pass_fds=[writer], stderr=subprocess.DEVNULL)
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


def take_start_up(installer, destination, folder):
    """Start-up takes a moment only, so the program is held and let go in turns until its screen is there."""
    process = start(installer, "-path", destination, "--list_host=127.0.0.1:1")
    try:
        place = window_of(process)
        for _ in range(2000):
            process.send_signal(signal.SIGSTOP)
            picture = grab(place)
            if picture.getbbox() and is_start_up(picture):
                save(picture, folder, "start-up")
                return
            process.send_signal(signal.SIGCONT)
            time.sleep(0.001)
        print("the start-up screen was too quick for a picture", file=sys.stderr)
    finally:
        process.send_signal(signal.SIGCONT)
        process.terminate()
        process.wait()


def is_start_up(picture):
    """The window's own dark blue all round, and the panel's near-black at the lower left."""
    red, green, blue = picture.getpixel((700, 100))
    return abs(red - 51) < 6 and abs(green - 67) < 6 and abs(blue - 86) < 6 and max(picture.getpixel((40, 690))) < 60


def take_main(installer, destination, list_host, folder, name, seconds):
    process = start(installer, "-path", destination, "--list_host=" + list_host)
    try:
        place = window_of(process)
        time.sleep(seconds)
        save(grab(place), folder, name)
    finally:
        process.terminate()
        process.wait()


def main():
    installer, list_host, destination, folder = sys.argv[1:]
    os.makedirs(folder, exist_ok=True)
    with Display():
        take_start_up(installer, destination, folder)
        take_main(installer, destination, "127.0.0.1:1", folder, "looking-for-servers", 1.5)
        take_main(installer, destination, list_host, folder, "offer", 3)


if __name__ == "__main__":
    main()
