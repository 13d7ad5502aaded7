"""Checks of places: the table itself, what lies outside it, the font and the palette."""

import os

import numpy as np
from PIL import Image

from .checking import check
from .regions import SHEETS

CELL_W, CELL_H, COLUMNS = 14, 15, 21
GLYPHS = (
    " 0123456789AaBbCcDdEe"
    "FfGgHhIiJjKkLlMmNnOoP"
    "pQqRrSsTtUuVvWwXxYyZz"
    "!@#$%^&*()-_+=[]|\\':;"
    "<.>,?/`\xfb\xc1\xe1\xc9\xe9\xcd\xed\xd3\xf3\xda\xfa\xd1\xf1\xbf"
)
ADVANCES = {
    2: ".,",
    3: " ijlI':;/\\|`\xfb",
    4: "-!()[]Jfrst",
    5: "c",
    6: "0123456789aekvxyzEFLPSTZ*?^_#$\xc1\xe1\xc9\xe9\xcd\xed\xd3\xf3\xda\xfa\xd1\xf1\xbf",
    7: "bdghnopquBCKRVXY+<=>",
    8: "ADGHNU&",
    9: "wOQ@",
    10: "mM",
    11: "W%",
}
ONE_COLUMN = ".,:;'!il|"
TALL = "ABCDEFGHIKLMNOPRSTUVWXYZbdhkl0123456789"  # J and Q have tails in this face
SMALL = "acemnorsuvwxz"
TAILED = "gpqy"


@check("pictures have their size, four channels and a modest file")
def sizes(art):
    for name, size in SHEETS.items():
        with Image.open(art.path(name)) as picture:
            if picture.size != size or picture.mode != "RGBA":
                yield f"{name} is {picture.size} {picture.mode}, not {size} RGBA"
        if os.path.getsize(art.path(name)) > 900_000:
            yield f"{name} takes {os.path.getsize(art.path(name))} bytes"


@check("regions lie in their sheets, apart from each other, and are all drawn")
def regions_apart(art):
    owner = {name: np.full((h, w), -1) for name, (w, h) in SHEETS.items()}
    for i, region in enumerate(art.regions):
        if region.kind in ("group", "sample", "reserve"):
            continue
        w, h = SHEETS[region.sheet]
        spill = 1 if region.name in ("bar0_menu_band", "bar1_title_band") else 0
        if region.x + region.w > w or region.y + region.h > h + spill:
            yield f"{region.name} leaves its sheet"
        room = owner[region.sheet][region.y : region.y + region.h, region.x : region.x + region.w]
        for other in set(room[room >= 0]):
            yield f"{region.name} overlaps {art.regions[other].name}"
        room[:] = i
        if region.code != 32 and not art.pixels(region)[:, :, 3].any():
            yield f"{region.name} is empty"


@check("nothing is drawn outside the regions")
def outside_empty(art):
    for name, sheet in art.sheets.items():
        stray = sheet.any(axis=2)
        for region in art.regions:
            if region.sheet == name and region.kind not in ("group", "sample", "reserve"):
                stray[region.y : region.y + region.h, region.x : region.x + region.w] = False
        for y, x in np.argwhere(stray)[:20]:
            yield f"{name}: pixel {x}, {y} is not empty"
    if art.sheets["interface_atlas"][0].any():
        yield "row 0 of the atlas is not empty, so bars 0 and 1 get a wrong top row"


@check("palette swatches are flat and exact")
def palette(art):
    for region in art.of("swatch") + art.of("sample"):
        found = art.pixels(region).reshape(-1, 4)
        if (found != [*region.colour, 255]).any():
            yield f"{region.name} should be {region.colour}, has {found.min(axis=0)} to {found.max(axis=0)}"
    rows = [region.y for region in art.of("sample") if region.x == 319]
    if sorted(rows) != list(range(59, 156, 8)):
        yield f"samples are read at rows {sorted(rows)}"


def _ink(art, region):
    return art.pixels(region)[:, :, 3]


def _rows(ink, least=64):
    """Lowest row of solid ink and the row above the highest."""
    at = np.nonzero((ink >= least).any(axis=1))[0]
    return at[0], at[-1] + 1


@check("glyphs stand in their order, with the advances the text code has")
def glyph_table(art):
    glyphs = sorted(art.of("glyph"), key=lambda region: (region.y, region.x))
    if [chr(region.code) for region in glyphs] != list(GLYPHS):
        yield "the order of the cells differs from the order of the codes"
    for i, region in enumerate(glyphs):
        if (region.x, region.y) != (CELL_W * (i % COLUMNS), CELL_H * (i // COLUMNS)):
            yield f"{region.name} stands at {region.x}, {region.y}"
        if chr(region.code) not in ADVANCES.get(region.advance, ""):
            yield f"{region.name} has the advance {region.advance}"


@check("glyph ink is white and stays in its columns and rows")
def glyph_ink(art):
    for region in art.of("glyph"):
        cell, ink = art.pixels(region), _ink(art, region)
        char = chr(region.code)
        if char == " ":
            if cell.any():
                yield "the space is not empty"
            continue
        if (cell[ink > 0][:, :3] != 255).any():
            yield f"{char!r} has ink that is not white"
        room = 4 if char == "\xfb" else region.advance
        if ink[:, room:].any():
            yield f"{char!r} runs past column {room - 1}"
        if region.advance >= 6 and ink[:, region.advance - 1].max() > 70:
            yield f"{char!r} fills its last column"
        if ink[:4].any():
            yield f"{char!r} has ink below row 4"
        if char in ONE_COLUMN and ((ink > 0).any(axis=0).sum() != 1 or ink.max() < 240):
            yield f"{char!r} is not one full column"
        if char in "0123456789" and ink[:, 6:].any():
            yield f"{char!r} is wider than a digit"


@check("letters stand on row 6 with the right height, and no two are alike")
def glyph_heights(art):
    by_char = {chr(region.code): _ink(art, region) for region in art.of("glyph")}
    for chars, wanted in ((TALL, (6, 13)), (SMALL, (6, 11)), (TAILED, (4, 11))):
        for char in chars:
            if _rows(by_char[char]) != wanted:
                yield f"{char!r} fills rows {_rows(by_char[char])}, not {wanted}"
    # In this face the capital i and the small l are one stroke each.
    seen = {}
    for char, ink in by_char.items():
        twin = seen.setdefault(ink.tobytes(), char)
        if twin != char and {twin, char} != {"I", "l"}:
            yield f"{twin!r} and {char!r} look the same"
    # Text must not look thin: a full stem somewhere in every letter.
    for char in TALL + SMALL + TAILED:
        if by_char[char].max() < 215:
            yield f"{char!r} has no solid stroke"
