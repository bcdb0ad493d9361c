#!/usr/bin/env python3
"""Builds a program of the guide as a user builds it, runs it, and compares what it does with the
files beside it.

    verify.py NAME LIBDIR [--cc CC] [--flags FLAGS] [--update]

programs/NAME.c is strict C11 against the interface headers and is linked with the library in
LIBDIR; sources in modules/NAME are built as shared objects that it finds by the system's search. It
runs without arguments in an empty directory, in the locale C.UTF-8, in UTC, with no other
variables than PATH and those of NAME.env.

    NAME.in        standard input; empty without it
    NAME.env       lines VAR=value
    NAME.expected  standard output, byte for byte
    NAME.err       standard error, with addresses as @, process ids as # and the frames of call
                   chains left out; without the file nothing may be written there
    NAME.status    the exit status, 128 + n for a death by signal n; 0 without the file

--update writes the last three from what the program does."""
import argparse
import difflib
import glob
import os
import re
import resource
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
PROGRAMS = os.path.join(HERE, "programs")
MODULES = os.path.join(HERE, "modules")
INCLUDE = os.path.join(HERE, os.pardir, os.pardir, "include")
SECONDS = 60


def file_of(name, suffix, otherwise=b""):
    path = os.path.join(PROGRAMS, name + suffix)
    if not os.path.exists(path):
        return otherwise
    with open(path, "rb") as file:
        return file.read()


def build(options, source, target, *more):
    command = [options.cc, "-m32", "-std=c11", "-Wall", "-Wextra", "-Werror", "-O1",
               "-I", INCLUDE, source, "-o", target,
               "-L", options.libdir, "-llvd4_32r", "-Wl,-rpath," + options.libdir, "-pthread"]
    subprocess.run(command + list(more) + options.flags.split(), check=True)


def modules_of(options):
    return glob.glob(os.path.join(MODULES, options.name, "*.c"))


def build_modules(options, directory):
    for source in modules_of(options):
        name = os.path.splitext(os.path.basename(source))[0]
        build(options, source, os.path.join(directory, name + ".so"), "-shared", "-fPIC")


def environment_of(options, directory):
    environment = {"PATH": os.environ.get("PATH", "/usr/bin:/bin"), "LC_ALL": "C.UTF-8",
                   "TZ": "UTC0"}
    if modules_of(options):
        environment["LD_LIBRARY_PATH"] = directory
    if "sanitize" in options.flags:  # signals are the program's own
        environment["ASAN_OPTIONS"] = "handle_segv=0:handle_sigfpe=0:handle_abort=0"
    for line in file_of(options.name, ".env").decode().splitlines():
        variable, _, value = line.partition("=")
        environment[variable] = value
    return environment


def blanked(text, pid):
    text = re.sub(rb"(  Traceback:\n).*?(    --- End of call chain ---\n)", rb"\1\2", text,
                  flags=re.S)
    text = re.sub(rb"0x[0-9a-f]+", b"@", text)
    return re.sub(rb"\b%d\b" % pid, b"#", text)


def run(options, program, directory):
    process = subprocess.Popen(
        [program], cwd=directory,
        env=environment_of(options, os.path.dirname(program)), stdin=subprocess.PIPE,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CORE, (0, 0)))
    out, err = process.communicate(file_of(options.name, ".in"), SECONDS)
    status = process.returncode
    return out, blanked(err, process.pid), b"%d\n" % (128 - status if status < 0 else status)


def shown(data):
    return data.decode("utf-8", "backslashreplace").splitlines(keepends=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("name")
    parser.add_argument("libdir")
    parser.add_argument("--cc", default="gcc")
    parser.add_argument("--flags", default="")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        program = os.path.join(scratch, options.name)
        directory = os.path.join(scratch, "empty")
        os.mkdir(directory)
        build(options, os.path.join(PROGRAMS, options.name + ".c"), program)
        build_modules(options, scratch)
        results = run(options, program, directory)
    faults = 0
    for suffix, otherwise, got in zip((".expected", ".err", ".status"), (None, b"", b"0\n"),
                                      results):
        wanted = file_of(options.name, suffix, otherwise)
        if got == wanted:
            continue
        path = os.path.join(PROGRAMS, options.name + suffix)
        if options.update:
            if got == otherwise:
                os.remove(path)
                continue
            with open(path, "wb") as file:
                file.write(got)
        else:
            faults += 1
            sys.stdout.writelines(difflib.unified_diff(shown(wanted or b""), shown(got),
                                                       options.name + suffix, "what it does"))
    return 1 if faults else 0


sys.exit(main())
