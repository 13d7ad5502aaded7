"""Checks of what the eye judges: sprites, globe, backgrounds, and text on every surface."""

import numpy as np

from .checking import check, contrast, luminance

GREEN, RED = (0.8, 1.0, 0.8), (1.0, 0.8, 0.8)

# Surface, the part of it that text stands on, the text colours, the least contrast.
LABEL, TEXT, TYPED, TITLE = (34, 41, 53), (36, 43, 53), (39, 44, 52), (238, 238, 238)
WHITE, GRAY, MINT = (255, 255, 255), (128, 128, 128), (127, 220, 175)
GOOD, WARNING, FAILURE = (0, 102, 0), (255, 51, 51), (255, 0, 0)
# Of the backgrounds: left, bottom, right, top.
TEXT_AREAS = [(130, 390, 1024, 690), (0, 390, 130, 590), (0, 100, 1024, 130), (0, 590, 1024, 680)]
READABLE, READABLE_RED = 4.5, 3.5
SURFACES = [
    ("box20_picture_panel", (4, 3, 37, 38), (TEXT, LABEL, GOOD), READABLE),
    ("box20_picture_panel", (4, 3, 37, 38), (WARNING, FAILURE), READABLE_RED),
    ("background_1", (130, 390, 1024, 690), (TEXT, GOOD), READABLE),
    ("background_1", (0, 390, 130, 590), (LABEL,), READABLE),
    ("background_1", (130, 100, 1024, 130), (TEXT,), READABLE),
    ("background_1", (150, 600, 860, 640), (WARNING,), READABLE_RED),
    ("bar9_field_box", (6, 6, 45, 20), (TYPED,), READABLE),
    ("bar2_button_up", (4, 6, 48, 20), (LABEL,), READABLE),
    ("bar3_button_down", (4, 6, 48, 20), (LABEL,), READABLE),
    ("box11_window_frame_with_corner_boxes", (15, 79, 85, 94), (TITLE,), READABLE),
    ("box11_window_frame_with_corner_boxes", (12, 20, 88, 72), (TEXT,), READABLE),
    ("box12_window_frame", (12, 20, 88, 94), (TEXT, LABEL), READABLE),
    ("box13_panel", (12, 20, 88, 94), (TEXT, LABEL), READABLE),
    ("box14_help_box", (14, 18, 86, 95), (MINT,), READABLE),
    ("box15_start_up_panel", (14, 18, 86, 94), (WHITE, MINT), READABLE),
    ("box15_start_up_panel", (14, 30, 86, 70), (GRAY,), READABLE),
    ("box16_thin_box", (5, 5, 63, 63), (TEXT, LABEL), READABLE),
    ("box17_menu_body", (8, 13, 34, 39), (WHITE,), READABLE),
    ("box18_menu_title", (8, 11, 34, 38), (LABEL,), READABLE),
    ("box19_list_well", (8, 11, 36, 38), (TEXT, LABEL), READABLE),
    ("bar10_popup_list_box", (6, 4, 42, 16), (WHITE,), READABLE),
    ("bar0_menu_band", (0, 2, 100, 23), (WHITE,), READABLE),
    ("tab_chosen", (4, 3, 94, 22), ((13, 27, 44),), READABLE),
    ("tab_other", (4, 3, 94, 22), ((93, 99, 110),), READABLE),
]


@check("every text colour reads on every surface it is set on")
def readable(art):
    for name, (left, bottom, right, top), colours, least in SURFACES:
        surface = art.pixels(name)[bottom:top, left:right]
        if surface[:, :, 3].min() < 255:
            yield f"{name}: not opaque where text stands"
        for colour in colours:
            worst = contrast(surface, colour).min()
            if worst < least:
                yield f"{name}: {colour} has a contrast of {worst:.2f}, needs {least}"
    # A bar must show on what lies around it: the window colour, and the light picture.
    for name in ("bar4_progress_trough", "bar5_progress_fill"):
        edges = art.pixels(name)[3:13, 12]
        for ground in ((51, 67, 86), tuple(art.pixels("background_1")[15, 60, :3])):
            rim = art.pixels(name)[art.named[name].face[1], 12]
            if max(contrast(edges, ground).max(), contrast(rim, ground)) < 2:
                yield f"{name}: lost on {ground}"


def _caption(cell):
    """The pixels of the caption, which is darker than any face."""
    return luminance(cell[2:20, 4:-4]) < 0.08


@check("sprites: three states that differ, one outline, the caption in place")
def sprites(art):
    stems = {}
    for region in art.of("sprite"):
        stems.setdefault(region.stem, {})[region.state] = region
    if len(stems) != 6 or any(len(states) != 3 for states in stems.values()):
        yield f"expected 6 sprites of 3 states, found {[(stem, len(s)) for stem, s in stems.items()]}"
    for stem, states in stems.items():
        normal, hover, pressed = (art.pixels(states[s]) for s in ("normal", "hover", "pressed"))
        for i, state in enumerate(("hover", "pressed")):
            if states[state].y != states["normal"].y - (i + 1) * (states["normal"].h + 1):
                yield f"{stem}: {state} is not {i + 1} steps below normal"
        if any((np.abs(normal[1:21, :, 3] - other[1:21, :, 3]) > 72).any() for other in (hover, pressed)):
            yield f"{stem}: the outline moves"
        if normal[6:16, 1:-1, 3].min() < 255:
            yield f"{stem}: the face does not fill its rectangle"
        tones = [np.median(luminance(cell[3:19, 4:-4])) for cell in (pressed, normal, hover)]
        if tones[1] - tones[0] < 0.12 or tones[2] - tones[1] < 0.12:
            yield f"{stem}: pressed, normal, hover have the tones {np.round(tones, 2)}"
        captions = [_caption(cell) for cell in (normal, hover, pressed)]
        ink = np.argwhere(captions[0])
        low, left = ink.min(axis=0) + (2, 4)
        high, right = ink.max(axis=0) + (3, 5)
        tail = 1 if "Q" in states["normal"].text else 0
        if (low, high) != (7 - tail, 15):
            yield f"{stem}: the caption fills rows {low} to {high}"
        if min(left, normal.shape[1] - right) < 5 or abs(left + right - normal.shape[1]) > 3:
            yield f"{stem}: the caption stands at {left} to {right} of {normal.shape[1]}"
        same = (captions[0] == captions[1]).mean()
        moved = (captions[0][1:] == captions[2][:-1]).mean()
        if same < 0.97 or moved < 0.97:
            yield f"{stem}: the caption does not stay ({same:.2f}) or not sink by 1 ({moved:.2f})"
        for tint in (GREEN, RED):
            for state, cell in (("normal", normal), ("hover", hover), ("pressed", pressed)):
                colours = cell[3:19, 4:-4, :3] * tint
                tone = luminance(colours)
                ratio = (np.median(tone) + 0.05) / (np.percentile(tone[_caption(cell)[1:17]], 20) + 0.05)
                if ratio < 4.5:
                    yield f"{stem} {state}: caption at {ratio:.1f} under a tint"


@check("logo panel: a calm place under the globe, nothing cut at its edge")
def logo(art):
    panel = art.pixels("logo_panel")
    y, x = np.mgrid[0 : panel.shape[0], 0 : panel.shape[1]]
    away = np.hypot(x + 0.5 - 61, y + 0.5 - 45)
    if np.ptp(panel[away < 30][:, :3].max(axis=1)) > 12 or panel[away < 30][:, 3].min() < 255:
        yield "the place of the globe is not calm"
    if max(panel[0, :, 3].max(), panel[-1, :, 3].max(), panel[:, 0, 3].max(), panel[:, -1, 3].max()) > 8:
        yield "something is cut off at its edge"


@check("globe: sixteen round frames that turn evenly from left to right under a fixed light")
def globe(art):
    frames = [art.pixels(region) for region in sorted(art.of("globe"), key=lambda r: r.name)]
    y, x = np.mgrid[0:64, 0:64] + 0.5
    away = np.hypot(x - 32, y - 32)
    for number, frame in enumerate(frames, 8):
        if frame[away > 30.71][:, 3].any():
            yield f"frame {number} has ink outside its round"
        if frame[away < 27][:, 3].min() < 255:
            yield f"frame {number} has holes"
        if (frame[:, :, 3] != frames[0][:, :, 3]).any():
            yield f"frame {number} has another outline than the first"
        top, bottom = luminance(frame[46:56, 24:40]).mean(), luminance(frame[8:18, 24:40]).mean()
        if top <= bottom:
            yield f"frame {number} is not lit from above"
    disc = away < 26
    # The light stands still, so what moves is the difference from the mean of the turn.
    tones = [luminance(frame) for frame in frames]
    moving = [tone - np.mean(tones, axis=0) for tone in tones]
    steps = []
    for i, frame in enumerate(frames):
        following = frames[(i + 1) % len(frames)]
        steps.append(np.abs(frame - following)[disc].mean())
        # Near the middle a sixteenth of a turn is about ten pixels.
        band = [moving[j % len(frames)][18:46] for j in (i, i + 1)]
        right = np.abs(band[0][:, 18:36] - band[1][:, 28:46]).mean()
        left = np.abs(band[0][:, 28:46] - band[1][:, 18:36]).mean()
        if right >= left:
            yield f"frame {i + 8} does not move to the right ({right:.3f} against {left:.3f})"
    # Land is where red is not far behind blue. The frame that is shown at rest has plenty of it.
    land = [(frame[:, :, 0] > 0.8 * frame[:, :, 2])[disc].mean() for frame in frames]
    if land[21 - 8] < np.mean(land):
        yield f"the resting frame shows {land[21 - 8]:.0%} land, the turn {np.mean(land):.0%}"
    if min(steps) < 8 or max(steps) > 3 * min(steps):
        yield f"frames differ by {min(steps):.1f} to {max(steps):.1f}: the turn jumps or stalls"


@check("backgrounds: opaque, light and quiet where text stands, without seams or bands")
def backgrounds(art):
    for name in ("background_1", "background_2"):
        picture = art.pixels(name)
        if picture[:, :, 3].min() < 255:
            yield f"{name} is not opaque"
        for left, bottom, right, top in TEXT_AREAS:
            part = picture[bottom:top, left:right, :3]
            if part.min() < 215:
                yield f"{name}: {part.min()} within {left}, {bottom} to {right}, {top}"
            steps = max(np.abs(np.diff(part, axis=0)).max(), np.abs(np.diff(part, axis=1)).max())
            if steps > 8:
                yield f"{name}: a step of {steps} within {left}, {bottom} to {right}, {top}"
        if picture[700:, :, :3].min() > 120:
            yield f"{name} has no strong sky at its top"
