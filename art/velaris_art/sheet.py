"""Puts the pieces in their places and writes the four pictures, in both sizes, and the finer glyphs."""

import os

import numpy as np
from PIL import Image

from . import background, bars, boxes, cursors, fine, font, globe, logo, sprites, widgets
from .regions import RENDERED, SHEETS, load


def _swatch(region):
    cell = np.full((fine.pixels(region.h), fine.pixels(region.w), 4), 255, np.uint8)
    cell[:, :, :3] = region.colour
    return cell


def _pieces():
    """What draws a region, by kind: a function from the region to its pixels, or None."""
    drawings = {**bars.DRAWINGS, **boxes.DRAWINGS, **widgets.DRAWINGS, "logo_panel": logo.draw}
    turning = globe.frames()

    def named(region):
        return drawings[region.name](region).pixels()

    return {
        "glyph": lambda region: font.pixels(region.code, region.advance),
        "swatch": _swatch,
        "bar": named,
        "box": named,
        "cell": named,
        "cursor": lambda region: cursors.draw(region).pixels(),
        "sprite": lambda region: sprites.draw(region).pixels(),
        "globe": lambda region: turning[int(region.name[-2:])],
        "picture": lambda region: background.draw(region.name),
    }


# Scales at which letters are drawn anew; the pictures are drawn at 1 and 2.
GLYPH_SCALES = (0.5, 0.625, 0.75, 0.875, 1.25, 1.5, 1.75, 2, 2.5, 3, 4)


def _save(name, rows_up):
    """Picture files are stored top down."""
    os.makedirs(RENDERED, exist_ok=True)
    Image.fromarray(rows_up[::-1]).save(os.path.join(RENDERED, name + ".png"), optimize=True)


def _render(scale, suffix):
    fine.SCALE = scale
    sheets = {name: np.zeros((h * scale, w * scale, 4), np.uint8) for name, (w, h) in SHEETS.items()}
    pieces = _pieces()
    if scale != 1:
        del pieces["glyph"]  # they have sheets of their own
    for region in load():
        if region.kind not in pieces:
            continue
        left, bottom = fine.pixels(region.x), fine.pixels(region.y)
        room = sheets[region.sheet][bottom : bottom + fine.pixels(region.h), left : left + fine.pixels(region.w)]
        room[:] = pieces[region.kind](region)[: room.shape[0], : room.shape[1]]
    for name, rows_up in sheets.items():
        if scale == 1 or name != "background_2":  # the spare one is never shown
            _save(name + suffix, rows_up)
    fine.SCALE = 1


def render():
    _render(1, "")
    _render(2, "_2x")
    advances = {region.code: region.advance for region in load() if region.kind == "glyph"}
    for scale in GLYPH_SCALES:
        _save(f"glyphs_{scale:g}x", font.fine_sheet(scale, advances))
