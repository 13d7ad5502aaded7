"""A small picture to paint on, and the masks to paint it through.

Rows count upwards, so that the numbers in the drawing code are those of the table of regions.
Colours are 0 to 255, masks 0 to 1. Everything is kept in floating point and rounded once at the
end: a row that is constant in the formulas is constant to the last bit in the picture, which is
what lets bars and boxes repeat without seams.
"""

import numpy as np

from . import fine


def grid(w, h):
    """Coordinates of the pixel centres, in units: x as one row, y as one column."""
    x, y = np.arange(fine.pixels(w)) + 0.5, np.arange(fine.pixels(h)) + 0.5
    return x[None, :] / fine.SCALE, y[:, None] / fine.SCALE


def rounded(w, h, rect, radius=0.0):
    """Signed distance of each pixel centre to a rounded rectangle, negative inside.

    The radius is one number, or four for bottom left, bottom right, top right, top left.
    """
    left, bottom, right, top = rect
    x, y = grid(w, h)
    if np.isscalar(radius):
        corner = radius
    else:
        upper, eastern = y > (bottom + top) / 2, x > (left + right) / 2
        lower_pair = np.where(eastern, radius[1], radius[0])
        upper_pair = np.where(eastern, radius[2], radius[3])
        corner = np.where(upper, upper_pair, lower_pair)
    dx = np.abs(x - (left + right) / 2) - (right - left) / 2 + corner
    dy = np.abs(y - (bottom + top) / 2) - (top - bottom) / 2 + corner
    outside = np.hypot(np.maximum(dx, 0), np.maximum(dy, 0))
    return outside + np.minimum(np.maximum(dx, dy), 0) - corner


def disc(w, h, centre, radius):
    x, y = grid(w, h)
    return np.hypot(x - centre[0], y - centre[1]) - radius


def cover(distance):
    """Coverage of a shape given by its signed distance: one pixel of smooth edge."""
    return np.clip(0.5 - distance * fine.SCALE, 0, 1)


def ring(distance, width=1.0):
    """A line of the given width just inside the edge of a shape."""
    return cover(distance) - cover(distance + width)


def glow(distance, reach):
    """1 inside a shape, fading softly to exactly 0 at the reach outside it."""
    t = np.clip(1 - distance / reach, 0, 1)
    return t * t * (3 - 2 * t) * np.clip(0.5 + t / 2, 0, 1)


def rows(h, *stops):
    """A colour for each row, between stops of (row, colour) in rising order."""
    at = [stop[0] for stop in stops]
    y = (np.arange(fine.pixels(h)) + 0.5) / fine.SCALE
    return np.stack([np.interp(y, at, [stop[1][i] for stop in stops]) for i in range(3)], axis=1)[:, None, :]


class Canvas:
    def __init__(self, w, h):
        self.w, self.h = w, h
        self.rgb = np.zeros((fine.pixels(h), fine.pixels(w), 3))  # premultiplied
        self.alpha = np.zeros((fine.pixels(h), fine.pixels(w), 1))

    def paint(self, colour, mask=1.0, strength=1.0):
        """Lays a colour, or one colour a row, or one a pixel, over what is there."""
        mask = np.broadcast_to(np.asarray(mask, dtype=float), self.alpha.shape[:2])[:, :, None] * strength
        self.rgb = np.asarray(colour, dtype=float) * mask + self.rgb * (1 - mask)
        self.alpha = mask + self.alpha * (1 - mask)
        return self

    def pixels(self):
        """Eight-bit straight alpha; a pixel without alpha has no colour either."""
        alpha = np.rint(self.alpha * 255).astype(np.uint8)
        colour = self.rgb / np.maximum(self.alpha, 1e-9)
        colour = np.clip(np.rint(colour), 0, 255).astype(np.uint8)
        return np.where(alpha > 0, np.concatenate([colour, alpha], axis=2), 0).astype(np.uint8)
