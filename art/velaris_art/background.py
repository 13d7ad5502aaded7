"""The two backgrounds: air, light and far land, quiet wherever text stands.

Upwards from the bottom: a light floor for the buttons and the status box, ridges that rise from the
mist, a bright empty middle for the text, and the only strong part, the sky above row 690.
"""

import math

import numpy as np

from . import fine, noise, vector

W, H = 1024, 768
WORDMARK = vector.Face("Open Sans Light", size=29, hinted=False)

# An ordered pattern of half a step, so that the long gradients show no bands. Being regular it
# costs little in the file.
_BAYER = np.array([[0, 8, 2, 10], [12, 4, 14, 6], [3, 11, 1, 9], [15, 7, 13, 5]]) / 16


def _gradient(stops):
    y = _rows()[:, 0]
    at = [row for row, _ in stops]
    return np.stack([np.interp(y, at, [colour[i] for _, colour in stops]) for i in range(3)], axis=1)[:, None, :]


def _lay(picture, colour, mask):
    """Lays a colour over the picture through a mask of the whole picture or of its rows."""
    mask = mask[:, :, None]
    picture += (np.asarray(colour, dtype=float) - picture) * mask


def _smooth(low, high, value):
    t = np.clip((value - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def _rows():
    return ((np.arange(fine.pixels(H)) + 0.5) / fine.SCALE)[:, None]


def _columns():
    return ((np.arange(fine.pixels(W)) + 0.5) / fine.SCALE)[None, :]


def _layered(across, up, layers, random, **how):
    return noise.layered(fine.pixels(W), fine.pixels(H), across, up, layers, random, **how)


def _ridge_line(random, base, height, across, sharpness=0.5):
    """One skyline: hills upon hills, with crests pinched to peaks."""
    total, strength = np.zeros(fine.pixels(W)), 1.0
    for layer in range(6):
        hills = noise.value_field(fine.pixels(W), 1, across << layer, 1, random, wrap=False)[0]
        total += strength * (1 - 2 * np.abs(hills) ** 0.8 if layer else hills * 1.8)
        strength *= sharpness
    total = (total - total.min()) / (total.max() - total.min())
    return base + height * total


def _smoothed(line, reach):
    """Running mean, mirrored at both ends."""
    reach = fine.pixels(reach)
    wide = np.pad(line, reach, mode="reflect")
    return np.convolve(wide, np.ones(2 * reach + 1) / (2 * reach + 1), mode="valid")


def _ridge(picture, line, colour, mist, depth):
    """Land below a skyline, sinking into mist within depth rows.

    The mist follows the smoothed skyline: measured from the crest itself it would hang below every
    peak in upright streaks.
    """
    y = _rows()
    land = np.clip((line[None, :] - y) * fine.SCALE + 0.5, 0, 1)
    level = _smoothed(_smoothed(line, 60), 60)[None, :] + 6
    clear = np.clip(1 - (level - y) / depth, 0, 1.12) ** 1.3
    _lay(picture, mist, land)
    _lay(picture, colour, land * np.clip(clear, 0, 1))
    # A breath of light along the crest, as the light comes from above.
    crest = np.clip(1 - np.abs(line[None, :] - 0.9 - y) / 1.6, 0, 1)
    _lay(picture, (255, 255, 255), crest * land * 0.22)


def _cirrus(picture, random, low, high, strength, colour=(255, 255, 255)):
    """Thin streaks of high cloud between two rows."""
    field = _layered(5, 26, 5, random, roughness=0.6)
    sway = _layered(4, 5, 2, random)
    field = noise.warped(field, sway * fine.pixels(40), sway * fine.pixels(10))
    y = _rows()
    window = _smooth(low, low + 24, y) * (1 - _smooth(high - 14, high + 30, y))
    _lay(picture, colour, np.clip((field - 0.1) / 2.2, 0, 1) * window * strength)


def _glow(picture, centre, reach, colour, strength):
    away = np.hypot((_columns() - centre[0]) / reach[0], (_rows() - centre[1]) / reach[1])
    _lay(picture, colour, np.exp(-2.2 * away**2) * strength)


# An airliner seen from the side, nose to the right, about 100 units long.
_FUSELAGE = [(-50, 1.5), (-44, 3.4), (34, 4.2), (43, 3.2), (50, 0), (45, -2.4), (36, -3.4), (-30, -3.2), (-46, 0)]
_FIN = [(-49, 2), (-54, 17), (-47.5, 17), (-36, 3.4)]
_WING = [(10, -1.5), (-16, -15), (-22, -15), (-8, -1.5)]
_FAR_WING = [(4, 3), (-8, 11), (-12, 11), (-6, 3)]
_TAILPLANE = [(-42, 1.5), (-54, -3.2), (-57.5, -3.2), (-50, 1.5)]
_ENGINE = [(2, -8.5), (-7, -8.5), (-7, -5.8), (2, -5.8)]


def _airliner(picture, nose, length, climb, colour, strength):
    """The aeroplane, and the trail it draws behind it."""

    def draw(context):
        context.translate(*nose)
        context.rotate(math.radians(climb))
        context.scale(length / 100, length / 100)
        context.translate(-50, 0)
        for shape in (_FAR_WING, _FUSELAGE, _FIN, _TAILPLANE, _WING, _ENGINE):
            vector.polygon(shape)(context)

    x, y = _columns(), _rows()
    cos, sin = math.cos(math.radians(climb)), math.sin(math.radians(climb))
    along = (nose[0] - x) * cos + (nose[1] - y) * sin - length * 1.05
    across = -(nose[0] - x) * sin + (nose[1] - y) * cos
    spread = 0.8 + np.clip(along, 0, None) * 0.006
    for lane in (-1.3, 1.3):
        trail = np.exp(-(((across - lane * spread * 0.9) / spread) ** 2))
        trail = trail * _smooth(0, 26, along) * np.clip(1 - along / 560, 0, 1) ** 1.2
        _lay(picture, (255, 255, 255), np.clip(trail, 0, 1) * 0.5)
    _lay(picture, colour, vector.mask(W, H, draw) * strength)


def _wordmark(picture, x, baseline, colour, strength):
    mask = WORDMARK.mask(W, H, "VELARIS", x, baseline, spacing=11)
    _lay(picture, colour, mask * strength)


def _bank(picture, random, low, high, strength, colour=(255, 255, 255)):
    """A soft bank of cloud between two rows."""
    field = _layered(4, 10, 5, random, roughness=0.5)
    y = _rows()
    window = _smooth(low, (low + high) / 2, y) * (1 - _smooth((low + high) / 2, high, y))
    _lay(picture, colour, np.clip((field + 0.6) / 2.2, 0, 1) * window * strength)


def _floor(picture, stops, low=124, high=152):
    """The plain ground under the buttons and the status box."""
    _lay(picture, _gradient(stops), np.repeat(_smooth(high, low, _rows()), fine.pixels(W), axis=1))


def _open(stops):
    return np.repeat(_gradient(stops), fine.pixels(W), axis=1)


def mountains():
    """Morning over blue ridges."""
    random = np.random.default_rng(20)
    ground = [(0, (205, 218, 232)), (44, (216, 227, 238)), (100, (230, 238, 246)), (152, (238, 244, 250))]
    picture = _open(ground + [
        (300, (234, 242, 250)), (420, (239, 246, 252)), (586, (250, 252, 254)), (664, (250, 252, 254)),
        (692, (226, 239, 249)), (712, (166, 203, 235)), (736, (92, 152, 208)), (768, (30, 84, 150)),
    ])
    _glow(picture, (700, 690), (560, 40), (255, 253, 250), 0.6)
    _cirrus(picture, random, 692, 760, 0.66)
    _glow(picture, (690, 372), (420, 120), (255, 250, 240), 0.8)
    mist = (241, 246, 251)
    for base, height, across, colour, depth in (
        (312, 72, 5, (216, 229, 242), 90),
        (256, 84, 4, (194, 213, 233), 100),
        (196, 90, 4, (168, 194, 221), 110),
        (136, 86, 3, (142, 174, 208), 105),
    ):
        line = _ridge_line(random, base, height, across)
        _ridge(picture, line, colour, mist, depth)
        _bank(picture, random, base - 40, base + 34, 0.75, mist)
    _floor(picture, ground)
    _airliner(picture, (884, 742), 46, 9, (255, 255, 255), 1.0)
    _wordmark(picture, 136, 722, (255, 255, 255), 0.96)
    return picture


def coast():
    """Evening over islands."""
    random = np.random.default_rng(41)
    ground = [(0, (206, 216, 229)), (44, (218, 226, 236)), (100, (232, 238, 244)), (152, (240, 244, 248))]
    picture = _open(ground + [
        (330, (222, 233, 243)), (331, (254, 242, 228)), (390, (252, 246, 239)), (586, (251, 252, 253)),
        (664, (252, 252, 252)), (692, (254, 240, 228)), (708, (246, 212, 190)), (728, (196, 172, 180)),
        (746, (118, 128, 168)), (768, (44, 70, 126)),
    ])
    _cirrus(picture, random, 694, 762, 0.55, (255, 238, 222))
    _glow(picture, (640, 331), (360, 90), (255, 251, 242), 0.9)
    mist = (250, 245, 240)
    for base, height, across, colour, depth in ((320, 46, 4, (206, 212, 228), 60), (312, 36, 7, (172, 185, 210), 44)):
        _ridge(picture, _ridge_line(random, base, height, across), colour, mist, depth)
    _sea(picture, random, 331, 130)
    _floor(picture, ground, 120, 190)
    _airliner(picture, (884, 742), 46, 9, (255, 255, 255), 1.0)
    _wordmark(picture, 136, 722, (255, 255, 255), 0.96)
    return picture


def _sea(picture, random, horizon, bottom):
    """Water below the horizon, with the low sun drawn out across it; paler where the mist begins."""
    water = np.clip((horizon - _rows()) * fine.SCALE + 0.5, 0, 1)
    near = np.clip((horizon - _rows()) / (horizon - bottom), 0, 1)
    far_tone, near_tone = np.array([182, 203, 224.0]), np.array([214, 227, 239.0])
    picture += ((far_tone + (near_tone - far_tone) * near[:, :, None]) - picture) * water[:, :, None]
    waves = _layered(20, 130, 3, random, roughness=0.6)
    _lay(picture, (255, 255, 255), np.clip(waves / 3, 0, 1) * water * (0.12 + 0.25 * near))
    path = np.exp(-(((_columns() - 640) / (40 + 200 * near)) ** 2))
    _lay(picture, (255, 245, 230), path * np.clip(0.5 + waves * 0.35, 0, 1) * water * 0.85)


SCENES = {"background_1": mountains, "background_2": coast}


def draw(name):
    """Opaque pixels, bottom row first."""
    picture = SCENES[name]()
    height, width = picture.shape[:2]
    pattern = np.tile(_BAYER, (height // 4, width // 4))[:, :, None]
    out = np.full((height, width, 4), 255, np.uint8)
    out[:, :, :3] = np.clip(np.floor(picture + pattern), 0, 255)
    return out
