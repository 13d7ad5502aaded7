"""Loads what was rendered and runs the checks on it, a line for each."""

import os

import numpy as np
from PIL import Image

from .regions import RENDERED, SHEETS, by_name, load

SHOWN = 6  # faults printed of one check

_checks = []


def check(title):
    """Marks a function of the art that yields one text for each fault it finds."""

    def register(function):
        _checks.append((title, function))
        return function

    return register


class Art:
    """The pictures as arrays with row 0 at the bottom, and the table of regions."""

    def __init__(self, folder=RENDERED):
        self.folder = folder
        self.regions = load()
        self.named = by_name(self.regions)
        self.sheets = {}
        for name in SHEETS:
            with Image.open(self.path(name)) as picture:
                self.sheets[name] = np.asarray(picture.convert("RGBA"))[::-1]

    def path(self, sheet):
        return os.path.join(self.folder, sheet + ".png")

    def of(self, kind):
        return [region for region in self.regions if region.kind == kind]

    def pixels(self, region):
        """A copy of the region's pixels, as whole numbers with room for differences."""
        region = self.named[region] if isinstance(region, str) else region
        sheet = self.sheets[region.sheet]
        return sheet[region.y : region.y + region.h, region.x : region.x + region.w].astype(int)


def luminance(colour):
    """Relative luminance, 0 to 1, of colours with 0 to 255 in the last axis."""
    share = np.asarray(colour, dtype=float)[..., :3] / 255
    linear = np.where(share <= 0.04045, share / 12.92, ((share + 0.055) / 1.055) ** 2.4)
    return linear @ np.array([0.2126, 0.7152, 0.0722])


def contrast(one, other):
    a, b = luminance(one), luminance(other)
    return (np.maximum(a, b) + 0.05) / (np.minimum(a, b) + 0.05)


def run(art):
    """Prints a line a check; returns how many failed."""
    failed = 0
    for title, function in _checks:
        try:
            faults = list(function(art))
        except (IndexError, ValueError) as error:  # such as an empty cell that has no darkest pixel
            faults = [f"could not be measured: {error}"]
        print(("FAIL  " if faults else "ok    ") + title)
        for fault in faults[:SHOWN]:
            print("        " + fault)
        if len(faults) > SHOWN:
            print(f"        and {len(faults) - SHOWN} more")
        failed += bool(faults)
    return failed
