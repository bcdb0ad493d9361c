#!/usr/bin/env python3
"""Runs the shell examples of a page and compares what they write with the page.

    verify_shell.py PAGE BINDIR [--update]

An example is a block that begins with "    $ ". All blocks of a page run in one shell, in an empty
directory, with BINDIR ahead of PATH; behind each command stands what it writes on both streams.
--update writes that into the page."""
import difflib
import os
import re
import subprocess
import sys
import tempfile

MARK = "-- end of command --"


def outputs(commands, bindir, directory):
    script = "exec 2>&1\n" + "".join(f"{command}\necho '{MARK}'\n" for command in commands)
    environment = {"PATH": f"{bindir}:/usr/bin:/bin", "LC_ALL": "C.UTF-8", "TZ": "UTC0",
                   "HOME": directory}
    done = subprocess.run(["sh", "-c", script], cwd=directory, env=environment, text=True,
                          stdout=subprocess.PIPE, timeout=60)
    return done.stdout.split(MARK + "\n")


def main():
    path, bindir = sys.argv[1], os.path.abspath(sys.argv[2])
    with open(path, encoding="utf-8") as file:
        page = file.read()
    blocks = re.findall(r"(?m)^    \$ .*\n(?:    .*\n)*", page)
    commands = re.findall(r"(?m)^    \$ (.*)", "".join(blocks))
    with tempfile.TemporaryDirectory() as directory:
        written = iter(outputs(commands, bindir, directory))
    new = page
    for block in blocks:
        lines = []
        for command in re.findall(r"(?m)^    \$ (.*)", block):
            lines += [f"    $ {command}\n"]
            lines += [f"    {line}\n" for line in next(written).splitlines()]
        new = new.replace(block, "".join(lines), 1)
    if "--update" in sys.argv[3:]:
        with open(path, "w", encoding="utf-8") as file:
            file.write(new)
    elif new != page:
        sys.stdout.writelines(difflib.unified_diff(page.splitlines(True), new.splitlines(True),
                                                   path, "what the commands write"))
        return 1
    return 0 if commands else 1


sys.exit(main())
