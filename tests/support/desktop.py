"""A desktop for the window: a display, real mouse and key events, pictures, and a window manager's close box.

Places are the program's own: from the lower left of its canvas of 1024 by 768, y up.
"""
import ctypes
import os
import subprocess
import time

import numpy
from PIL import ImageGrab

WIDTH, HEIGHT = 1024, 768
TITLE = "Velaris Installer"
BACK = (51, 67, 86)                     # round a window that comes before the first main screen
TITLE_STRIP = (36, 51, 73)              # the upper 20 rows of every window of the program's own; nothing else is so dark
# Inner size -> what is open.
WINDOWS = {(500, 300): "agreement", (600, 380): "preferences", (420, 250): "alert", (700, 146): "changed file",
           (600, 460): "folder", (420, 120): "folder wait"}
DEADLINE = 120                          # nothing is paced by it: only what hangs comes to it
# Where to click on the main screen, and on the agreement.
INSTALL, QUIT, DESTINATION, PREFERENCES = (490, 89), (985, 89), (70, 89), (50, 750)
AGREE, REFUSE = (262 + 430, 234 + 21), (262 + 342, 234 + 21)


class Display:
    """The display that is there, if `private` is not set, else one of its own."""

    def __init__(self, private=True, size="1280x900x24"):
        self.server = None
        self.name = os.environ.get("DISPLAY")
        if self.name and not private:
            return
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", size, "-nolisten", "tcp",
                                        "-noreset"], pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as number:
            self.name = ":" + number.readline().strip()

    def stop(self):
        if self.server and self.server.poll() is None:
            self.server.terminate()
            self.server.wait()

    def xdotool(self, *words):
        return subprocess.run(["xdotool", *words], env={**os.environ, "DISPLAY": self.name}, capture_output=True,
                              text=True, check=False).stdout


class NoWindow(Exception):
    pass


class Window:
    """The window of a running installer."""

    def __init__(self, display, process):
        self.display, self.process = display, process
        found = until(lambda: process.poll() is not None or
                      display.xdotool("search", "--onlyvisible", "--name", TITLE).split())
        if not found or process.poll() is not None:
            raise NoWindow("the installer's window did not appear")
        self.id = found[0]
        shell = dict(line.split("=") for line in display.xdotool("getwindowgeometry", "--shell", self.id).split()
                     if "=" in line)
        self.left, self.top = int(shell["X"]), int(shell["Y"])
        self.size = int(shell["WIDTH"]), int(shell["HEIGHT"])
        self.scale = self.size[0] / WIDTH

    def grab(self):
        """The canvas, whatever the scale it is shown at."""
        box = (self.left, self.top, self.left + self.size[0], self.top + self.size[1])
        return ImageGrab.grab(bbox=box, xdisplay=self.display.name).convert("RGB").resize((WIDTH, HEIGHT))

    def pixel(self, x, y):
        return self.grab().getpixel((x, HEIGHT - 1 - y))

    def move(self, x, y, *then):
        right, down = int(x * self.scale), int(min(HEIGHT - y, HEIGHT - 1) * self.scale)
        self.display.xdotool("mousemove", str(self.left + right), str(self.top + down), *then)

    def click(self, x, y):
        """A frame takes no more than one press, so that whatever follows meets what the press brought up."""
        self.move(x, y, "click", "1")

    def keys(self, *names):
        self.display.xdotool("key", *names)

    def type(self, text):
        self.display.xdotool("type", "--delay", "5", text)

    def screen(self, picture=None):
        """What is shown: "start-up", "main", "scan", or the name of a window of the program's own."""
        pixels = numpy.asarray(picture or self.grab()).astype(int)
        for (width, height), name in WINDOWS.items():
            left, right, row = (WIDTH - width) // 2, (WIDTH + width) // 2, (HEIGHT - height) // 2 + 10
            strip, beside = pixels[row, [left + 40, right - 40]], pixels[row, [left - 8, right + 8]]
            body = pixels[row + 24, [left + 4, right - 4]]
            if (abs(strip - TITLE_STRIP) < 14).all() and (abs(beside - TITLE_STRIP) > 14).any() and (body > 220).all():
                return name
        if pixels[5, 5].max() < 10:     # nothing was drawn yet
            return "empty"
        if abs(pixels[5, 5] - BACK).max() > 3:
            return "scan" if has_scan_box(pixels) else "main"
        return "start-up" if abs(pixels[HEIGHT - 15, WIDTH // 2] - BACK).max() > 3 else "empty"

    def wait_for(self, *screens, timeout=DEADLINE):
        """Until one of these is shown; its name, or None. A program that has ended shows nothing more."""
        seen = until(lambda: self.process.poll() is not None or (now := self.screen()) in screens and now, timeout)
        return seen if isinstance(seen, str) else None

    def steady(self):
        """A picture that the next one is like, but for a caret that blinks."""
        before = self.grab()

        def still():
            nonlocal before
            last, before = before, self.grab()
            changed = (numpy.asarray(last) != numpy.asarray(before)).any(axis=2)
            return changed.sum() <= 30 and before
        return until(still) or before

    def has_colour(self, area, colour):
        """Somewhere in `area`: left, bottom, right, top."""
        left, bottom, right, top = area
        picture = self.grab().crop((left, HEIGHT - top, right, HEIGHT - bottom))
        return any(all(abs(have - want) < 25 for have, want in zip(pixel, colour))
                   for _, pixel in picture.getcolors(picture.width * picture.height))

    def install_is_live(self):
        """The offer stands: INSTALL is blue."""
        red, _, blue = self.pixel(456, 86)
        return self.screen() == "main" and blue > red + 60

    def is_complete(self):
        """INSTALLATION COMPLETE!, in green."""
        return self.screen() == "main" and self.has_colour((150, 605, 900, 625), (0, 102, 0))

    def install_and_agree(self):
        """True once the agreement was there and was given."""
        self.click(*INSTALL)
        if not self.wait_for("agreement"):
            return False
        self.click(*AGREE)
        return True

    def close_box(self):
        """What a window manager sends when its close box is pressed."""
        x = ctypes.CDLL("libX11.so.6")
        x.XOpenDisplay.restype = ctypes.c_void_p
        x.XInternAtom.restype = ctypes.c_ulong
        link = ctypes.c_void_p(x.XOpenDisplay(self.display.name.encode()))
        event = ClientMessage(type=33, send_event=1, window=int(self.id), format=32,
                              message_type=x.XInternAtom(link, b"WM_PROTOCOLS", 0))
        event.data[0] = x.XInternAtom(link, b"WM_DELETE_WINDOW", 0)
        x.XSendEvent(link, ctypes.c_ulong(int(self.id)), 0, ctypes.c_long(0), ctypes.byref(event))
        x.XFlush(link)
        x.XCloseDisplay(link)


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5), ("room", ctypes.c_long * 24)]


def has_scan_box(pixels):
    """The thin borders of its box, left and right, half way up; the background is light there."""
    row = pixels[HEIGHT // 2].min(axis=1)
    return row[272:282].min() < 225 and row[743:753].min() < 225


def until(fact, timeout=DEADLINE):
    end = time.monotonic() + timeout
    while not (found := fact()):
        if time.monotonic() > end:
            return found
        time.sleep(0.02)
    return found
