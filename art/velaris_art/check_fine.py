"""Checks of the finer pictures: the same as the plain ones but for their grain, and letters in their cells."""

import os

import numpy as np
from PIL import Image

from . import font
from .checking import check
from .regions import SHEETS
from .sheet import GLYPH_SCALES

SAME_KIND = 16  # mean difference of a region's channel that grain, hinting and thinner outlines account for


def _rows_up(art, name, mode):
    with Image.open(os.path.join(art.folder, name + ".png")) as picture:
        return np.asarray(picture.convert(mode))[::-1].astype(float)


def _over_gray(pixels):
    alpha = pixels[..., 3:] / 255
    return pixels[..., :3] * alpha + 128 * (1 - alpha)


@check("the pictures of twice the size show the same as the plain ones, in the same places")
def same_pictures(art):
    for name, (w, h) in SHEETS.items():
        if name == "background_2":
            continue
        fine = _rows_up(art, name + "_2x", "RGBA")
        if fine.shape[:2] != (2 * h, 2 * w):
            yield f"{name}_2x is {fine.shape[1]} by {fine.shape[0]}"
            continue
        mean = _over_gray(fine).reshape(h, 2, w, 2, 3).mean(axis=(1, 3))
        off = abs(mean - _over_gray(art.sheets[name].astype(float))).mean(axis=2)
        for region in art.regions:
            if region.sheet == name and region.kind not in ("glyph", "group", "reserve", "sample"):
                worst = off[region.y : region.y + region.h, region.x : region.x + region.w].mean()
                if worst > SAME_KIND:
                    yield f"{region.name} differs by {worst:.0f}"


@check("letters of every scale stand on one line and within their advance, with free pixels round each cell")
def letters(art):
    advances = {region.code: region.advance for region in art.of("glyph")}
    for scale in GLYPH_SCALES:
        sheet = _rows_up(art, f"glyphs_{scale:g}x", "L")
        dx, dy = (side + 2 * font.BORDER for side in font.cell_size(scale))
        if sheet.shape != (len(font.ROWS) * dy, len(font.ROWS[0]) * dx):
            yield f"the sheet of scale {scale:g} is {sheet.shape[1]} by {sheet.shape[0]}"
            continue
        for row, text in enumerate(font.ROWS):
            for column, char in enumerate(text):
                cell = sheet[row * dy : (row + 1) * dy, column * dx : (column + 1) * dx]
                where = f"{char!r} of scale {scale:g}"
                room = font.BORDER + font.ROOM.get(char, advances[ord(char)]) * scale
                if cell[:, np.arange(dx) >= room].any() or cell[0].any() or cell[-1].any() or cell[:, 0].any():
                    yield f"{where} leaves its room"
                if scale > 0.5 and char.isascii() and char.isalnum() and char not in "gjpqyQJ":
                    foot = np.flatnonzero(cell.max(axis=1) > cell.max() / 2)[0] - font.BORDER - round(font.BASELINE * scale)
                    if foot not in (-1, 0):
                        yield f"{where} stands {foot} above the line"
