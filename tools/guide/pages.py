#!/usr/bin/env python3
"""Writes the pages of the guide that come from the sources, or tells which ones have drifted.

    pages.py           writes them
    pages.py --check   compares them; exits 1 when one differs"""
import difflib
import os
import sys

import functions
import messages
import settings
from sources import ROOT

PAGES = {
    "docs/guide/messages.md": messages.page,
    "docs/guide/settings.md": settings.page,
    "docs/guide/index-of-functions.md": functions.page,
}


def committed(path):
    if not os.path.exists(path):
        return ""
    with open(path, encoding="utf-8") as file:
        return file.read()


def main():
    drifted = 0
    for name, write in PAGES.items():
        path = os.path.join(ROOT, name)
        old, new = committed(path), write()
        if old == new:
            continue
        drifted += 1
        if "--check" in sys.argv[1:]:
            sys.stdout.writelines(difflib.unified_diff(
                old.splitlines(keepends=True), new.splitlines(keepends=True), name,
                "what tools/guide/pages.py writes"))
        else:
            with open(path, "w", encoding="utf-8") as file:
                file.write(new)
            print("wrote", name)
    if not drifted:
        print(f"{len(PAGES)} pages are as their sources say")
    return 1 if drifted and "--check" in sys.argv[1:] else 0


sys.exit(main())
