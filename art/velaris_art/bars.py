"""Bars: a left end, a middle that repeats, and a right end.

Every row of a bar is constant from left to right except near its two ends, so that the middle
joins itself, any cut piece of itself and both ends.
"""

from . import palette as tone
from . import vector
from .canvas import Canvas, cover, ring, rounded, rows


def moved(rect, dx=0, dy=0):
    return (rect[0] + dx, rect[1] + dy, rect[2] + dx, rect[3] + dy)


def inset(rect, by):
    return (rect[0] + by, rect[1] + by, rect[2] - by, rect[3] - by)


def upper_edge(shape, lowered):
    """The upper edge of a shape: what of it sticks out above the same shape moved down."""
    return (cover(shape) - cover(lowered)).clip(0, 1)


def raised(region, fill, border, radius, rim=0.9, drop=0.22):
    """A face lit from above: light upper edge, soft shadow below.

    The fill is a list of stops (share of the height from the bottom, colour).
    """
    c = Canvas(region.w, region.h)
    face = region.face
    shape = rounded(c.w, c.h, face, radius)
    for step in (1, 2):
        c.paint(tone.SHADOW, cover(rounded(c.w, c.h, moved(face, dy=-step), radius)), drop / step**1.5)
    tall = face[3] - face[1]
    c.paint(rows(c.h, *[(face[1] + share * tall, colour) for share, colour in fill]), cover(shape))
    inner = rounded(c.w, c.h, inset(face, 1), radius - 1)
    lowered = rounded(c.w, c.h, moved(inset(face, 1), dy=-1), radius - 1)
    c.paint(tone.WHITE, upper_edge(inner, lowered), rim)
    c.paint(border, ring(shape))
    return c


def sunken(region, fill, border, radius, dip=0.30):
    """A hollow lit from above: its upper edge is in the shade."""
    c = Canvas(region.w, region.h)
    face = region.face
    shape = rounded(c.w, c.h, face, radius)
    tall = face[3] - face[1]
    c.paint(rows(c.h, *[(face[1] + share * tall, colour) for share, colour in fill]), cover(shape))
    for step, strength in ((1, dip), (2, dip * 0.4)):
        shade = upper_edge(shape, rounded(c.w, c.h, moved(face, dy=-1 - step), radius))
        c.paint(tone.SHADOW, shade, strength * 0.5)
    c.paint(border, ring(shape))
    return c


def button_up(region):
    return raised(region, [(0, (214, 222, 232)), (0.5, (233, 238, 244)), (1, (250, 252, 254))], tone.SLATE_500, 4)


def button_down(region):
    """The same outline as the raised button, lit the other way round."""
    fill = [(0, (226, 232, 239)), (0.55, (208, 217, 227)), (1, (192, 203, 216))]
    return sunken(region, fill, tone.SLATE_600, 4, dip=0.35)


def trough(region):
    return sunken(region, [(0, (222, 229, 237)), (1, (190, 201, 214))], tone.SLATE_500, 6, dip=0.3)


def fill(region):
    c = Canvas(region.w, region.h)
    face = region.face
    shape = rounded(c.w, c.h, face, 4)
    bottom, top = face[1], face[3]
    c.paint(rows(c.h, (bottom, tone.SKY_DEEP), (bottom + 6, tone.SKY), (top, tone.SKY_LIGHT)), cover(shape))
    inner = inset(face, 1)
    lit = upper_edge(rounded(c.w, c.h, inner, 3), rounded(c.w, c.h, moved(inner, dy=-1), 3))
    c.paint(tone.WHITE, lit, 0.45)
    c.paint(tone.SKY_DEEP, ring(shape), 0.9)
    return c


def field(region):
    return sunken(region, [(0, tone.WHITE), (1, tone.WHITE)], tone.SLATE_400, 3, dip=0.16)


def popup(region):
    """Dark, with an up-down arrow in the right end to say that it opens a list."""
    c = raised(region, [(0, (56, 72, 94)), (1, (86, 105, 130))], tone.SLATE_700, 4, rim=0.28, drop=0.0)
    x, y = 54.0, 10.0
    up = [(x - 3.5, y + 1.5), (x, y + 5.5), (x + 3.5, y + 1.5)]
    down = [(px, 2 * y - py) for px, py in up]
    for arrow in (up, down):
        c.paint(tone.WHITE, vector.mask(c.w, c.h, vector.polygon(arrow)), 0.92)
    return c


def menu_band(region):
    return _band(region, (38, 53, 72), (60, 78, 101))


def title_band(region):
    return _band(region, (24, 35, 50), (46, 62, 83))


def _band(region, lower, upper):
    c = Canvas(region.w, region.h)
    top = region.face[3]
    shape = rounded(c.w, c.h, region.face)
    c.paint(rows(c.h, (0, lower), (top, upper)), cover(shape))
    c.paint(tone.WHITE, cover(rounded(c.w, c.h, (0, top - 1, c.w, top))), 0.18)
    c.paint(tone.SLATE_900, cover(rounded(c.w, c.h, (0, 0, c.w, 1))), 0.6)
    return c


def slider_track(region):
    """Upright: constant from end to end, shaded from the side walls only."""
    c = Canvas(region.w, region.h)
    shape = rounded(c.w, c.h, region.face, 6)
    c.paint(tone.SLATE_100, cover(shape))
    c.paint(tone.SHADOW, ring(shape, 2), 0.08)
    c.paint(tone.SLATE_400, ring(shape))
    return c


def slider_trough(region):
    return sunken(region, [(0, tone.SLATE_100), (1, tone.SLATE_200)], tone.SLATE_400, 5, dip=0.25)


def slider_fill(region):
    c = Canvas(region.w, region.h)
    shape = rounded(c.w, c.h, region.face, 4)
    bottom, top = region.face[1], region.face[3]
    # Neutral, since the code gives the fill its colour.
    c.paint(rows(c.h, (bottom, tone.SLATE_300), (top, tone.WHITE)), cover(shape))
    c.paint(tone.SLATE_500, ring(shape), 0.9)
    return c


DRAWINGS = {
    "bar0_menu_band": menu_band,
    "bar1_title_band": title_band,
    "bar2_button_up": button_up,
    "bar3_button_down": button_down,
    "bar4_progress_trough": trough,
    "bar5_progress_fill": fill,
    "bar6_slider_track_vertical": slider_track,
    "bar7_slider_trough": slider_trough,
    "bar8_slider_fill": slider_fill,
    "bar9_field_box": field,
    "bar10_popup_list_box": popup,
}
