"""Fails when a source includes a header of a floor above its own, or when two headers include each other in a circle."""
import os
import re
import sys
import tempfile
import unittest

RANK = {"platform": 0, "runtime": 1, "files": 2, "net": 3, "engine": 4, "builder": 5, "gfx": 6, "ui": 7, "shell": 8,
        "app": 9}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]')
# Floors 0 to 5 and the console need no display, so nothing there may reach for one.
DISPLAY = re.compile(r"^(SDL|SDL2|GL|GLES|EGL|X11)/|^SDL")
DISPLAY_ALLOWED_BELOW_GFX = re.compile(r"^platform/display_")


def sources(root):
    for folder, _, names in os.walk(root):
        for name in sorted(names):
            if name.endswith((".h", ".cpp")):
                yield os.path.relpath(os.path.join(folder, name), root)


def faults(root):
    found = []
    graph = {}
    for path in sources(root):
        floor = path.split(os.sep)[0]
        if floor not in RANK:
            found.append(f"{path}: stands in no floor")
            continue
        graph[path] = []
        with open(os.path.join(root, path), encoding="utf-8") as text:
            for number, line in enumerate(text, 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                target = match.group(1)
                head = target.split("/")[0]
                if head in RANK and "/" in target:
                    graph[path].append(target)
                    if RANK[head] > RANK[floor]:
                        found.append(f"{path}:{number}: floor {floor} includes {target} of the floor above")
                elif DISPLAY.match(target) and RANK[floor] < RANK["gfx"] and not DISPLAY_ALLOWED_BELOW_GFX.match(path):
                    found.append(f"{path}:{number}: {target} ties floor {floor} to a display")
                elif '"' in line:
                    found.append(f"{path}:{number}: {target} is not named from the root of src")
    return found + circles(graph)


def circles(graph):
    state, found = {}, []

    def visit(path, trail):
        state[path] = "open"
        for target in graph.get(path, []):
            if state.get(target) == "open":
                found.append("circle: " + " -> ".join(trail + [target]))
            elif target not in state:
                visit(target, trail + [target])
        state[path] = "done"

    for path in graph:
        if path not in state:
            visit(path, [path])
    return found


class Floors(unittest.TestCase):
    def test_no_include_points_upward(self):
        self.assertEqual(faults(os.path.join(os.environ["VELARIS_ROOT"], "src")), [])

    def test_an_upward_include_a_circle_and_a_display_are_caught(self):
        with tempfile.TemporaryDirectory() as root:
            for name, text in {"files/a.h": '#include "net/b.h"\n', "net/b.h": '#include "files/a.h"\n',
                               "net/c.cpp": "#include <GL/gl.h>\n"}.items():
                os.makedirs(os.path.join(root, os.path.dirname(name)), exist_ok=True)
                with open(os.path.join(root, name), "w", encoding="utf-8") as out:
                    out.write(text)
            text = "\n".join(faults(root))
            self.assertIn("files/a.h:1: floor files includes net/b.h", text)
            self.assertIn("circle", text)
            self.assertIn("net/c.cpp:1", text)


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
