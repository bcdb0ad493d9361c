#!/usr/bin/env python3
"""Installs a build tree into a fresh place and uses it from there as a project of a user does: with its
CMake package, with pkg-config, and by mistake as a 64-bit program. Usage: verify.py BUILD-TREE"""
import os
import pathlib
import subprocess
import sys
import tempfile

consumer = pathlib.Path(__file__).resolve().parent / "consumer"
environment = {name: value for name, value in os.environ.items() if name != "NLSPATH"}
environment["LC_ALL"] = "C"


def run(*command, **options):
    return subprocess.run(command, env=environment, check=True, capture_output=True, text=True,
                          **options).stdout


def expect_program(program):
    done = subprocess.run([program], env=environment, capture_output=True, text=True)
    assert done.returncode == 0, done
    assert done.stdout == "2C\n", done
    assert done.stderr.startswith("ZOR040I  The separate sign"), done


def by_cmake(prefix, work):
    run("cmake", "-S", consumer, "-B", work / "cmake", f"-DCMAKE_PREFIX_PATH={prefix}")
    run("cmake", "--build", work / "cmake")
    expect_program(work / "cmake" / "program")


def by_pkg_config(prefix, work):
    environment["PKG_CONFIG_PATH"] = str(prefix / "lib" / "pkgconfig")
    flags = run("pkg-config", "--cflags", "--libs", "lvd4").split()
    run("gcc", consumer / "program.c", "-o", work / "program", *flags)
    expect_program(work / "program")


def as_64_bits(prefix):
    for header in sorted((prefix / "include" / "lvd4").glob("*.h")):
        done = subprocess.run(["gcc", "-x", "c", "-fsyntax-only", header], env=environment,
                              capture_output=True, text=True)
        errors = [line for line in done.stderr.splitlines() if "error:" in line]
        assert len(errors) == 1 and "compile with -m32" in errors[0], (header, done.stderr)


with tempfile.TemporaryDirectory() as directory:
    work = pathlib.Path(directory)
    prefix = work / "usr"
    run("cmake", "--install", sys.argv[1], "--prefix", prefix)
    by_cmake(prefix, work)
    by_pkg_config(prefix, work)
    as_64_bits(prefix)
    assert run(prefix / "bin" / "gdgmgr", "--help").startswith("Usage: gdgmgr ")
