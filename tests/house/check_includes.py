#!/usr/bin/env python3
"""Holds the direction of includes between the folders of src/.

    check_includes.py ROOT

Each folder may include only itself and the folders named below it here, always with the folder's
name in front; the rooms of the exchange likewise. Prints one line a violation and exits 1 when
there is one.
"""
import pathlib
import re
import sys

QT_ALONE = set()
ALLOWED = {
    "ZvModelKit": QT_ALONE,
    "BreltWidgetToolKit": QT_ALONE,
    "ZvNetworkKit": {"ZvModelKit"},
    "ZvChartKit": {"ZvNetworkKit", "ZvModelKit"},
    "ZvWidgetKit": {"ZvChartKit", "ZvNetworkKit", "ZvModelKit", "BreltWidgetToolKit"},
    "client": {"ZvWidgetKit", "ZvChartKit", "ZvNetworkKit", "ZvModelKit", "BreltWidgetToolKit"},
    "exchange": set(),
}
# The exchange's own rooms, one below the other.
EXCHANGE_ROOMS = {
    "core": set(),
    "store": {"core"},
    "accounts": {"core", "store"},
    "service": {"core", "store", "accounts"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]')
GENERATED = re.compile(r"^(ui_\w+\.h|\w+\.moc|moc_\w+\.cpp)$")


def inner_violations(path, where, name):
    """Between the rooms of the exchange; its main program stands in none and may use all."""
    own, parts = path.parts[0], name.split("/")
    if len(path.parts) < 2 or parts[0] != "exchange":
        return
    if own not in EXCHANGE_ROOMS:
        yield f"{where}: a room of the exchange without a place in the order of includes"
    elif len(parts) > 2 and parts[1] != own and parts[1] not in EXCHANGE_ROOMS[own]:
        yield f"{where}: exchange/{own} may not include {name}"


def violations(root):
    source = root / "src"
    rooms = sorted(p.name for p in source.iterdir() if p.is_dir())
    for room in rooms:
        if room not in ALLOWED:
            yield f"src/{room}: a folder without a place in the order of includes"
            continue
        for path in sorted((source / room).rglob("*")):
            if path.suffix not in {".h", ".cpp"}:
                continue
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                bracket, name = match.groups()
                where = f"{path.relative_to(root)}:{number}"
                head = name.split("/")[0]
                if room == "exchange" and re.match(r"Q[A-Z]|Qt", head):
                    yield f"{where}: the exchange includes Qt: {name}"
                if room == "exchange":
                    yield from inner_violations(path.relative_to(source / room), where, name)
                if head in ALLOWED and head != room and head not in ALLOWED[room]:
                    yield f"{where}: {room} may not include {name}"
                if bracket == '"' and head not in ALLOWED and not GENERATED.match(name):
                    yield f"{where}: an include names its folder: {name}"


def main():
    found = list(violations(pathlib.Path(sys.argv[1])))
    print("\n".join(found) if found else "includes run downwards")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
