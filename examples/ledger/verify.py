"""Works out what LEDGER writes from its entries, and compares it with what it wrote:
verify.py ENTRIES REPORT REFUSALS."""

import re
import sys
from decimal import ROUND_HALF_UP, Decimal

RATES = {"BERN": Decimal("0.0025"), "KIEL": Decimal("0.0031"), "OSLO": Decimal("0.0017")}
CENT = Decimal("0.01")
BODY, FOOTING, TOP, BOTTOM = 14, 12, 1, 2


def posted(lines):
    """The accounts in the order of their WRITEs, and the refusals."""
    accounts, refusals, entries = {}, [], []
    for line in lines:
        line = line.ljust(45)
        number, date, code, amount, branch = line[:6], line[6:14], line[14], line[15:25], line[25:29]
        refuse = lambda reason: refusals.append((number, date, code, reason))
        if not (number + date).isdigit():
            refuse("ACCOUNT OR DATE")
        elif not re.fullmatch(r"\d{9}[+-]", amount):
            refuse("AMOUNT")
        else:
            entries.append((number, date, code, Decimal(amount[-1] + amount[:-1]) / 100, branch, line[29:]))
    for number, date, code, amount, branch, owner in sorted(entries, key=lambda entry: entry[:2]):
        refuse = lambda reason: refusals.append((number, date, code, reason))
        if code == "O":
            if number in accounts:
                refuse("OPEN ALREADY")
            else:
                accounts[number] = [branch, owner, amount]
        elif number not in accounts:
            refuse("NO SUCH ACCOUNT")
        elif code == "P":
            if abs(accounts[number][2] + amount) >= 10**7:
                refuse("BALANCE TOO LARGE")
            else:
                accounts[number][2] += amount
        elif code != "C":
            refuse("CODE")
        elif accounts[number][2] != 0:
            refuse("BALANCE NOT ZERO")
        else:
            del accounts[number]
    return accounts, refusals


class Pages:
    """A device that is moved down the logical pages."""

    def __init__(self):
        self.lines, self.count = {}, 1
        self.page = 0

    def write(self, text, advance):
        if advance == 0 or self.count + advance > BODY:
            self.page, self.count = self.page + 1, 1
        else:
            self.count += advance
        at = self.page * (TOP + BODY + BOTTOM) + TOP + self.count - 1
        self.lines[at] = text.rstrip()
        return self.count >= FOOTING

    def text(self):
        return "".join(self.lines.get(at, "") + "\n" for at in range(max(self.lines) + 1))


def report(accounts):
    pages, page, branch, branch_total, grand_total = Pages(), 0, None, Decimal(0), Decimal(0)

    def heading():
        nonlocal page
        page += 1
        pages.write(f"ACCOUNTS BY BRANCH{'':31}PAGE {page:3}", 1 if page == 1 else 0)
        pages.write("", 1)

    def total(text, name, amount):
        shown = ("$" + f"{abs(amount):,.2f}").rjust(13)
        pages.write(f"{text:8}{name:16}{shown} {'DB' if amount < 0 else ''}", 2)

    def end_branch():
        nonlocal branch_total, grand_total
        if branch is None:
            return
        total("BRANCH", branch, branch_total)
        grand_total += branch_total
        branch_total = Decimal(0)
        if pages.count >= FOOTING:
            heading()

    heading()
    # Equal branches stand in the order in which their accounts were opened.
    for number, (name, owner, balance) in sorted(accounts.items(), key=lambda item: item[1][0]):
        if name != branch:
            end_branch()
            branch = name
        interest = (balance * RATES.get(name, 0)).quantize(CENT, ROUND_HALF_UP)
        balance += interest
        branch_total += balance
        shown = f"{abs(balance):,.2f}".rjust(12) + ("CR" if balance < 0 else "  ")
        if pages.write(f"{number}  {owner:16}{shown}  {interest:11,.2f}", 1):
            heading()
    end_branch()
    total("ALL", "", grand_total)
    return pages.text()


entries, report_file, refusals_file = (open(name).read() for name in sys.argv[1:])
accounts, refusals = posted(entries.splitlines())
wanted = "".join(
    f"{number}{date}{code}{reason}\n"
    for number, date, code, reason in sorted(refusals, key=lambda r: (r[3], r[0] + r[1]))
)
for name, got, expected in (("report", report_file, report(accounts)), ("refusals", refusals_file, wanted)):
    if got != expected:
        for at, (mine, theirs) in enumerate(zip(expected.splitlines(), got.splitlines()), 1):
            if mine != theirs:
                print(f"{name} line {at}:\n  wanted {mine!r}\n  found  {theirs!r}")
        sys.exit(f"the {name} is not what the entries make")
