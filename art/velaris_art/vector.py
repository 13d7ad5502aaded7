"""Masks of outlines and text, filled by cairo; colour is left to the canvas."""

import math

import cairo
import numpy as np

from . import fine


def mask(w, h, draw):
    """Coverage of what draw(context) fills or strokes, with y up, in units."""
    surface = _surface(w, h)
    context = cairo.Context(surface)
    context.set_antialias(cairo.ANTIALIAS_BEST)
    context.scale(fine.SCALE, -fine.SCALE)
    context.translate(0, -h)
    draw(context)
    return _coverage(surface)


def _surface(w, h):
    return cairo.ImageSurface(cairo.FORMAT_A8, fine.pixels(w), fine.pixels(h))


def _coverage(surface):
    """What stands on it, bottom row first."""
    surface.flush()
    data = np.frombuffer(surface.get_data(), np.uint8).reshape(surface.get_height(), surface.get_stride())
    return data[::-1, : surface.get_width()].astype(float) / 255


def polygon(points):
    """A drawing of one filled polygon."""

    def draw(context):
        context.move_to(*points[0])
        for point in points[1:]:
            context.line_to(*point)
        context.close_path()
        context.fill()

    return draw


def strokes(lines, width, closed=False):
    """A drawing of lines with round ends and joins."""

    def draw(context):
        context.set_line_width(width)
        context.set_line_cap(cairo.LINE_CAP_ROUND)
        context.set_line_join(cairo.LINE_JOIN_ROUND)
        for line in lines:
            context.move_to(*line[0])
            for point in line[1:]:
                context.line_to(*point)
            if closed:
                context.close_path()
        context.stroke()

    return draw


def arc(centre, radius, start, end, steps=24):
    """Points of an arc, angles in degrees from east, turning left."""
    return [
        (
            centre[0] + radius * math.cos(math.radians(start + (end - start) * i / steps)),
            centre[1] + radius * math.sin(math.radians(start + (end - start) * i / steps)),
        )
        for i in range(steps + 1)
    ]


class Face:
    """A face at one size in pixels to the em; hinting moves outlines up and down only."""

    def __init__(self, family, bold=False, size=10.0, hinted=True):
        self.family = family
        self.weight = cairo.FONT_WEIGHT_BOLD if bold else cairo.FONT_WEIGHT_NORMAL
        self.size = size
        self.hints = cairo.HINT_STYLE_SLIGHT if hinted else cairo.HINT_STYLE_NONE

    def _use(self, context, stretch):
        options = cairo.FontOptions()
        options.set_antialias(cairo.ANTIALIAS_GRAY)
        options.set_hint_style(self.hints)
        options.set_hint_metrics(cairo.HINT_METRICS_OFF)
        context.set_font_options(options)
        context.select_font_face(self.family, cairo.FONT_SLANT_NORMAL, self.weight)
        context.set_font_matrix(cairo.Matrix(self.size * stretch, 0, 0, self.size, 0, 0))

    def advance(self, text, stretch=1.0):
        context = cairo.Context(cairo.ImageSurface(cairo.FORMAT_A8, 1, 1))
        self._use(context, stretch)
        return context.text_extents(text).x_advance

    def mask(self, w, h, text, x, baseline, stretch=1.0, spacing=0.0):
        """Coverage of a text; the baseline counts upwards. Spacing is added after each letter."""
        surface = _surface(w, h)
        context = cairo.Context(surface)
        context.set_antialias(cairo.ANTIALIAS_BEST)
        context.scale(fine.SCALE, fine.SCALE)
        self._use(context, stretch)
        for piece in text if spacing else [text]:
            context.move_to(x, h - baseline)
            context.text_path(piece)
            x += context.text_extents(piece).x_advance + spacing
        context.fill()
        return _coverage(surface)
