"""The page of messages, from the list of message helpers, the catalogue, and the calls."""
import re

from sources import generated, library_files, read, table

SEVERITIES = "IWSC"
TYPES = {"const char *": "text", "int32_t": "int32", "uint32_t": "uint32", "int64_t": "int64",
         "double": "double", "void *": "address"}

# Who issues a message, where its helper is called today, and what goes on behind it. A helper that
# is called and does not stand here shows the files that call it.
ISSUERS = {
    "sortStillActive": "the end of the run-time",
    "badSeparateSign": "conversions from ZndTS and ZndLS to a signed form; `_zorcBCD_Cpy_ZndTS` "
                       "and `_ZndLS` under `COBOL_BCD_SAFE` or bit 0x10",
    "externalLengthDiffers": "`_zorExtVarInit`",
    "callNoStorage": "`_zorDynLd` without ON EXCEPTION",
    "callEmptyName": "`_zorDynLd` without ON EXCEPTION",
    "callNotFound": "`_zorDynLd` without ON EXCEPTION",
    "syspunchNotOpen": "`_zorcDisplay` on SYSPUNCH",
    "badDisplayDevice": "`_zorcDisplay`",
    "badDisplayItem": "`_zorcDisplay`, behind the items ahead of the bad one",
    "presentValueRate": "PRESENT-VALUE",
    "ordArgument": "`_Tvq_ord_msg`",
    "integerDateRange": "DATE-OF-INTEGER, DAY-OF-INTEGER",
    "dateRange": "INTEGER-OF-DATE",
    "dateWindowRange": "YEAR-TO-YYYY, DAY-TO-YYYYDDD, DATE-TO-YYYYMMDD",
    "dayOfYearRange": "INTEGER-OF-DAY",
    "charArgument": "`_Tvq_char_msg`",
    "argumentIsNegative": "RANDOM, FACTORIAL, ANNUITY",
    "argumentAboveMaximum": "ACOS, ASIN, RANDOM, FACTORIAL in decimal128",
    "argumentIsZero": "REM, ANNUITY, `_Tvq_issue_Rem_ErrMsg`, `_Tvq_issue_Mod_ErrMsg`",
    "argumentNotAbove": "LOG, LOG10",
    "argumentBelowMinimum": "ACOS, ASIN, SQRT",
    "argumentNotInteger": "RANDOM",
    "unknownOption": "the start of the run-time",
    "badOptionValue": "the start of the run-time",
    "optionTextLength": "the start of the run-time",
    "optionTextCharacters": "the start of the run-time",
    "optionNotANumber": "the start of the run-time",
    "optionNumberRange": "the start of the run-time",
    "readError": "`_zorcAccept`, `_zorAcceptUnicode`, `_zorcStopLiteral`",
    "foreignEbcdicCodePage": "the choice of code pages",
    "unknownEbcdicCodePage": "the choice of code pages",
    "slidingCenturyWindow": "`_zorPgmInit`, first entry",
    "fixedCenturyWindow": "`_zorPgmInit`, first entry",
    "forcedEnd": "`ZORABEND`, `ZORABORT`; text of the closing line",
    "divisorIsZero": "DIV, DIVR and MOD, ahead of any store",
    "invalidDecimalData": "the decimal family, for each bad operand that is validated",
    "insufficientStorage": "whatever needs storage",
    "signalCaught": "the signal handler",
}
FREE_FOR_PROGRAMS = {"invalidSourceItem": "generated code: no function of the library"}

HEAD = """# Messages

Every message of the library, from `wscobol/base/message_list.def` and `catalog/en_US.msg`. A program
issues one by `_zorWriteERRmsg(number, flags, arguments...)` ([programs/messages.c](programs/messages.c));
how messages look and where they go is told in [../messages.md](../messages.md).

| column | meaning |
|---|---|
| number | `msgno` |
| flags | low byte: the text's variant, counted from 0; `no traceback` is `MESSAGE_NO_TRACEBACK` |
| severity | I goes on; W goes on and counts against ERRCOUNT; S and C end the run |
| arguments | in the order of the call, behind `flags`: texts are terminated, int64 takes 8 bytes |
| issued by | empty: nothing in the library of today; 61 and 223 tell of what cannot happen here, the others wait for their subsystem |

| flag | effect |
|---|---|
| `MESSAGE_SEVERE` 0x0800 | severity S whatever the catalogue says |
| `MESSAGE_INFORMATIONAL` 0x1000 | severity I, does not end the run |
| `MESSAGE_NO_TRACEBACK` 0x0400 | no call chain ahead of the closing line |
| `MESSAGE_RETURN_TEXT` 0x2000 | a buffer and its size come ahead of the message's own arguments; the text goes there, with no number, nothing is written, counted or ended |

A message behind which the run goes on leaves the statement's result as its line here or the header
of its function says. One that ends the run comes back when the run-time has ended already
([hosts.md](hosts.md)).
"""


def catalogue():
    """(set, message) to (severity digit, text)."""
    entries, number = {}, 0
    for line in read("catalog", "en_US.msg").splitlines():
        if match := re.match(r"\$set (\d+)", line):
            number = int(match.group(1))
        elif match := re.match(r'(\d+) "(\d) (.*)"$', line):
            entries[number, int(match.group(1))] = int(match.group(2)), match.group(3)
    return entries


def groups():
    """(comment, [(helper, number, flags, types)]) for each paragraph of the list."""
    for paragraph in read("wscobol", "base", "message_list.def").split("\n\n"):
        helpers = [(name, int(number), flags.strip(), [t.strip() for t in types.split(",") if t.strip()])
                   for name, number, flags, types in re.findall(
                       r"ZOR_MESSAGE\((\w+), (\d+), ([^,)]+),?([^)]*)\)", paragraph)]
        comment = " ".join(re.findall(r"^// ?(.*)", paragraph, re.M))
        if helpers:
            yield comment, helpers


def callers():
    """Helper to the files that call it."""
    found = {}
    for path, text in library_files():
        for name in re.findall(r"message::(\w+)", text):
            found.setdefault(name, set()).add(path)
    return found


def issuer(name, calls):
    if name in FREE_FOR_PROGRAMS and name not in calls:
        return FREE_FOR_PROGRAMS[name]
    if name not in calls:
        return ""
    return ISSUERS.get(name) or ", ".join(f"`{path}`" for path in sorted(calls[name]))


def row(helper, entries, calls):
    name, number, flags, types = helper
    parts = [part.strip() for part in flags.split("|")]
    variant = sum(int(part, 0) for part in parts if part[0].isdigit())
    digit, text = entries[number, variant + 1]
    severity = "S" if "MESSAGE_SEVERE" in parts else SEVERITIES[digit]
    shown = ([str(variant)] if variant else []) + (["no traceback"] if "MESSAGE_NO_TRACEBACK" in parts
                                                   else [])
    arguments = ", ".join(TYPES.get(kind, kind) for kind in types)
    return number, ", ".join(shown), severity, text, arguments, issuer(name, calls)


def page():
    entries, calls = catalogue(), callers()
    text = HEAD
    for comment, helpers in groups():
        title, _, rest = comment.partition(":" if ":" in comment.split(".")[0] else ".")
        text += f"\n## {title.strip()}\n\n"
        if rest.strip():
            text += "Arguments: " + rest.strip() + "\n\n"
        text += table(("number", "flags", "severity", "text", "arguments", "issued by"),
                      [row(helper, entries, calls) for helper in helpers])
    return generated("messages.py", text)
