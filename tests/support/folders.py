"""Compares an installed folder with what it must hold."""
import contextlib
import hashlib
import os
import stat

import release


def snapshot(folder):
    """Everything below `folder`: path -> (kind, what, mode, time). Folders end in "/". A missing folder is empty.

    What goes while it is looked at, as under a run at work, is not there."""
    found = {}
    for here, folders, files in os.walk(folder):
        base = os.path.relpath(here, folder)
        prefix = "" if base == "." else base + "/"
        for name in folders + files:
            with contextlib.suppress(FileNotFoundError):
                full = os.path.join(here, name)
                facts = os.lstat(full)
                if stat.S_ISLNK(facts.st_mode):
                    found[prefix + name] = ("link", os.readlink(full), 0, 0)
                elif stat.S_ISDIR(facts.st_mode):
                    found[prefix + name + "/"] = ("folder", "", 0, 0)
                else:
                    with open(full, "rb") as data:
                        digest = hashlib.md5(data.read()).hexdigest()
                    found[prefix + name] = ("file", digest, stat.S_IMODE(facts.st_mode), int(facts.st_mtime))
    return found


def expected(items):
    """The snapshot of an install of `items` (path -> release.Item), with the folders on the way to each."""
    wanted = {}
    for path in release.OWN_FOLDERS:
        add_folders(wanted, path + "/")
    for path, item in items.items():
        add_folders(wanted, path)
        if item.target is not None:
            wanted[path] = ("link", item.target, 0, 0)
        else:
            wanted[path] = ("file", hashlib.md5(item.data).hexdigest(), item.mode, item.when)
    return wanted


def add_folders(wanted, path):
    parts = path.split("/")[:-1]
    for depth in range(1, len(parts) + 1):
        wanted["/".join(parts[:depth]) + "/"] = ("folder", "", 0, 0)


def differences(wanted, found):
    """In words, one line a difference; empty when all is as it must be."""
    lines = [f"missing: {path}" for path in sorted(wanted.keys() - found.keys())]
    lines += [f"too much: {path}" for path in sorted(found.keys() - wanted.keys())]
    for path in sorted(wanted.keys() & found.keys()):
        for what, want, have in zip(("kind", "content", "mode", "time"), wanted[path], found[path]):
            if want != have:
                lines.append(f"{what} of {path}: {show(what, have)}, should be {show(what, want)}")
    return lines


def show(what, value):
    return oct(value) if what == "mode" else str(value)
