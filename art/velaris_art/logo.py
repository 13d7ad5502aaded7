"""The panel that the turning globe lies on: the bezel of a heading indicator."""

import math

from . import palette as tone
from . import vector
from .canvas import Canvas, cover, disc, glow, ring, rows

CENTRE = (61, 45)  # of the globe
RIM = 40.0
SCALE = 37.5  # outer edge of the dark ring that carries the marks
WELL = 31.5  # the calm place under the globe


def _marks(c, every, inner, outer, width):
    lines = []
    for degrees in range(0, 360, every):
        east, north = math.sin(math.radians(degrees)), math.cos(math.radians(degrees))
        lines.append([(CENTRE[0] + r * east, CENTRE[1] + r * north) for r in (inner, outer)])
    return vector.mask(c.w, c.h, vector.strokes(lines, width))


def draw(region):
    c = Canvas(region.w, region.h)
    low, high = CENTRE[1] - RIM, CENTRE[1] + RIM
    c.paint(tone.SHADOW, glow(disc(c.w, c.h, (CENTRE[0], CENTRE[1] - 2.5), RIM - 2), 4.5), 0.4)
    rim = disc(c.w, c.h, CENTRE, RIM)
    c.paint(rows(c.h, (low, (132, 148, 168)), (high, (250, 252, 254))), cover(rim))
    c.paint(tone.SLATE_500, ring(rim))
    scale = disc(c.w, c.h, CENTRE, SCALE)
    c.paint(rows(c.h, (low, (40, 56, 76)), (high, (18, 27, 40))), cover(scale))
    c.paint(tone.SLATE_300, _marks(c, 10, 33.6, 36.0, 0.9), 0.85)
    c.paint(tone.WHITE, _marks(c, 30, 32.8, 36.2, 1.3))
    well = disc(c.w, c.h, CENTRE, WELL)
    c.paint((10, 16, 26), cover(well))
    # The lubber line: the fixed mark that the heading is read against.
    x, top = CENTRE[0], CENTRE[1] + SCALE
    lubber = [(x - 4, top + 0.5), (x + 4, top + 0.5), (x, top - 5.5)]
    c.paint((255, 190, 64), vector.mask(c.w, c.h, vector.polygon(lubber)))
    return c
