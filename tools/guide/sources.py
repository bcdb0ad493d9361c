"""What the page writers share: the tree, its files, and tables in Markdown."""
import os
import re

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
INCLUDE = os.path.join(ROOT, "include")
PROGRAMS = os.path.join(ROOT, "docs", "guide", "programs")


def read(*path):
    with open(os.path.join(ROOT, *path), encoding="utf-8") as file:
        return file.read()


def library_files(root="wscobol"):
    """(path below the root, text) of every source of the library, or of its modules, in order."""
    for folder, folders, names in os.walk(os.path.join(ROOT, root)):
        folders.sort()
        for name in sorted(names):
            if name.endswith((".cpp", ".h")):
                path = os.path.relpath(os.path.join(folder, name), os.path.join(ROOT, root))
                yield path, read(root, path)


def cell(text):
    return re.sub(r"\s+", " ", text).strip().replace("|", "\\|")


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    lines += ["| " + " | ".join(cell(str(value)) for value in row) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def generated(script, text):
    """The page's first lines tell where it comes from; its title follows."""
    return f"<!-- Written by tools/guide/{script}; run tools/guide/pages.py to renew it. -->\n" + text
