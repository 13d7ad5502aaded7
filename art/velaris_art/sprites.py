"""The sprite buttons of the installer sheet, three states each.

The code multiplies them by a green or a red tint, so they are drawn in cool neutrals: mint and rose
on the screen, with the dark caption hardly changed.
"""

import numpy as np

from . import palette as tone
from . import vector
from .bars import inset, moved, upper_edge
from .canvas import Canvas, cover, ring, rounded, rows

CAPTION = vector.Face("Roboto Condensed", bold=True, size=11)
CAPITALS = 8  # rows
RADIUS = 4


def caption_mask(region, drop):
    """The caption, centred by its ink; drop moves it down by whole pixels.

    Of all starts within one pixel of the middle the sharpest is taken, so that most stems fall on
    whole columns.
    """
    baseline = (region.h - CAPITALS) // 2 - drop
    middle = (region.w - CAPTION.advance(region.text)) / 2
    starts = middle + np.arange(-4, 5) / 8
    masks = [CAPTION.mask(region.w, region.h, region.text, start, baseline) for start in starts]
    return max(masks, key=lambda mask: (mask**2).sum())


def _face(region, stops, border, rim):
    c = Canvas(region.w, region.h)
    face = region.face
    c.paint(tone.SHADOW, cover(rounded(c.w, c.h, moved(face, dy=-1), RADIUS)), 0.24)
    shape = rounded(c.w, c.h, face, RADIUS)
    c.paint(rows(c.h, *stops), cover(shape))
    inner = rounded(c.w, c.h, inset(face, 1), RADIUS - 1)
    lowered = rounded(c.w, c.h, moved(inset(face, 1), dy=-1), RADIUS - 1)
    c.paint(tone.WHITE, upper_edge(inner, lowered), rim)
    c.paint(border, ring(shape))
    return c


def normal(region):
    c = _face(region, [(1, (196, 206, 219)), (11, (218, 226, 235)), (21, (240, 244, 249))], (74, 91, 114), 0.85)
    c.paint(tone.WHITE, caption_mask(region, 1), 0.55)
    c.paint(tone.INK, caption_mask(region, 0))
    return c


def hover(region):
    c = _face(region, [(1, (228, 236, 244)), (11, (244, 249, 253)), (21, (255, 255, 255))], (52, 84, 124), 1.0)
    inner = rounded(c.w, c.h, inset(region.face, 1), RADIUS - 1)
    c.paint(tone.WHITE, ring(inner), 0.9)
    c.paint(tone.INK, caption_mask(region, 0))
    return c


def pressed(region):
    c = Canvas(region.w, region.h)
    face = region.face
    c.paint(tone.WHITE, cover(rounded(c.w, c.h, moved(face, dy=-1), RADIUS)), 0.45)
    shape = rounded(c.w, c.h, face, RADIUS)
    c.paint(rows(c.h, (1, (196, 206, 218)), (12, (174, 186, 201)), (21, (152, 166, 184))), cover(shape))
    for step, strength in ((2, 0.16), (3, 0.08)):
        shade = upper_edge(shape, rounded(c.w, c.h, moved(face, dy=-step), RADIUS))
        c.paint(tone.SHADOW, shade, strength)
    c.paint((52, 68, 90), ring(shape))
    c.paint(tone.INK, caption_mask(region, 1))
    return c


STATES = {"normal": normal, "hover": hover, "pressed": pressed}


def draw(region):
    return STATES[region.state](region)
