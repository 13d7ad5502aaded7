"""Checks of bars, boxes and small cells: joints without seams, faces in place, light from above."""

import math

import numpy as np

from .checking import check, luminance

# Columns that must be alike beyond the middle: captions come close to the ends of a button, a short
# fill overlaps its own ends, the text of a popup list covers its left end.
PLAIN = {
    "bar2_button_up": (4, 48),
    "bar3_button_down": (4, 48),
    "bar4_progress_trough": (6, 22),
    "bar5_progress_fill": (6, 22),
    "bar10_popup_list_box": (7, 43),
    "box20_picture_panel": (6, 35),
}
# Rows in which a title stands: shaded softly, for text may also run across the shade's end.
BANDS = {
    "box12_window_frame": (64, 94),
    "box13_panel": (64, 94),
    "box15_start_up_panel": (64, 94),
    "box16_thin_box": (44, 64),
    "box18_menu_title": (14, 38),
    "box19_list_well": (14, 36),
}

INSIDE, OUTSIDE = 230, 86  # alpha of a face at the least; of a shadow at the most, a third


@check("bars: rows are constant across the middle and into both ends")
def bar_middles(art):
    for region in art.of("bar"):
        cell = art.pixels(region)
        cuts, across = (region.cut_x, 1) if region.cut_x else (region.cut_y, 0)
        # The column before and after the middle belongs to the ends and must carry on its colours.
        middle = np.take(cell, range(cuts[0] - 1, cuts[1] + 1), axis=across)
        if (middle != np.take(middle, [0], axis=across)).any():
            yield f"{region.name}: its middle does not repeat without a seam"
    for name, (left, right) in PLAIN.items():
        part = art.pixels(name)[:, left:right]
        if (part != part[:, :1]).any():
            yield f"{name}: ornament within columns {left} to {right}"


@check("bars: the visible face is where the mouse and the text expect it")
def bar_faces(art):
    for region in art.of("bar"):
        alpha = art.pixels(region)[:, :, 3]
        left, bottom, right, top = region.face
        middle = alpha[:, (left + right) // 2]
        side = alpha[(bottom + top) // 2]
        if middle[bottom:top].min() < INSIDE or side[left:right].min() < INSIDE:
            yield f"{region.name}: its face has holes"
        around = alpha.copy()
        around[bottom:top, left:right] = 0
        if around.max() > OUTSIDE:
            yield f"{region.name}: ink outside its face"
    for name in ("bar4_progress_trough", "bar5_progress_fill"):
        alpha = art.pixels(name)[:, :, 3]
        _, bottom, _, top = art.named[name].face
        if (alpha[bottom:top, 6:22] != 255).any():
            yield f"{name}: ends that overlap must be opaque in their inner 4 columns"
    # Alike but for the shadow that shows through the rounded corners.
    up, down = (art.pixels(name)[3:23, :, 3] for name in ("bar2_button_up", "bar3_button_down"))
    if (np.abs(up - down) > 72).any():
        yield "the pressed button has another outline than the raised one"
    for name, rows in (("bar9_field_box", [*range(0, 4), *range(22, 26)]), ("bar10_popup_list_box", range(19, 24))):
        if art.pixels(name)[list(rows), :, 3].max() > 40:
            yield f"{name}: its margin is not empty"


def _whole(cuts, size):
    """The whole pixels from one before each cut to one after it."""
    return max(math.floor(cuts[0]) - 1, 0), min(math.ceil(cuts[1]) + 1, size)


@check("boxes: sides are constant along their side and the centre is flat")
def box_middles(art):
    for region in art.of("box"):
        cell = art.pixels(region)
        left, right = _whole(region.cut_x, region.w)
        bottom, top = _whole(region.cut_y, region.h)
        if (cell[:, left:right] != cell[:, left : left + 1]).any():
            yield f"{region.name}: columns {left} to {right} are not constant"
        if (cell[bottom:top] != cell[bottom : bottom + 1]).any():
            yield f"{region.name}: rows {bottom} to {top} are not constant"


@check("boxes: the body is opaque, the shadow soft and gone at the rim")
def box_bodies(art):
    for region in art.of("box"):
        alpha = art.pixels(region)[:, :, 3]
        left, bottom, right, top = region.face
        inner = 7
        if alpha[bottom + 1 : top - 1, left + inner : right - inner].min() < 255:
            yield f"{region.name}: its body is not opaque"
        if region.margin[0] < 3:
            continue
        around = alpha.copy()
        around[max(bottom - 2, 0) : top + 2, left - 2 : right + 2] = 0
        if around.max() > OUTSIDE:
            yield f"{region.name}: its shadow is too strong"
        rim = [alpha[0].max(), alpha[:, 0].max(), alpha[:, -1].max()]
        if max(rim) > 8 or (region.w == 100 and alpha[: bottom - 10].max() > 0):
            yield f"{region.name}: its shadow is cut off"
    for name, (bottom, top) in BANDS.items():
        column = art.pixels(name)[bottom:top, art.named[name].w // 2, :3]
        if np.abs(np.diff(column, axis=0)).max() > 6:
            yield f"{name}: a hard line where text stands"
    for name, limit in (("box14_help_box", 60), ("box15_start_up_panel", 50)):
        body = art.pixels(name)[20:90, 16:84, :3]
        if body.max() > limit:
            yield f"{name}: its body is brighter than {limit}"
    if luminance(art.pixels("box14_help_box")[50, 8]) < 0.4:
        yield "the help box has no bright rim"
    if art.pixels("box20_picture_panel")[3:38, 6:35, :3].min() < 244:
        yield "box 20 is not near-white, and red text stands on it"


@check("light comes from above: raised faces shine at the top, sunken ones are shaded there")
def light(art):
    def upper_minus_lower(cell, face):
        left, bottom, right, top = face
        column = luminance(cell[:, left + 7 : left + 9]).mean(axis=1)
        return column[top - 5 : top - 1].mean() - column[bottom + 1 : bottom + 5].mean()

    raised = ["bar2_button_up", "bar5_progress_fill", "bar10_popup_list_box"]
    sunken = ["bar3_button_down", "bar4_progress_trough"]
    raised += [region.name for region in art.of("sprite") if region.state != "pressed"]
    sunken += [region.name for region in art.of("sprite") if region.state == "pressed"]
    for name in raised + sunken:
        step = upper_minus_lower(art.pixels(name), art.named[name].face)
        if (step <= 0.01) if name in raised else (step >= -0.01):
            yield f"{name}: the light is wrong by {step:.3f}"
    below, above = art.pixels("bar2_button_up")[2, 20, 3], art.pixels("bar2_button_up")[24, 20, 3]
    if not below > above:
        yield "the raised button throws no shadow"


@check("small cells: ink within bounds, marks readable, states different")
def cells(art):
    for region in art.of("cell") + art.of("cursor"):
        if not region.face:
            continue
        alpha = art.pixels(region)[:, :, 3].copy()
        left, bottom, right, top = region.face
        alpha[bottom:top, left:right] = 0
        if alpha.max() > 0:
            yield f"{region.name}: ink outside {region.face}"
    for kind in ("radio", "check"):
        base, mark = art.pixels(kind + "_base"), art.pixels(kind + "_mark")
        solid = mark[:, :, 3] > 200
        if not 12 <= solid.sum() <= 80:
            yield f"{kind}_mark: {solid.sum()} solid pixels"
        elif luminance(base[solid]).min() - luminance(mark[solid]).max() < 0.4:
            yield f"{kind}_mark: hardly to be seen on its base"
    pairs = [("corner_box_up", "corner_box_pushed"), ("cursor_13", "cursor_14"), ("cursor_11_free", "cursor_11_held")]
    for one, other in pairs:
        if np.abs(art.pixels(one) - art.pixels(other)).max() < 30:
            yield f"{one} and {other} look the same"
    if luminance(art.pixels("corner_box_pushed")[5, 5]) >= luminance(art.pixels("corner_box_up")[5, 5]):
        yield "the pushed corner box is not darker"
    for name, upwards in (("digit_arrow_up", True), ("digit_arrow_down", False)):
        width = (art.pixels(name)[:, :, 3] > 100).sum(axis=1)
        if (np.diff(width[width > 0]).sum() < 0) != upwards:
            yield f"{name} points the wrong way"
    for region in art.of("cursor"):
        cell = art.pixels(region)
        solid = cell[cell[:, :, 3] > 200]
        tones = luminance(solid)
        if not tones.size or tones.min() > 0.25 or tones.max() < 0.8:
            yield f"{region.name}: needs a dark body and a light rim"
    up, down = art.pixels("cursor_13")[:, :, 3], art.pixels("cursor_14")[:, :, 3]
    if (up > 100).sum(axis=1).argmax() < 15:
        yield "the cursor for the upper arrow does not point up"
    if (np.abs(up - down[::-1]) > 20).any():
        yield "the two digit cursors do not mirror each other"
