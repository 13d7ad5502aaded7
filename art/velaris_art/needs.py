"""What the drawing needs from the system, told plainly when it is missing."""

import importlib.util
import os
import sys
import tempfile

# Module and the Debian package that brings it.
MODULES = {
    "numpy": "python3-numpy",
    "PIL": "python3-pil",
    "cairo": "python3-cairo",
}

# Face file and the Debian package that brings it.
FACES = {
    "/usr/share/fonts/truetype/open-sans/OpenSans-Semibold.ttf": "fonts-open-sans",
    "/usr/share/fonts/truetype/open-sans/OpenSans-Light.ttf": "fonts-open-sans",
    "/usr/share/fonts/truetype/roboto/unhinted/RobotoCondensed-Bold.ttf": "fonts-roboto-unhinted",
}

FONT_CONFIG = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
{folders}
  <cachedir>{cache}</cachedir>
</fontconfig>
"""


def require(modules, faces=()):
    """Ends the program with the list of packages to install if anything is missing."""
    missing = {MODULES[name] for name in modules if importlib.util.find_spec(name) is None}
    missing |= {FACES[path] for path in faces if not os.path.exists(path)}
    if not missing:
        return
    print("Missing Debian packages: " + " ".join(sorted(missing)), file=sys.stderr)
    print("Install them with: apt-get install " + " ".join(sorted(missing)), file=sys.stderr)
    if sys.executable != "/usr/bin/python3":
        print("(this is " + sys.executable + "; Debian's modules belong to /usr/bin/python3)", file=sys.stderr)
    sys.exit(2)


def private_fonts():
    """Lets fontconfig see our faces only, so that no setting of the user's changes a glyph.

    Must run before cairo looks for its first face. The returned folder lives as long as the caller
    keeps it.
    """
    folder = tempfile.TemporaryDirectory(prefix="velaris-art-")
    folders = sorted({os.path.dirname(path) for path in FACES})
    config = os.path.join(folder.name, "fonts.conf")
    with open(config, "w", encoding="utf-8") as out:
        out.write(
            FONT_CONFIG.format(
                folders="\n".join(f"  <dir>{name}</dir>" for name in folders),
                cache=os.path.join(folder.name, "cache"),
            )
        )
    os.environ["FONTCONFIG_FILE"] = config
    return folder
