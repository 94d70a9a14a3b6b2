#!/usr/bin/env python3
"""Holds fault points and the checks that have to find them together.

    check_faults.py ROOT

Each fault point of the product is in the list of a check, and each name of such a list is a fault
point. The simulation finds those of the exchange's core by itself.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1]).resolve()
POINT = re.compile(r'\b(?:fault|zvFault)\("([a-z-]+)"\)')
LIST = re.compile(r'proof\.bugs = \[\] \{\s*return std::vector<std::string>\{(.*?)\};', re.S)
NAME = re.compile(r'"([a-z-]+)"')
FOUND_BY_ITSELF = ROOT / "src/exchange/core"


def names(pattern, files):
    return {name: path for path in files for name in pattern.findall(path.read_text())}


def main():
    points = names(POINT, sorted((ROOT / "src").rglob("*.cpp")))
    listed = {}
    for path in sorted((ROOT / "tests").rglob("main_*.cpp")):
        for body in LIST.findall(path.read_text()):
            listed.update({name: path for name in NAME.findall(body)})
    faults = [f"{path.relative_to(ROOT)}: no check is there to find \"{name}\""
              for name, path in points.items()
              if name not in listed and FOUND_BY_ITSELF not in path.parents]
    faults += [f"{path.relative_to(ROOT)}: \"{name}\" is no fault point"
               for name, path in listed.items() if name not in points]
    if not points or not listed:
        faults.append("no fault points, or no lists: has their form changed?")
    print("\n".join(faults) or f"{len(points)} fault points, {len(listed)} of them in lists")
    return 1 if faults else 0


sys.exit(main())
