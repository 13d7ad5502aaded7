"""The table of regions: what stands where in the four pictures.

All coordinates count from the bottom left corner of a picture, y up, in pixels. Ranges leave out
their end.
"""

import csv
import os
from dataclasses import dataclass

ART = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TABLE = os.path.join(ART, "regions.csv")
RENDERED = os.path.join(ART, "rendered")

# Width and height of each picture.
SHEETS = {
    "interface_atlas": (512, 512),
    "installer_sheet": (1010, 764),
    "background_1": (1024, 768),
    "background_2": (1024, 768),
}


def _numbers(text):
    return tuple(float(part) if "." in part else int(part) for part in text.split())


@dataclass(frozen=True)
class Region:
    sheet: str
    name: str
    kind: str  # glyph, swatch, sample, bar, box, cell, cursor, sprite, globe, picture, group, reserve
    x: int
    y: int
    w: int
    h: int
    state: str
    code: int  # glyphs: Latin-1 code, else -1
    advance: int  # glyphs: how far the pen moves, else 0
    cut_x: tuple  # bars and boxes: the two columns between left end, middle and right end
    cut_y: tuple  # the same upright
    margin: tuple  # boxes: how far they outgrow their rectangle, at the sides, below, above
    face: tuple  # left, bottom, right, top of the visible face inside the region; empty if all of it
    colour: tuple  # swatches and samples: the exact colour
    text: str  # sprites: the caption

    @property
    def stem(self):
        """The name without its state, such as button_quit for button_quit_hover."""
        return self.name[: -len(self.state) - 1] if self.state and self.name.endswith(self.state) else self.name


def load(path=TABLE):
    with open(path, newline="", encoding="utf-8") as table:
        return [
            Region(
                sheet=row["sheet"],
                name=row["name"],
                kind=row["kind"],
                x=int(row["x"]),
                y=int(row["y"]),
                w=int(row["w"]),
                h=int(row["h"]),
                state=row["state"],
                code=int(row["code"] or -1),
                advance=int(row["advance"] or 0),
                cut_x=_numbers(row["cut_x"]),
                cut_y=_numbers(row["cut_y"]),
                margin=_numbers(row["margin"]),
                face=_numbers(row["face"]),
                colour=_numbers(row["colour"]),
                text=row["text"],
            )
            for row in csv.DictReader(table)
        ]


def by_name(regions):
    return {region.name: region for region in regions}
