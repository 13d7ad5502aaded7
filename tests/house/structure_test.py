"""Holds the sources against the plan of the house: which folder may include which, no circle of modules (an x.h and its
x.cpp are one module), a display for the drawing wing alone, and every library linked to what its folder may include."""
import os
import re
import sys
import tempfile
import unittest

# folder -> what it may include besides itself. Two wings, work and picture, on a common ground; they meet at the top.
GROUND = ("platform", "runtime", "files")
WORK = ("net", "engine")
PICTURE = ("display", "gfx/images", "gfx", "ui", "shell")
MAY_INCLUDE = {
    "platform": (),
    "runtime": ("platform",),
    "files": ("platform", "runtime"),
    "net": GROUND,
    "engine": GROUND + ("net",),
    "builder": GROUND + WORK,
    "display": GROUND,
    "gfx/images": GROUND,
    "gfx": GROUND + ("display", "gfx/images"),
    "ui": GROUND + ("display", "gfx/images", "gfx"),
    "shell": GROUND + ("display", "gfx/images", "gfx", "ui"),
    "app": GROUND + WORK,
    "app/console": GROUND + WORK + ("app",),
    "app/window": GROUND + WORK + PICTURE + ("app",),
    "app/builder": GROUND + WORK + ("builder", "app"),
    "app/editions": GROUND,
    "app/programs": GROUND + WORK + PICTURE + ("builder", "app", "app/console", "app/window", "app/builder"),
}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]')
DISPLAY = re.compile(r"^(SDL2?|GL|GLES|EGL|X11)/|^SDL")
LIBRARY = re.compile(r"^velaris_library\((\S+)([^)]*)\)", re.MULTILINE)


def sources(root):
    for folder, _, names in os.walk(root):
        for name in sorted(names):
            if name.endswith((".h", ".cpp")):
                yield os.path.relpath(os.path.join(folder, name), root)


def faults(root):
    found, modules = [], {}
    for path in sources(root):
        folder, module = os.path.dirname(path), os.path.splitext(path)[0]
        if folder not in MAY_INCLUDE:
            found.append(f"{path}: stands in no folder of the plan")
            continue
        with open(os.path.join(root, path), encoding="utf-8") as text:
            for number, line in enumerate(text, 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                target = match[1]
                head = os.path.dirname(target)
                if head in MAY_INCLUDE:
                    modules.setdefault(module, {})[os.path.splitext(target)[0]] = None
                    if head != folder and head not in MAY_INCLUDE[folder]:
                        found.append(f"{path}:{number}: {folder} must not include {target}")
                elif DISPLAY.match(target) and folder not in PICTURE:
                    found.append(f"{path}:{number}: {target} ties {folder} to a display")
                elif '"' in line:
                    found.append(f"{path}:{number}: {target} is not named from the root of src")
    return found + circles(modules)


def circles(modules):
    state, found = {}, []

    def visit(module, trail):
        state[module] = "open"
        for target in modules.get(module, ()):
            if target == module:
                continue
            if state.get(target) == "open":
                found.append("circle: " + " -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                visit(target, trail + [target])
        state[module] = "done"

    for module in sorted(modules):
        if module not in state:
            visit(module, [module])
    return found


def links_against_the_plan(cmake):
    """Libraries that reach another folder's library than those which their folder may include, or fewer."""
    names = {"velaris_" + folder.replace("/", "_"): folder for folder in MAY_INCLUDE}
    linked = {folder: [names[link] for link in re.findall(r"velaris_\w+", links)]
              for folder, links in LIBRARY.findall(cmake)}

    def reached(folder):
        return {far for near in linked.get(folder, ()) for far in reached(near) | {near}}
    return [f"{folder} reaches {sorted(reached(folder))}, may include {sorted(MAY_INCLUDE[folder])}"
            for folder in linked if reached(folder) != set(MAY_INCLUDE[folder])]


class Structure(unittest.TestCase):
    def setUp(self):
        self.root = os.environ["VELARIS_ROOT"]

    def test_the_sources_keep_to_the_plan(self):
        self.assertEqual(faults(os.path.join(self.root, "src")), [])

    def test_the_libraries_keep_to_the_plan(self):
        with open(os.path.join(self.root, "CMakeLists.txt"), encoding="utf-8") as file:
            text = file.read()
        self.assertEqual({folder for folder, _ in LIBRARY.findall(text)},
                         set(MAY_INCLUDE) - {"app/editions", "app/programs"})
        self.assertEqual(links_against_the_plan(text), [])

    def test_what_breaks_the_plan_is_found(self):
        wrong = {
            "files/a.h": ('#include "net/b.h"\n', "files must not include net/b.h"),
            "app/console/c.cpp": ('#include "app/window/w.h"\n', "app/console must not include app/window/w.h"),
            "gfx/g.cpp": ('#include "engine/stg.h"\n', "gfx must not include engine/stg.h"),
            "net/d.cpp": ("#include <GL/gl.h>\n", "ties net to a display"),
            "engine/odd.cpp": ('#include "stg.h"\n', "is not named from the root"),
            "extra/e.h": ("", "stands in no folder"),
            # The headers do not know each other, but the modules do.
            "ui/one.h": ('#include "ui/two.h"\n', "circle: ui/one -> ui/two -> ui/one"),
            "ui/two.cpp": ('#include "ui/one.h"\n', "circle"),
        }
        with tempfile.TemporaryDirectory() as root:
            for name, (text, _) in wrong.items():
                os.makedirs(os.path.join(root, os.path.dirname(name)), exist_ok=True)
                with open(os.path.join(root, name), "w", encoding="utf-8") as out:
                    out.write(text)
            found = "\n".join(faults(root))
        for _, words in wrong.values():
            self.assertIn(words, found)
        for links in ("velaris_engine", "PNG::PNG"):        # more than it may, and less
            self.assertEqual(len(links_against_the_plan(f"velaris_library(gfx {links})")), 1)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
