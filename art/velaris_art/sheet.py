"""Puts the pieces in their places and writes the four pictures."""

import os

import numpy as np
from PIL import Image

from . import background, bars, boxes, cursors, font, globe, logo, sprites, widgets
from .regions import RENDERED, SHEETS, load


def _swatch(region):
    cell = np.full((region.h, region.w, 4), 255, np.uint8)
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


def _save(name, rows_up):
    """Picture files are stored top down."""
    os.makedirs(RENDERED, exist_ok=True)
    Image.fromarray(rows_up[::-1]).save(os.path.join(RENDERED, name + ".png"), optimize=True)


def render():
    sheets = {name: np.zeros((h, w, 4), np.uint8) for name, (w, h) in SHEETS.items()}
    pieces = _pieces()
    for region in load():
        if region.kind not in pieces:
            continue
        sheet = sheets[region.sheet]
        room = sheet[region.y : region.y + region.h, region.x : region.x + region.w]
        room[:] = pieces[region.kind](region)[: room.shape[0], : room.shape[1]]
    for name, rows_up in sheets.items():
        _save(name, rows_up)
