"""The page of settings: run-time options from their table, variables from the calls that read them,
and for each what the guide's program of settings shows."""
import itertools
import re

from sources import generated, library_files, read, table

# What a variable does, by the page's sections: name, values, default. The examples come from
# programs/settings.expected, all rows that set the variable.
VARIABLES = {
    "Standard files": {
        "SYSIN": ("file that ACCEPT and STOP read", "standard input"),
        "SYSIPT": ("the same, when `SYSIN` is not set", ""),
        "SYSOUT": ("file that DISPLAY appends to; a `%` at its end asks for a generated name",
                   "standard output"),
        "SYSLIST": ("the same, when `SYSOUT` is not set", ""),
        "SYSLST": ("the same, when neither is set", ""),
        "SYSPUNCH": ("file that DISPLAY UPON SYSPUNCH writes anew", "standard output, message 168"),
        "SYSPCH": ("the same, when `SYSPUNCH` is not set", ""),
        "CONSOLE": ("file that ACCEPT FROM CONSOLE reads and DISPLAY UPON CONSOLE appends to",
                    "standard input and output"),
        "COBMSGS": ("file that messages are appended to", "standard error"),
        "COBOUTDIR": ("directory of output and core files whose names begin with neither `/` nor `.`",
                      "the current one"),
        "COBOL_DISPLAY_FLUSH": ("begins with `1`: each DISPLAY is written out at its end; anything "
                                "else: where the stream's buffer is full and when the run ends",
                                "no flush"),
    },
    "Locale and code pages": {
        "LANG": ("the locale, with `LC_ALL`, `LC_CTYPE`, `LC_MESSAGES`: language of the messages; "
                 "outside multi-byte locales their lines are broken", "`C`"),
        "TZ": ("the time zone of ACCEPT and of generated names", "the system's"),
        "NLSPATH": ("where the message catalogue is looked for, behind the run-time's own places",
                    "those alone"),
        "EBCDIC_CODEPAGE": ("EBCDIC code page of the process: a name of the table below, in any case",
                            "that of the locale"),
    },
    "Decimal data": {
        "COBOL_BCD_NOVALIDATE": ("a number, also octal or hexadecimal: the bits below", "0"),
        "COBOL_BCD_SAFE": ("not empty: clears bits 0x0B, sets 0x54", "off"),
        "COBOL_BCD_FAST": ("not empty: clears bits 0x5F, sets 0x08", "off"),
        "COBOL_BCD_EBCDIC": ("not empty: sets bit 0x80", "off"),
        "COBOL_BCD_DEBUG": ("not empty: each call is traced on standard error", "off"),
    },
    "Called programs": {
        "COBPATH": ("directories that CALL searches for programs, divided by colons; empty ones are "
                    "skipped. See [dynamic-programs.md](dynamic-programs.md)",
                    "the current directory"),
        "COBOL_CPM_CACHE": ("begins with `ON`, `1`, `A`, `e`, `S`, `T` or `Y`: on; with `OF`, `0`, "
                            "`d`, `F` or `N`: off; anything else: undecided, which turns on at the "
                            "second run unit of a process and in containers", "undecided"),
        "COB_CPM_SIZE_MAX": ("a number, when `COBOL_CPM_CACHE` is not set: not 0 on, 0 off",
                             "undecided"),
        "CPM_CACHE": ("set, even empty: a host's start looks at the other two as well", "not set"),
    },
    "Generation data groups": {
        "gdg_home": ("directory of the catalogues of groups on the transaction server and in the "
                     "database, see [generation-groups.md](generation-groups.md)", "`$HOME/gdg/`"),
        "HOME": ("used when `gdg_home` is not set", "no such groups"),
        "KOTS_TK_GYP_SERVER": ("the transaction server, `/.:/kots/gyp/SERVER`, of names that tell "
                               "none", "no such names"),
        "KPNINSTANCE": ("the database's instance, a part of the catalogue's path", "no such groups"),
        "KPNDBDFT": ("the database, a further part of it", "no further part"),
    },
    "Sort": {
        "TMPDIR": ("a folder that can be written to: that of work files, see "
                   "[sorting.md](sorting.md). Read at the first SORT or MERGE",
                   "the current folder"),
    },
    "Containers": {
        "__COBOL_KOTS_CONTAINER": ("not empty: the transaction monitor. No lock is taken, storage "
                                   "is freed with its run unit", "not set"),
        "__COBOL_MOH_CONTAINER": ("not empty: the application server; a number, at least 1, for "
                                  "`Proccom.moh`. Sets `kots` too", "not set"),
    },
    "Files": {
        "VFS_DEBUG_OPEN": ("not empty: each OPEN and CLOSE on standard error, see "
                           "[files.md](files.md)", "off"),
        "VFS_DEBUG_ERROR": ("not empty: each failed verb on standard error", "off"),
        "VFS_SYNC": ("begins with `1`: sequential output is with the system at the end of each verb; "
                     "`2`: every change is on the disk then. Read at each OPEN; see "
                     "[file-systems.md](file-systems.md)", "buffers are written when they are full"),
        "VFS_NO_FORCE_FS": ("not empty: a file without a file system of its own is bni, not uqe",
                            "off"),
    },
    "Failures": {
        "COBCORE": ("name of core files, see [../failures.md](../failures.md)", "`core%`"),
        "traceback_lines": ("set and not beginning with `0`: each frame with its source line, see "
                            "[../failures.md](../failures.md)", "frames alone"),
        "__ZORDEBUG": ("set: the build identification on standard error; not empty: each step of "
                       "the frame too", "not set"),
    },
}
OPTIONS_VARIABLE = "COBRTOPT"

HEAD = """# Settings

Everything is read from the environment, once, and never again in the process. The examples are what
[programs/settings.c](programs/settings.c) shows for a setting.

## COBRTOPT

A list of options, divided by commas or colons. Upper and lower case are the same; blanks, tabs and
newlines do not count, even inside a name; `NAME(VALUE)` is `NAME=VALUE`. Read when the run-time
starts. Later options overrule earlier ones. A token that is not understood gives a warning (171 to
174, 181, 182) and is left out.
"""

OPTION_EFFECTS = {
    "ACCEPT": "ACCEPT reads a line; off: over line ends until the item is full",
    "CHECK": "`PCB.flags` bit `PCB_CHECK`: generated code checks subscripts, lengths, data",
    "DEBUG": "`PCB.flags` bit `PCB_DEBUG`: generated code runs USE FOR DEBUGGING procedures",
    "FILEMODE": "nothing: known for the sake of other systems",
    "FILESYS": "default file system, `Proccom.filesys`",
    "TRAP": "signals, see below",
}
TRAPS = {
    "OPTION_TRAP": "handlers",
    "OPTION_TRAP_NEW": "core file",
    "OPTION_TRAP_DUMP": "the signal's former action at the end",
}


BCD_ORDER = """
They work on one word, in the order of the table: a later one overrules an earlier one.

"""


def option_rows():
    """(token, action, argument) of each row of the library's table."""
    text = read("wscobol", "run", "options.cpp")
    body = re.search(r"kOptions\[\] = \{(.*?)\n\};", text, re.S).group(1)
    for plain, action, rest, system, code in re.findall(
            r'\{"([^"]+)", Action::(\w+)([^}]*)\}|fileSystem\("([^"]+)", "(\w+)"\)', body):
        yield (system, "fileSystem", code) if system else (plain, action, rest.split(", ")[-1])


def options():
    groups = {}
    for token, action, argument in option_rows():
        name = token.partition("=")[0].removeprefix("NO")
        name = {"FS": "FILESYS", "FM": "FILEMODE"}.get(name, name)
        effect = {"set": "on", "clear": "off", "ignore": "(no effect)",
                  "fileSystem": f"`{argument}`", "trapOff": "no handlers",
                  "trap": {"kTrapNew": "handlers, core files",
                           "kTrapOn": "handlers, no core files"}.get(
                               argument, "handlers, core files, then the signal's former action")}
        groups.setdefault(name, {}).setdefault(effect[action], []).append(token)
    defaults = {"ACCEPT": "off", "CHECK": "on", "DEBUG": "on", "TRAP": "handlers, core files"}
    rows = []
    for name, effects in groups.items():
        for effect, tokens in effects.items():
            mark = " (default)" if defaults.get(name) == effect else ""
            rows.append((", ".join(f"`{token}`" for token in tokens), OPTION_EFFECTS[name],
                         effect + mark))
    rows.append(("`ERRCOUNT=n`", "the warning that ends the run; 0 to 2147483647, 0 for none",
                 "0 (default)"))
    rows.append(("`UPSI=nnnnnnnn`", "switches UPSI-0 to UPSI-7, eight of `0` and `1`",
                 "`00000000` (default)"))
    return table(("options", "what they set", "to"), rows)


def examples():
    """(settings, shown lines) in the order of the program."""
    found = []
    for part in read("docs", "guide", "programs", "settings.expected").split("== ")[1:]:
        head, _, body = part.partition("\n")
        found.append((head, "\n".join(line.rstrip() for line in body.split("\n") if line.strip())))
    return found


def example_block(rows):
    if not rows:
        return ""
    return "".join(f"\n    {head}\n{re.sub('^', '    ', body, flags=re.M)}\n" for head, body in rows)


def examples_of(variable):
    return [(head, body) for head, body in examples()
            if any(setting.partition("=")[0] == variable for setting in head.split())]


def bits():
    text = re.search(r"enum BcdOption : uint32_t \{(.*?)\};", read("wscobol", "decimal", "options.h"),
                     re.S).group(1)
    rows = re.findall(r"(\w+) = (0x0\w\w),\s+// (.*)", text)
    return table(("bit", "name", "effect when set"),
                 [("0x" + value[3:], f"`{name}`", effect) for name, value, effect in rows])


def code_pages():
    rows = re.findall(r'\{"(\w\w_\w\w)", \{0x(\w\w), 0x(\w\w)\}, "([^"]*)", "([^"]*)"',
                      read("wscobol", "national", "locale_table.cpp"))
    return table(("locale", "default", "also valid", "double-byte blank"),
                 [(f"{locale[:2].lower()}_{locale[3:]}", default, base,
                   "" if high + low == "2020" else f"{high} {low}")
                  for locale, high, low, base, default in rows])


def variables_read():
    """Every variable that the library and its modules ask the environment for."""
    found = set()
    for _, text in itertools.chain(library_files(), library_files("modules")):
        names = dict(re.findall(r'(k\w+)(?:\[\])? = "([A-Z_]+)"', text))
        for argument in re.findall(r"(?:settingOf|valueOf)\(([^()]+)\)", text):
            if argument.startswith('"'):
                found.add(argument.strip('"'))
            elif argument in names:
                found.add(names[argument])
    found |= set(re.findall(r'\{"(COBOL_BCD_\w+)"', read("wscobol", "decimal", "options.cpp")))
    for row in re.findall(r"\{StandardFile::\w+, [^{]*\{([^}]*)\}",
                          read("wscobol", "base", "standard_files.cpp")):
        found |= set(re.findall(r'"(\w+)"', row))
    return found


def page():
    described = {name for section in VARIABLES.values() for name in section} | {OPTIONS_VARIABLE}
    unknown = variables_read() - described
    if unknown:
        raise SystemExit("tools/guide/settings.py does not describe " + ", ".join(sorted(unknown)))
    text = HEAD + "\n" + options() + example_block(examples_of(OPTIONS_VARIABLE))
    for title, variables in VARIABLES.items():
        text += f"\n## {title}\n\n"
        text += table(("variable", "values", "default"),
                      [(f"`{name}`", values, default) for name, (values, default)
                       in variables.items()])
        if "COBOL_BCD_NOVALIDATE" in variables:
            text += BCD_ORDER + bits()
        if "EBCDIC_CODEPAGE" in variables:
            text += "\n" + code_pages()
        shown = []
        for name in list(variables) + (["LC_ALL"] if "LANG" in variables else []):
            shown += [row for row in examples_of(name) if row not in shown]
        text += example_block(row for row in shown if not row[0].startswith(OPTIONS_VARIABLE))
    return generated("settings.py", text)
