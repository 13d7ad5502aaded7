"""How fine the pictures are drawn. Everything in the drawing code is in units of the program's canvas; a picture has
SCALE pixels for each. sheet.render() sets it, and only the tools read it."""

SCALE = 1


def pixels(units):
    """A whole number of pixels."""
    return int(round(units * SCALE))
