#!/usr/bin/env python3
"""Checks a run of the example: verify.py BUILD-DIRECTORY.

Works every figure of the report out anew from the data, compares the run with countries.expected,
and checks the messages, the status, and that ERRCOUNT bounds the warnings.
"""
import os
import re
import subprocess
import sys
from collections import namedtuple
from decimal import ROUND_HALF_UP, Decimal
from pathlib import Path

HERE = Path(__file__).resolve().parent
REGIONS = ["Africa", "Asia", "Europe", "Latin America", "North America", "Oceania"]
LINES_PER_PAGE = 54
LEVY, GRANT = Decimal("0.025"), Decimal("0.5")
CENT = Decimal("0.01")

Country = namedtuple("Country", "name region area population growth")


class Mismatch(Exception):
    pass


def expect(what, got, wanted):
    if got != wanted:
        raise Mismatch(f"{what}: {got!r}, should be {wanted!r}")


def rounded(value):
    return value.quantize(CENT, ROUND_HALF_UP)


def ratio(a, b):
    return rounded(Decimal(a) / b) if b else Decimal(0)


def read_data():
    """The countries in order, the names of the records in error, the count of doubtful signs."""
    good, bad, doubtful = [], [], 0
    for line in (HERE / "countries.dat").read_text("ascii").splitlines():
        fields = re.fullmatch(r"(.{26})(.{13})(.{8})(.{10})(.{4})(.)", line)
        name, region, area, population, growth, sign = (f.rstrip() for f in fields.groups())
        if region not in REGIONS or not all(
                re.fullmatch(r"\d+", f) for f in (fields[3], fields[4], fields[5])):
            bad.append(name)
            continue
        doubtful += sign not in ("+", "-")
        growth = Decimal(growth) / 100
        good.append(Country(name, region, int(area), int(population),
                            -growth if sign == "-" else growth))
    return good, bad, doubtful


def balance(countries):
    return sum(rounded(c.population * LEVY - c.area * GRANT) for c in countries)


def number(text):
    """The value of an edited item."""
    text = text.strip()
    value = Decimal(re.sub(r"[$,*]|CR|DB", "", text) or "0")
    return -value if text.endswith(("CR", "DB")) else value


def check_figures(what, line, countries):
    """The columns that a country's line and a region's total share."""
    area = sum(c.area for c in countries)
    population = sum(c.population for c in countries)
    people = sum(c.population * c.growth for c in countries)
    wanted = (area, population, ratio(population, area), balance(countries),
              ratio(people, population))
    columns = [line[27:38], line[39:52], line[53:62], line[63:80], line[81:87]]
    expect(what, tuple(number(c) for c in columns), wanted)
    if not area:
        expect(f"{what}, density without area", columns[2].strip(), "")


def check_summary(what, line, countries, world):
    population = sum(c.population for c in countries)
    area = sum(c.area for c in countries)
    density = ratio(population, area)
    everybody = sum(c.population for c in world)
    average = ratio(everybody, sum(c.area for c in world))
    wanted = (len(countries), area, population, ratio(population * 100, everybody),
              density - average, density,
              ratio(sum(c.population * c.growth for c in countries), population))
    slices = ((14, 18), (20, 31), (33, 46), (48, 54), (56, 67), (69, 78), (81, 87))
    expect(what, tuple(number(line[a:b]) for a, b in slices), wanted)


def check_report(report, good, bad, doubtful):
    pages = [page.splitlines() for page in re.split(r"^=+\n", report, flags=re.M)[1:]]
    for i, page in enumerate(pages, 1):
        expect("page number", int(page[0][-3:]), i)
        # A page's rule is split off; all pages but the last two are full.
        if i < len(pages) - 1:
            expect(f"lines of page {i}", len(page) + 1, LINES_PER_PAGE)
    detail = [line for page in pages[:-1] for line in page[2:]]
    by_name = {c.name: c for c in good}
    rejected, listed = [], []
    for line in detail:
        name = line[:26].rstrip()
        if " REJECTED: RECORD " in line:
            rejected.append(name)
        elif name.startswith("TOTAL "):
            region = line[6:19].rstrip()
            countries = [c for c in good if c.region == region]
            expect(f"countries of {region}", int(line[19:24]), len(countries))
            check_figures(f"total of {region}", line, countries)
        elif line.endswith("-----"):
            continue
        else:
            listed.append(name)
            check_figures(name, line, [by_name[name]])
    expect("countries listed", listed, [c.name for c in good])
    expect("records rejected", rejected, bad)
    summary = pages[-1][2:]
    for region, line in zip(REGIONS, summary):
        expect("region", line[:14].rstrip(), region)
        check_summary(f"summary of {region}", line, [c for c in good if c.region == region], good)
    check_summary("summary of the world", summary[6], good, good)
    expect("balance of the world", number(summary[7][20:]), balance(good))
    expect("counts", [int(line[20:]) for line in summary[8:11]],
           [len(good) + len(bad), len(bad), doubtful])


def run(build, **environment):
    return subprocess.run([HERE / "run", build], capture_output=True, text=True, check=False,
                          env={**os.environ, "COBRTOPT": "", **environment})


def main():
    build = sys.argv[1]
    good, bad, doubtful = read_data()
    done = run(build)
    report, status = done.stdout.rsplit("status: ", 1)
    expect("status", int(status), 4)
    numbers = re.findall(r"^(\w{6}[IWSC])", done.stderr, re.M)
    expect("messages", sorted(numbers), ["ZOR039I"] * len(bad) + ["ZOR040W"] * doubtful)
    check_report(report, good, bad, doubtful)
    masked = re.sub(r"DATE \d{4}/\d\d/\d\d", "DATE YYYY/MM/DD", done.stdout)
    expect("the report against countries.expected", masked,
           (HERE / "countries.expected").read_text("ascii"))

    quiet = run(build, COBRTOPT="NOCHECK")
    expect("messages under NOCHECK", re.findall(r"^ZOR\w+", quiet.stderr, re.M),
           ["ZOR040W"] * doubtful)
    stopped = run(build, COBRTOPT="ERRCOUNT=1")
    expect("ERRCOUNT ends the run", "ERRCOUNT" in stopped.stderr and stopped.returncode != 0, True)
    print(f"countries: {len(good)} listed, {len(bad)} rejected, all figures right")


try:
    main()
except Mismatch as mismatch:
    sys.exit(f"countries: {mismatch}")
