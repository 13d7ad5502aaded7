"""Mouse pointers: dark with a light rim, so that they show on anything. The hot point is the centre."""

import math

import cairo

from . import palette as tone
from . import vector
from .canvas import Canvas

CENTRE = 15.0
RIM = 1.5


def _pointer(region, outline, colour=tone.SLATE_800):
    """Paints the outline(context) path: wide in light first, then filled dark."""
    c = Canvas(region.w, region.h)

    def rim(context):
        outline(context)
        context.set_line_width(2 * RIM)
        context.set_line_join(cairo.LINE_JOIN_ROUND)
        context.set_line_cap(cairo.LINE_CAP_ROUND)
        context.stroke_preserve()
        context.fill()

    def body(context):
        outline(context)
        context.fill()

    c.paint(tone.WHITE, vector.mask(c.w, c.h, rim), 0.96)
    c.paint(colour, vector.mask(c.w, c.h, body))
    return c


def _path(points, turn=0.0):
    """A closed outline around the centre, turned left by degrees."""

    def draw(context):
        context.save()
        context.translate(CENTRE, CENTRE)
        context.rotate(math.radians(turn))
        context.move_to(*points[0])
        for point in points[1:]:
            context.line_to(*point)
        context.close_path()
        context.restore()

    return draw


# Outlines around the centre, the hot point.
ONE_ARROW = [(0, 10), (7, 2.5), (2.5, 2.5), (2.5, -9), (-2.5, -9), (-2.5, 2.5), (-7, 2.5)]
TWO_ARROWS = [
    (0, 11), (5, 5.5), (1.5, 5.5), (1.5, -5.5), (5, -5.5),
    (0, -11), (-5, -5.5), (-1.5, -5.5), (-1.5, 5.5), (-5, 5.5),
]
CROSS = [
    (-1, 10), (1, 10), (1, 1), (10, 1), (10, -1), (1, -1),
    (1, -10), (-1, -10), (-1, -1), (-10, -1), (-10, 1), (-1, 1),
]
BEAM = [
    (-4, 10), (-1, 9.4), (0, 8.8), (1, 9.4), (4, 10), (4, 8.4), (1, 7.6), (1, -7.6), (4, -8.4),
    (4, -10), (1, -9.4), (0, -8.8), (-1, -9.4), (-4, -10), (-4, -8.4), (-1, -7.6), (-1, 7.6), (-4, 8.4),
]


def _hand(fingers):
    """A palm with rounded fingers of the given heights, thumb at the left."""

    def draw(context):
        # All parts turn the same way round, so that they add up where they overlap.
        def pill(left, bottom, right, top):
            radius = (right - left) / 2
            context.move_to(left, bottom)
            context.line_to(left, top - radius)
            context.arc_negative(left + radius, top - radius, radius, math.pi, 0)
            context.line_to(right, bottom)
            context.close_path()

        for i, height in enumerate(fingers):
            left = 8.5 + 3.6 * i
            pill(left, 11, left + 3.0, height)
        context.new_sub_path()
        context.move_to(8.5, 14)
        context.line_to(22.4, 14)
        context.curve_to(22.8, 9, 21.5, 6, 19.5, 4)
        context.line_to(11.5, 4)
        context.curve_to(10, 7, 7, 9.5, 5.6, 12.6)
        context.curve_to(5.2, 14.2, 7, 15, 8.5, 13.4)
        context.close_path()

    return draw


def _turning(clockwise):
    """Three quarters of a ring that ends in an arrow head."""
    side = -1 if clockwise else 1

    def draw(context):
        context.save()
        context.translate(CENTRE, CENTRE)
        context.scale(side, 1)
        outer, inner = 9.5, 6.5
        context.arc(0, 0, outer, math.radians(-160), math.radians(90))
        context.line_to(0, 12)
        context.line_to(-6, 8)
        context.line_to(0, 4)
        context.line_to(0, inner)
        context.arc_negative(0, 0, inner, math.radians(90), math.radians(-160))
        context.close_path()
        context.restore()

    return draw


OUTLINES = {
    "cursor_3": _hand((24, 26, 25, 22.5)),
    "cursor_4": _hand((17.5, 18.5, 18, 17)),
    "cursor_5": _path(TWO_ARROWS, 90),
    "cursor_6": _path(TWO_ARROWS),
    "cursor_7": _path(TWO_ARROWS, 45),
    "cursor_8": _path(TWO_ARROWS, -45),
    "cursor_9": _path(CROSS),
    "cursor_10": _path(BEAM),
    "cursor_11_free": _turning(False),
    "cursor_11_held": _turning(False),
    "cursor_12_free": _turning(True),
    "cursor_12_held": _turning(True),
    "cursor_13": _path(ONE_ARROW),
    "cursor_14": _path(ONE_ARROW, 180),
}


def draw(region):
    held = region.state == "held"
    return _pointer(region, OUTLINES[region.name], tone.SKY if held else tone.SLATE_800)
