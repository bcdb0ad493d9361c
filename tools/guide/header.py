#!/usr/bin/env python3
"""Holds include/lvd4.h against its folder and the version of the project.  header.py VERSION"""
import os
import re
import sys

INCLUDE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "include")


def main():
    version = sys.argv[1]
    with open(os.path.join(INCLUDE, "lvd4.h"), encoding="utf-8") as file:
        text = file.read()
    headers = {name for name in os.listdir(INCLUDE) if name.endswith(".h")} - {"lvd4.h"}
    included = set(re.findall(r'#include "(.*?)"', text))
    number = "0x" + "".join(f"{int(part):02x}" for part in version.split("."))
    macros = dict(re.findall(r"#define (LVD4_VERSION\w*) (.*)", text))
    faults = [f"lvd4.h does not include {name}" for name in sorted(headers - included)]
    faults += [f"lvd4.h includes {name}, which is not there" for name in sorted(included - headers)]
    for name, wanted in (("LVD4_VERSION", number), ("LVD4_VERSION_TEXT", f'"{version}"')):
        if macros.get(name) != wanted:
            faults.append(f"{name} is {macros.get(name)}, not {wanted} as the project's version")
    print("\n".join(faults) or f"lvd4.h: {len(headers)} headers, {version}")
    return 1 if faults else 0


sys.exit(main())
