"""The small cells: marks, corner boxes, arrows, tabs, slider parts and the compass."""

import math

from . import palette as tone
from . import vector
from .bars import inset, moved, upper_edge
from .canvas import Canvas, cover, disc, ring, rounded, rows


def _rim(c, face, radius, strength):
    """A light line along the upper edge of a face."""
    shape = rounded(c.w, c.h, face, radius)
    c.paint(tone.WHITE, upper_edge(shape, rounded(c.w, c.h, moved(face, dy=-1), radius)), strength)


def _arrow(region, points, colour):
    return Canvas(region.w, region.h).paint(colour, vector.mask(region.w, region.h, vector.polygon(points)))


def digit_arrow_up(region):
    return _arrow(region, [(3, 7), (7, 12), (11, 7)], tone.SLATE_600)


def digit_arrow_down(region):
    return _arrow(region, [(3, 10), (7, 5), (11, 10)], tone.SLATE_600)


def _base(region, radius):
    """A white well for a mark."""
    c = Canvas(region.w, region.h)
    shape = rounded(c.w, c.h, region.face, radius)
    c.paint(rows(c.h, (2, (255, 255, 255)), (11, (255, 255, 255)), (16, (232, 237, 243))), cover(shape))
    for step, strength in ((1, 0.16), (2, 0.06)):
        shade = upper_edge(shape, rounded(c.w, c.h, moved(region.face, dy=-1 - step), radius))
        c.paint(tone.SHADOW, shade, strength)
    c.paint(tone.SLATE_500, ring(shape, 1.15))
    return c


def radio_base(region):
    return _base(region, 7)


def check_base(region):
    return _base(region, 3)


def radio_mark(region):
    c = Canvas(region.w, region.h)
    dot = disc(c.w, c.h, (9, 9), 3.6)
    c.paint(rows(c.h, (5, tone.SKY_DEEP), (9, tone.SKY), (13, (74, 156, 228))), cover(dot))
    return c


def check_mark(region):
    c = Canvas(region.w, region.h)
    tick = [[(5.2, 9.0), (8.0, 5.9), (13.0, 12.3)]]
    c.paint(tone.SKY_DEEP, vector.mask(c.w, c.h, vector.strokes(tick, 2.3)))
    return c


def _corner_box(region, stops, rim, edge, cross):
    c = Canvas(region.w, region.h)
    shape = rounded(c.w, c.h, inset(region.face, 1), 4)
    c.paint(rows(c.h, *stops), cover(shape))
    _rim(c, inset(region.face, 2), 3, rim)
    c.paint(edge, ring(shape))
    # Whole diagonal steps keep the cross even: its arms end on pixel corners.
    arms = [[(6.5, 6.5), (11.5, 11.5)], [(6.5, 11.5), (11.5, 6.5)]]
    c.paint(cross, vector.mask(c.w, c.h, vector.strokes(arms, 1.7)))
    return c


def corner_box_up(region):
    stops = [(2, (78, 98, 124)), (16, (118, 139, 164))]
    return _corner_box(region, stops, 0.30, (20, 29, 42), tone.WHITE)


def corner_box_pushed(region):
    stops = [(2, (60, 77, 100)), (16, (38, 51, 69))]
    return _corner_box(region, stops, 0.0, (14, 20, 30), (214, 224, 236))


def _tab(region, stops, edge, rim):
    c = Canvas(region.w, region.h)
    shape = rounded(c.w, c.h, region.face, (0, 0, 5, 5))
    c.paint(rows(c.h, *stops), cover(shape))
    _rim(c, inset(region.face, 1), 4, rim)
    c.paint(edge, ring(shape))
    return c


def tab_chosen(region):
    c = _tab(region, [(0, tone.PAPER), (26, tone.WHITE)], tone.SLATE_500, 0.9)
    # Open below: the chosen tab runs into its page.
    c.paint(tone.PAPER, cover(rounded(c.w, c.h, (1, 0, c.w - 1, 1))))
    return c


def tab_other(region):
    return _tab(region, [(0, (219, 226, 234)), (26, (236, 241, 246))], tone.SLATE_400, 0.6)


def _knob(region, face, radius=4):
    c = Canvas(region.w, region.h)
    for step, strength in ((1, 0.22), (2, 0.08)):
        c.paint(tone.SHADOW, cover(rounded(c.w, c.h, moved(face, dy=-step), radius)), strength)
    shape = rounded(c.w, c.h, face, radius)
    c.paint(rows(c.h, (face[1], (206, 215, 226)), (face[3], (252, 253, 254))), cover(shape))
    _rim(c, inset(face, 1), radius - 1, 0.9)
    c.paint(tone.SLATE_500, ring(shape))
    return c


def slider_thumb(region):
    c = _knob(region, (1, 2, 17, 23))
    for y in (9, 12, 15):
        c.paint(tone.SLATE_400, cover(rounded(c.w, c.h, (5, y, 13, y + 1))))
    return c


def slider_knob(region):
    c = _knob(region, (2, 2, 18, 21))
    for x in (7, 9, 12):
        c.paint(tone.SLATE_400, cover(rounded(c.w, c.h, (x, 7, x + 1, 16))))
    return c


def slider_arrow_up(region):
    c = _knob(region, (1, 2, 17, 21))
    c.paint(tone.SLATE_600, vector.mask(c.w, c.h, vector.polygon([(5, 9), (9, 14), (13, 9)])))
    return c


def slider_arrow_down(region):
    c = _knob(region, (1, 2, 17, 21))
    c.paint(tone.SLATE_600, vector.mask(c.w, c.h, vector.polygon([(5, 14), (9, 9), (13, 14)])))
    return c


def compass_dial(region):
    c = Canvas(region.w, region.h)
    centre = (28, 29)
    rim, face = disc(c.w, c.h, centre, 27), disc(c.w, c.h, centre, 24.5)
    c.paint(rows(c.h, (2, tone.SLATE_500), (56, tone.SLATE_200)), cover(rim))
    c.paint(tone.SLATE_700, ring(rim))
    c.paint(rows(c.h, (4, (34, 48, 66)), (54, tone.SLATE_900)), cover(face))

    def ticks(every, inner, width):
        lines = []
        for degrees in range(0, 360, every):
            east, north = math.sin(math.radians(degrees)), math.cos(math.radians(degrees))
            lines.append([(centre[0] + r * east, centre[1] + r * north) for r in (inner, 23)])
        return vector.mask(c.w, c.h, vector.strokes(lines, width))

    c.paint(tone.SLATE_300, ticks(10, 21, 0.8), 0.8)
    c.paint(tone.WHITE, ticks(90, 17.5, 1.6))
    c.paint(tone.SLATE_400, cover(disc(c.w, c.h, centre, 1.8)))
    return c


def compass_needle(region):
    """Points up; the pivot is the centre of the cell."""
    c = Canvas(region.w, region.h)
    x, y = region.w / 2, region.h / 2
    half = 3.6
    c.paint((214, 62, 52), vector.mask(c.w, c.h, vector.polygon([(x - half, y), (x, region.h - 2), (x, y)])))
    c.paint((176, 40, 34), vector.mask(c.w, c.h, vector.polygon([(x + half, y), (x, region.h - 2), (x, y)])))
    c.paint((236, 241, 246), vector.mask(c.w, c.h, vector.polygon([(x - half, y), (x, 2), (x, y)])))
    c.paint((196, 206, 217), vector.mask(c.w, c.h, vector.polygon([(x + half, y), (x, 2), (x, y)])))
    c.paint(tone.SLATE_700, cover(disc(c.w, c.h, (x, y), 2.4)))
    c.paint(tone.SLATE_200, cover(disc(c.w, c.h, (x, y), 1.2)))
    return c


DRAWINGS = {
    "digit_arrow_up": digit_arrow_up,
    "digit_arrow_down": digit_arrow_down,
    "radio_base": radio_base,
    "radio_mark": radio_mark,
    "check_base": check_base,
    "check_mark": check_mark,
    "corner_box_up": corner_box_up,
    "corner_box_pushed": corner_box_pushed,
    "tab_chosen": tab_chosen,
    "tab_other": tab_other,
    "slider_thumb": slider_thumb,
    "slider_knob_horizontal": slider_knob,
    "slider_arrow_up": slider_arrow_up,
    "slider_arrow_down": slider_arrow_down,
    "compass_dial": compass_dial,
    "compass_needle": compass_needle,
}
