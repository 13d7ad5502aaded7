"""The globe: sixteen frames of one turn.

Each frame is a ray cast of a sphere: for every sample inside the disc the point of the surface is
found and its colour looked up on a map. The light is fixed to the viewer, so it stands still while
the surface moves from left to right.
"""

import math
import os

import numpy as np

from . import fine, noise, vector
from .regions import ART

SIZE = 64
CENTRE = 32.0
RADIUS = 28.0  # of the ground; the air reaches a little further
AIR = 1.9
FINE = 5  # samples a pixel in each direction

FRAMES = range(8, 24)
RESTING = 21  # the frame that is shown while nothing is being installed
RESTING_LONGITUDE = 8.0  # Europe and Africa, with the Atlantic at the left
TILT = math.radians(24)  # the north leans towards the viewer

MAP_W, MAP_H = 1440, 720
LIGHT = np.array([0.0, 0.58, 0.81])
LIGHT = LIGHT / np.linalg.norm(LIGHT)

OCEAN_DEEP = np.array([18, 62, 128.0])
OCEAN_SHELF = np.array([44, 122, 190.0])
ICE = np.array([240, 246, 250.0])
AIR_COLOUR = np.array([140, 200, 250.0])

# Tone of the land by latitude: tropical, desert, temperate, northern, tundra.
LAND_LATITUDES = [-60, -45, -33, -24, -12, 0, 10, 16, 22, 30, 38, 48, 58, 66, 74]
LAND_TONES = np.array([
    [196, 200, 190], [110, 140, 92], [138, 150, 92], [186, 160, 104], [108, 142, 74], [62, 122, 66],
    [104, 140, 72], [176, 158, 100], [214, 188, 132], [200, 178, 124], [142, 152, 96], [96, 138, 84],
    [92, 126, 92], [134, 146, 124], [216, 222, 222],
], dtype=float)


def _shapes():
    with open(os.path.join(ART, "continents.txt"), encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                kind, _, *points = line.split()
                yield kind, [tuple(float(n) for n in point.split(",")) for point in points]


def _land():
    """Share of land at each point of the map, row 0 in the south."""
    land = np.zeros((MAP_H, MAP_W))
    for kind, points in _shapes():
        at = [((lon + 180) / 360 * MAP_W, (lat + 90) / 180 * MAP_H) for lon, lat in points]
        # One pixel a point of the map, however fine the picture.
        drawn = vector.polygon([(x / fine.SCALE, y / fine.SCALE) for x, y in at])
        shape = vector.mask(MAP_W / fine.SCALE, MAP_H / fine.SCALE, drawn)
        land = np.maximum(land, shape) if kind == "land" else land * (1 - shape)
    return land


def _blur(picture, reach):
    """Mean over a square, wrapping round east and west."""
    for axis in (0, 1):
        total = np.zeros_like(picture)
        for step in range(-reach, reach + 1):
            total += np.roll(picture, step, axis=axis)
        picture = total / (2 * reach + 1)
    return picture


def _clouds(seed=6):
    """Streaks of cloud, seamless round the globe, densest along the equator and the westerlies."""
    random = np.random.default_rng(seed)
    sway = noise.layered(MAP_W, MAP_H, 6, 5, 3, random)
    bend = noise.layered(MAP_W, MAP_H, 8, 6, 2, random)
    streaks = noise.layered(MAP_W, MAP_H, 14, 16, 4, random, roughness=0.62)
    streaks = noise.warped(streaks, sway * 26, bend * 14)
    lat = np.linspace(-90, 90, MAP_H)[:, None]
    belts = 0.5 * np.exp(-(((lat - 4) / 9) ** 2)) + 0.6 * np.exp(-(((np.abs(lat) - 52) / 13) ** 2))
    return np.clip((streaks + belts - 1.0) / 1.6, 0, 1)


def _surface():
    """Colour of the map without light, and how much each point gleams."""
    land = _land()
    shelf = np.clip(_blur(_blur(land, 9), 9) * 1.6, 0, 1)[:, :, None]
    lat = np.linspace(-90, 90, MAP_H)
    # The belts of climate wander, or they would lie on the land like a ruler's lines.
    wander = noise.layered(MAP_W, MAP_H, 9, 6, 3, np.random.default_rng(3)) * 3.2
    tones = [np.interp(lat[:, None] + wander, LAND_LATITUDES, LAND_TONES[:, i]) for i in range(3)]
    colour = np.stack(tones, axis=2)
    # Deserts belong to the dry west and middle; the east of a continent stays green.
    lon = np.linspace(-180, 180, MAP_W)[None, :]
    green = np.array([86, 132, 74.0])
    for west, east, south, north in ((-100, -72, 24, 50), (84, 125, 16, 36), (-62, -36, -34, -14)):
        inside = _soft_box(lon, lat[:, None], west, east, south, north)[:, :, None]
        colour = colour * (1 - 0.8 * inside) + green * 0.8 * inside
    sand = np.array([212, 184, 128.0])
    for west, east, south, north in ((40, 75, 24, 44), (118, 140, -29, -20), (-118, -104, 26, 38), (85, 108, 38, 45)):
        inside = _soft_box(lon, lat[:, None], west, east, south, north)[:, :, None]
        colour = colour * (1 - 0.8 * inside) + sand * 0.8 * inside
    sea = OCEAN_DEEP + (OCEAN_SHELF - OCEAN_DEEP) * shelf
    colour = sea + (colour - sea) * land[:, :, None]
    greenland = _soft_box(lon, lat[:, None], -56, -22, 63, 84)
    white = np.maximum(np.clip((np.abs(lat)[:, None] - 76) / 5, 0, 1) * (0.5 + 0.5 * land), greenland * land)
    white = np.maximum(white, land * (lat < -61)[:, None])[:, :, None]
    colour = colour + (ICE - colour) * white
    clouds = _clouds()[:, :, None]
    colour = colour + (np.array([250, 252, 255.0]) - colour) * clouds * 0.85
    gleam = (1 - land) * (1 - clouds[:, :, 0])
    return colour, gleam


def _soft_box(lon, lat, west, east, south, north, edge=7.0):
    def side(value):
        return 1 / (1 + np.exp(-np.clip(value / edge * 4, -30, 30)))

    return side(lon - west) * side(east - lon) * side(lat - south) * side(north - lat)


def _frame(surface, gleam, longitude):
    """One picture, 64 by 64 units, straight alpha, bottom row first."""
    size = fine.pixels(SIZE)
    n = size * FINE
    at = (np.arange(n) + 0.5) / (FINE * fine.SCALE) - CENTRE
    x, y = np.meshgrid(at / RADIUS, at / RADIUS)
    away = np.hypot(x, y)
    ground = away < 1
    z = np.sqrt(np.clip(1 - x * x - y * y, 0, 1))
    north = y * math.cos(TILT) + z * math.sin(TILT)
    front = z * math.cos(TILT) - y * math.sin(TILT)
    lat = np.arcsin(np.clip(north, -1, 1))
    lon = np.arctan2(x, front) + math.radians(longitude)
    column = np.floor((lon / (2 * math.pi) + 0.5) * MAP_W).astype(int) % MAP_W
    row = np.clip(np.floor((lat / math.pi + 0.5) * MAP_H).astype(int), 0, MAP_H - 1)
    colour, shine = surface[row, column], gleam[row, column]

    facing = np.clip(x * LIGHT[0] + y * LIGHT[1] + z * LIGHT[2], 0, 1)
    colour = colour * (0.40 + 0.78 * facing)[:, :, None]
    # The sun in the sea: reflected ray against the eye, which looks along z.
    mirrored = np.clip(2 * facing * z - LIGHT[2], 0, 1)
    colour = colour + (255 - colour) * (0.35 * shine * mirrored**14)[:, :, None]
    haze = np.clip((away - 0.62) / 0.38, 0, 1) ** 2.2
    colour = colour + (AIR_COLOUR * (0.48 + 0.64 * facing)[:, :, None] - colour) * (0.55 * haze)[:, :, None]

    height = (away - 1) * RADIUS
    lit = np.clip(0.35 + 0.65 * (x * LIGHT[0] + y * LIGHT[1] + 0.2), 0, 1)
    air = np.clip(1 - height / AIR, 0, 1) ** 1.6 * 0.75 * lit
    alpha = np.where(ground, 1.0, air)
    colour = np.where(ground[:, :, None], np.clip(colour, 0, 255), AIR_COLOUR)

    mass = alpha.reshape(size, FINE, size, FINE).mean(axis=(1, 3))
    paint = (colour * alpha[:, :, None]).reshape(size, FINE, size, FINE, 3).mean(axis=(1, 3))
    mass = np.where(mass < 1 / 255, 0, mass)
    out = np.zeros((size, size, 4), np.uint8)
    out[:, :, :3] = np.clip(np.rint(paint / np.maximum(mass, 1e-9)[:, :, None]), 0, 255)
    out[:, :, 3] = np.rint(mass * 255)
    out[out[:, :, 3] == 0] = 0
    return out


def frames():
    """Pictures by frame number. The surface moves east, so the longitude in the middle falls."""
    surface, gleam = _surface()
    step = 360 / len(FRAMES)
    return {index: _frame(surface, gleam, RESTING_LONGITUDE - step * (index - RESTING)) for index in FRAMES}
