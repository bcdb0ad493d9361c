#!/usr/bin/env python3
"""Holds include/lvd4.h, and the table in docs/linking.md, against the folder and the version of the
project.  header.py VERSION"""
import os
import re
import sys

from sources import INCLUDE, read


def main():
    version = sys.argv[1]
    text = read("include", "lvd4.h")
    told = set(re.findall(r"`(\w+\.h)`", read("docs", "linking.md")))
    headers = {name for name in os.listdir(INCLUDE) if name.endswith(".h")} - {"lvd4.h"}
    included = set(re.findall(r'#include "(.*?)"', text))
    number = "0x" + "".join(f"{int(part):02x}" for part in version.split("."))
    macros = dict(re.findall(r"#define (LVD4_VERSION\w*) (.*)", text))
    faults = [f"lvd4.h does not include {name}" for name in sorted(headers - included)]
    faults += [f"lvd4.h includes {name}, which is not there" for name in sorted(included - headers)]
    faults += [f"docs/linking.md does not tell of {name}" for name in sorted(headers - told)]
    faults += [f"docs/linking.md tells of {name}, which is not there"
               for name in sorted(told - headers - {"lvd4.h"})]
    for name, wanted in (("LVD4_VERSION", number), ("LVD4_VERSION_TEXT", f'"{version}"')):
        if macros.get(name) != wanted:
            faults.append(f"{name} is {macros.get(name)}, not {wanted} as the project's version")
    print("\n".join(faults) or f"lvd4.h: {len(headers)} headers, {version}")
    return 1 if faults else 0


sys.exit(main())
