"""Boxes: nine pieces whose middles repeat in both directions.

Some boxes are cut at fractions of a pixel, so their middles are laid down shifted and would blur
anything that is not constant. Shading therefore belongs to the outer pieces: every gradient here
ends before the cut, and the centre is one flat colour.
"""

from . import palette as tone
from .bars import inset, moved, upper_edge
from .canvas import Canvas, cover, glow, ring, rounded, rows



def _shadow(c, outer, radius, strength, drop=3, reach=8):
    """Starts under the box, so that no flat rim of it shows, and is gone 10 pixels below the body."""
    cast = rounded(c.w, c.h, moved(inset(outer, 2), dy=-drop), radius)
    c.paint(tone.SHADOW, glow(cast, reach), strength)


def _panel(region, stops, border, radius, shadow, rim=0.0):
    """A body on its rectangle, a border outside it, a shadow below."""
    c = Canvas(region.w, region.h)
    face = region.face
    outer = inset(face, -1)
    if shadow:
        _shadow(c, outer, radius + 1, shadow)
    c.paint(border, cover(rounded(c.w, c.h, outer, radius + 1)))
    body = rounded(c.w, c.h, face, radius)
    c.paint(rows(c.h, *stops), cover(body))
    if rim:
        c.paint(tone.WHITE, upper_edge(body, rounded(c.w, c.h, moved(face, dy=-1), radius)), rim)
    return c


def _banded(colour, band, top=96, foot=72):
    """A body of one colour with a band that fades in towards the top, without a line below it."""
    return [(foot, colour), (top - 4, band), (top, band)]


def window(region):
    """Dark title strip over a light body."""
    c = _panel(region, [(14, (224, 230, 237)), (28, (235, 239, 244))], tone.SLATE_900, 6, 0.33)
    strip = rounded(c.w, c.h, region.face, 6)
    above = cover(rounded(c.w, c.h, (0, 76, c.w, c.h)))
    c.paint(rows(c.h, (76, (28, 41, 58)), (96, (50, 67, 90))), cover(strip) * above)
    c.paint(tone.WHITE, upper_edge(strip, rounded(c.w, c.h, moved(region.face, dy=-1), 6)), 0.22)
    c.paint(tone.SLATE_900, cover(rounded(c.w, c.h, (9, 76, 91, 77))) * cover(strip), 0.55)
    for row, strength in ((75, 0.10), (74, 0.05), (73, 0.02)):
        c.paint(tone.SHADOW, cover(rounded(c.w, c.h, (9, row, 91, row + 1))), strength)
    return c


def plain_window(region):
    return _panel(region, _banded((235, 239, 244), (250, 251, 253)), tone.SLATE_900, 6, 0.33, rim=0.8)


def panel(region):
    return _panel(region, _banded((249, 250, 252), (223, 231, 240)), tone.SLATE_300, 5, 0.20, rim=0.8)


def help_box(region):
    stops = [(14, (20, 30, 42)), (28, (28, 40, 55)), (72, (28, 40, 55)), (96, (34, 47, 60))]
    return _panel(region, stops, tone.MINT, 6, 0.33)


def start_up(region):
    stops = [(14, (12, 18, 27)), (28, tone.SLATE_900), (72, tone.SLATE_900), (96, (26, 38, 50))]
    return _panel(region, stops, (92, 110, 134), 7, 0.33, rim=0.14)


def thin(region):
    return _panel(region, [(2, tone.PAPER), (50, tone.PAPER), (66, tone.WHITE)], tone.SLATE_400, 4, 0)


def menu_body(region):
    """Lighter than the highlight that is laid over its rows, dark enough for white text."""
    c = Canvas(region.w, region.h)
    face = region.face
    _shadow(c, face, 3, 0.33, drop=4, reach=7.5)
    shape = rounded(c.w, c.h, face, 2)
    c.paint(rows(c.h, (29, (72, 90, 114)), (41, (84, 103, 128))), cover(shape))
    c.paint(tone.SLATE_800, ring(shape), 0.9)
    return c


def menu_title(region):
    c = Canvas(region.w, region.h)
    face = region.face
    _shadow(c, face, 3, 0.3, drop=3, reach=7)
    shape = rounded(c.w, c.h, face, 2)
    c.paint(rows(c.h, (31, tone.SLATE_50), (41, tone.WHITE)), cover(shape))
    c.paint(tone.SLATE_400, ring(shape))
    return c


def list_well(region):
    c = Canvas(region.w, region.h)
    face = region.face
    outer = rounded(c.w, c.h, inset(face, -1), 3)
    c.paint(tone.WHITE, cover(rounded(c.w, c.h, moved(inset(face, -1), dy=-1), 3)), 0.5)
    c.paint(tone.SLATE_400, cover(outer))
    c.paint(tone.WHITE, cover(rounded(c.w, c.h, face, 2)))
    for step, strength in ((1, 0.12), (2, 0.05)):
        shade = upper_edge(rounded(c.w, c.h, face, 2), rounded(c.w, c.h, moved(face, dy=-step), 2))
        c.paint(tone.SHADOW, shade, strength)
    return c


def picture_panel(region):
    """Near-white all over: warnings in red stand on it."""
    flat = (251, 252, 254)
    return _panel(region, [(1, (250, 251, 253)), (10, flat), (31, flat), (39, tone.WHITE)], (142, 158, 178), 4, 0)


DRAWINGS = {
    "box11_window_frame_with_corner_boxes": window,
    "box12_window_frame": plain_window,
    "box13_panel": panel,
    "box14_help_box": help_box,
    "box15_start_up_panel": start_up,
    "box16_thin_box": thin,
    "box17_menu_body": menu_body,
    "box18_menu_title": menu_title,
    "box19_list_well": list_well,
    "box20_picture_panel": picture_panel,
}
