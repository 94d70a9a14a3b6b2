#!/usr/bin/env python3
"""Holds what the widget library shows to the outside: its nine exported classes and nothing else.

    check_exports.py LIBRARY [PRESENT_CLASS...]

Prints each dynamic symbol that belongs to none of the classes, and each class named after the
library that shows no symbol at all; exits 1 when there is one.
"""
import re
import subprocess
import sys

EXPORTED = [
    "LoginDialog",
    "Market_Widget",
    "MoneyOverviewDialog",
    "StatusBar",
    "TitleBar",
    "Transaction_Widget",
    "ZvPlatformSelectDialog",
    "ZvSplashScreen",
    "ZvWidgetSignalSLotPool",
]
CLASS = "|".join(EXPORTED)
OWN = re.compile(
    rf"^(?:(?:vtable|typeinfo|typeinfo name|VTT) for (?:{CLASS})$"
    rf"|(?:(?:non-virtual|virtual|covariant return) thunk to )?(?P<name>{CLASS})::)"
)


def symbols(library):
    lines = subprocess.run(
        ["nm", "-D", "--defined-only", "-C", library], check=True, capture_output=True, text=True
    ).stdout.splitlines()
    for line in lines:
        match = re.match(r"^[0-9a-f]* *(\S) (.*)$", line)
        yield match.group(2) if match else line


def main():
    library, present = sys.argv[1], sys.argv[2:]
    shown = list(symbols(library))
    strangers = [s for s in shown if not OWN.match(s)]
    for symbol in strangers:
        print(f"exported, but of none of the {len(EXPORTED)} classes: {symbol}")
    missing = [c for c in present if not any(s.startswith(f"{c}::") for s in shown)]
    for name in missing:
        print(f"not exported: {name}")
    if strangers or missing:
        return 1
    print(f"{len(shown)} symbols, all of exported classes")
    return 0


if __name__ == "__main__":
    sys.exit(main())
