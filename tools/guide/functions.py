"""The index of functions, from the headers: the compiler expands the lists that declare families."""
import os
import re
import subprocess
import textwrap

from sources import INCLUDE, generated, read, table


class Forms(dict):
    """A form that has no words of its own is told by its name."""

    def __missing__(self, name):
        return name


FORMS = Forms({
    "Pckd": "packed", "Znd": "zoned", "ZndTO": "zoned, trailing sign",
    "ZndLO": "zoned, leading sign", "ZndTS": "zoned, trailing separate sign",
    "ZndLS": "zoned, leading separate sign", "ZndUS": "zoned, unsigned",
    "Int1": "int8", "Int2": "int16", "Int4": "int32", "Int8": "int64",
    "Uns1": "uint8", "Uns2": "uint16", "Uns4": "uint32", "Uns8": "uint64",
    "UInt4": "uint32", "UInt8": "uint64", "Len8": "a length, rounded up",
    "SFlt": "binary32", "LFlt": "binary64", "EFlt": "binary128",
    "BFlt32": "binary32", "BFlt64": "binary64", "BFlt128": "binary128",
    "DFlt": "decimal128", "DFlt32": "decimal32", "DFlt64": "decimal64", "DFlt128": "decimal128"})
RELATIONS = {"EQU": "equal to", "NEQ": "not equal to", "GRT": "greater than", "GEQ": "at least",
             "LES": "less than", "LEQ": "at most"}
SHIFTS = {"Left": "times 10 to the power shift",
          "Right": "divided by 10 to the power shift, cut",
          "RightRnd": "divided by 10 to the power shift, rounded"}

WORDS_OF_A_LABEL = 4  # at most, ahead of a colon; more words are a clause of their own

# The decimal names say what they do: pattern, purpose.
DECIMAL = [
    (r"(ADD|SUB)_(\w+?)_Int([48])",
     lambda m: f"{FORMS[m[2]]}: {'adds' if m[1] == 'ADD' else 'subtracts'} an "
               f"int{8 * int(m[3])} in place"),
    (r"ADD_(\w+)", lambda m: f"{FORMS[m[1]]}: op1 + op2"),
    (r"SUB_(\w+)", lambda m: f"{FORMS[m[1]]}: op1 - op2"),
    (r"MPY_(\w+)", lambda m: f"{FORMS[m[1]]}: op1 * op2"),
    (r"DIVR_(\w+)", lambda m: f"{FORMS[m[1]]}: quotient and remainder"),
    (r"DIV_(\w+)", lambda m: f"{FORMS[m[1]]}: quotient, cut"),
    (r"MOD_(\w+)", lambda m: f"{FORMS[m[1]]}: remainder"),
    (r"(EQU|NEQ|GRT|GEQ|LES|LEQ)_(\w+)",
     lambda m: f"{FORMS[m[2]]}: 1 when op1 is {RELATIONS[m[1]]} op2"),
    (r"NOT_(\w+)", lambda m: f"{FORMS[m[1]]}: 1 when the value is zero"),
    (r"Cpy_(\w+)", lambda m: f"{FORMS[m[1]]}: copy to another count of digits"),
    (r"ABS_(\w+)", lambda m: f"{FORMS[m[1]]}: magnitude"),
    (r"NEG_(\w+)", lambda m: f"{FORMS[m[1]]}: the value with the other sign"),
    (r"SHFD_(\w+?)_(Left|RightRnd|Right)", lambda m: f"{FORMS[m[1]]}: {SHIFTS[m[2]]}"),
    (r"CONV_Pckd_To_DFlt", lambda m: "packed to decimal32"),
    (r"CONV_(\w+?)_To_(\w+?)(Rnd)?",
     lambda m: f"{FORMS[m[1]]} to {FORMS[m[2]]}{', rounded' if m[3] else ''}"),
]


def expanded(header):
    """The header's own lines after the compiler's preprocessor."""
    result = subprocess.run(["gcc", "-m32", "-std=c11", "-E", "-I", INCLUDE,
                             os.path.join(INCLUDE, header)],
                            check=True, capture_output=True, text=True)
    own, lines = False, []
    for line in result.stdout.splitlines():
        if match := re.match(r'# \d+ "(.*)"', line):
            own = os.path.basename(match.group(1)) == header
        elif own:
            lines.append(line)
    return "\n".join(lines)


def exported(header):
    text = re.sub(r"\s+", " ", expanded(header))
    for declaration in re.findall(r'__attribute__\(\(visibility\("default"\)\)\) ([^;]*);', text):
        function = re.match(r".*?(\w+)\(", declaration)
        yield function.group(1) if function else re.findall(r"\w+", declaration)[-1]


def decimal_purpose(name):
    for pattern, purpose in DECIMAL:
        if match := re.fullmatch("_zorcBCD_" + pattern, name):
            return purpose(match)
    return None


def comment_purpose(name, header):
    """The first clause of the comment that stands above a declaration, or above the first of the
    declarations that it is one of."""
    text = read("include", header)
    at = re.search(rf"\b{name}\b\s*[(;]", text).start()
    comment = re.findall(r"/\*(.*?)\*/", text[:at], re.S)[-1]
    comment = re.sub(r"\s*\n \* ?", " ", comment).strip()
    clause = re.match(r".*?[.;](?=\s|$)", comment).group(0).rstrip(".;")
    head, _, rest = clause.partition(": ")
    return head if rest and len(head.split()) > WORDS_OF_A_LABEL else clause


def purposes():
    for header in sorted(os.listdir(INCLUDE)):
        if header == "lvd4.h" or not header.endswith(".h"):
            continue
        for name in exported(header):
            yield name, header, decimal_purpose(name) or comment_purpose(name, header)


def page():
    rows = sorted(purposes(), key=lambda row: (row[0].lstrip("_").lower(), row[0]))
    names = re.sub(r"/\*.*?\*/", "", read("wscobol", "exports.map"), flags=re.S)
    wanted = set(re.findall(r"\b([A-Za-z_]\w*);", re.sub(r"local:[^;]*;", "", names)))
    missing = wanted - {name for name, _, _ in rows}
    if missing:
        raise SystemExit("exported, but in no header: " + ", ".join(sorted(missing)))
    text = textwrap.dedent(f"""\
        # Index of functions

        All {len(rows)} exported names, by their letters without the underscores ahead; `lvd4.h`
        declares them all. The header named beside each tells its arguments and errors.

        """)
    text += table(("name", "header", "purpose"),
                  [(f"`{name}`", f"[{header}](../../include/{header})", purpose)
                   for name, header, purpose in rows])
    return generated("functions.py", text)
