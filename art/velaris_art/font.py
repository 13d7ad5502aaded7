"""The 105 glyphs of the interface.

Layout everywhere is built on fixed advances, so each letter is fitted to its advance instead of
bringing its own: it is narrowed or widened a little and shifted by parts of a pixel until its
stems fall on whole columns, which is what keeps such small text sharp.
"""

import math

import numpy as np

from . import fine, vector

FACE = vector.Face("Open Sans Semibold", size=9.75)
CELL_W, CELL_H = 14, 15
BASELINE = 6  # lowest row of letters without a tail
PAD = 4  # room left and right of the cell, so that ink which runs over is seen
NARROWEST, WIDEST = 0.8, 1.12
LAST_RESORT = 0.55  # for the few accented letters whose advance is far below their width

# Letters allowed to run past their advance, with the columns they may fill.
ROOM = {"\u00fb": 4}

# One full column of ink, never two half ones: code to column.
ONE_COLUMN = {".": 0, ",": 0, ":": 1, ";": 1, "'": 1, "!": 1, "i": 1, "l": 1, "|": 1, "I": 1}

SLACK = 1 / 64  # ink lighter than this at the edge of a letter is dropped


def _ink(char, stretch, shift):
    wide = FACE.mask(CELL_W + 2 * PAD, CELL_H, char, PAD + shift, BASELINE, stretch)
    return np.where(wide < SLACK, 0, wide)


def _stays_inside(wide, advance):
    if wide[:, :PAD].any() or wide[:, PAD + advance :].any():
        return False
    return advance < 6 or wide[:, PAD + advance - 1].max() < 0.25


def _quality(wide, advance, stretch, natural):
    """Sharp first, then near its natural width, then with the air shared out evenly."""
    ink = wide[:, PAD : PAD + advance]
    sharp = (ink**2).sum() / ink.sum()
    columns = ink.sum(axis=0)
    middle = (columns * (np.arange(advance) + 0.5)).sum() / columns.sum()
    # A whole column of air to the right and little to the left, as the last column is to be empty.
    off_centre = abs(middle - (advance - 0.4) / 2)
    return sharp - 1.2 * abs(stretch / natural - 1) - 0.12 * off_centre


def _fitted(char, advance):
    """The glyph at its best stretch and shift."""
    for narrowest in (NARROWEST, LAST_RESORT):
        best = _search(char, ROOM.get(char, advance), narrowest)
        if best is not None:
            return best
    raise ValueError(f"no stretch fits {char!r} into its advance of {advance}")


def _search(char, advance, narrowest):
    natural = min(max(advance / FACE.advance(char), NARROWEST), WIDEST)
    best, best_quality = None, -np.inf
    lowest = max(narrowest, natural - 0.1) if narrowest == NARROWEST else narrowest
    for stretch in np.arange(lowest, min(WIDEST, natural + 0.1) + 1e-9, 0.01):
        for shift in np.arange(-0.75, 1.26, 0.0625):
            wide = _ink(char, stretch, shift)
            if not wide.any() or not _stays_inside(wide, advance):
                continue
            quality = _quality(wide, advance, stretch, natural)
            if quality > best_quality:
                best, best_quality = wide[:, PAD : PAD + CELL_W], quality
    return best


def _one_column(char, column):
    """All ink of a thin sign gathered in one column."""
    wide = _ink(char, 1.0, 2.0)
    cell = np.zeros((CELL_H, CELL_W))
    stroke = wide.sum(axis=1)
    cell[:, column] = np.clip(stroke / min(stroke.max(), 1), 0, 1)
    return cell


def glyph(code, advance):
    """Coverage of one cell, 15 rows by 14 columns, bottom row first."""
    char = chr(code)
    if char == " ":
        return np.zeros((CELL_H, CELL_W))
    if char in ONE_COLUMN:
        return _one_column(char, ONE_COLUMN[char])
    return _fitted(char, advance)


def pixels(code, advance):
    """The cell as white ink whose edges are smooth in alpha alone."""
    alpha = np.rint(glyph(code, advance) * 255).astype(np.uint8)
    cell = np.full((CELL_H, CELL_W, 4), 255, np.uint8)
    cell[:, :, 3] = alpha
    cell[alpha == 0] = 0
    return cell


# --- the finer sheets, for windows that are shown larger

ROWS = [  # as in the atlas, the lowest row first
    " 0123456789AaBbCcDdEe", "FfGgHhIiJjKkLlMmNnOoP", "pQqRrSsTtUuVvWwXxYyZz", "!@#$%^&*()-_+=[]|\\':;",
    "<.>,?/`\u00fb\u00c1\u00e1\u00c9\u00e9\u00cd\u00ed\u00d3\u00f3\u00da\u00fa\u00d1\u00f1\u00bf",
]
BORDER = 1  # free pixels round each cell, so that one which is filtered does not take its neighbour's ink


def cell_size(scale):
    return math.ceil(CELL_W * scale), math.ceil(CELL_H * scale)


def fine_sheet(scale, advances):
    """Coverage of all cells at a scale, bottom row first. `advances` by code, in units."""
    fine.SCALE = scale
    cell_w, cell_h = cell_size(scale)
    sheet = np.zeros((len(ROWS) * (cell_h + 2 * BORDER), len(ROWS[0]) * (cell_w + 2 * BORDER)))
    for row, text in enumerate(ROWS):
        for column, char in enumerate(text):
            if char == " ":
                continue
            y, x = row * (cell_h + 2 * BORDER) + BORDER, column * (cell_w + 2 * BORDER) + BORDER
            sheet[y : y + cell_h, x : x + cell_w] = _fine_glyph(char, advances[ord(char)], scale)
    fine.SCALE = 1
    return np.rint(sheet * 255).astype(np.uint8)


def _fine_glyph(char, advance, scale):
    """The baseline and the room are whole pixels; within the room the sharpest place and width are taken."""
    cell_w, cell_h = cell_size(scale)
    baseline, room = round(BASELINE * scale), math.floor(ROOM.get(char, advance) * scale)
    natural = min(max(advance / FACE.advance(char), LAST_RESORT), WIDEST)
    best, best_quality = None, -np.inf
    for share in np.arange(1.06, 0.5, -0.02):
        if best is not None and share < 0.86:
            break  # narrower only where nothing else fits
        stretch = natural * share
        for shift in np.arange(-0.75 * scale, 1.25 * scale, 0.125):
            wide = FACE.mask((cell_w + 2 * PAD) / scale, cell_h / scale, char, (PAD + shift) / scale, baseline / scale,
                             stretch)
            wide = np.where(wide < SLACK, 0, wide)
            if not wide.any() or wide[:, :PAD].any() or wide[:, PAD + room :].any():
                continue
            ink = wide[:, PAD : PAD + room]
            columns = ink.sum(axis=0)
            middle = (columns * (np.arange(room) + 0.5)).sum() / columns.sum() / scale
            quality = (ink**2).sum() / ink.sum() - 1.2 * abs(share - 1)
            quality -= 2 * abs(middle - (advance - 0.4) / 2)
            if quality > best_quality:
                best, best_quality = wide[:, PAD : PAD + cell_w], quality
    if best is None:
        raise ValueError(f"nothing fits {char!r} into its advance of {advance} at {scale}")
    return best
