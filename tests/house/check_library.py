#!/usr/bin/env python3
"""Holds what the widget library promises of its sources as a whole.

    check_library.py ROOT

- Each source has the paths of the exchange, and each form is named as its class in file and root.
- Nothing is written to disk, nothing runs beside the GUI thread, and nothing goes to the network.
- The current collection is set by the signal pool alone.

Prints one line a violation and exits 1 when there is one.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as xml

PATHS = '#include "ZvNetworkKit/serverpaths.h"'
# Reading a resource is all that a QFile is good for here.
STRANGERS = re.compile(
    r"\b(QSettings|QSaveFile|QTemporaryFile|QDataStream|WriteOnly|ReadWrite|Append"
    r"|QThread\w*|QRunnable|QtConcurrent|QMutex\w*|QReadWriteLock|QSemaphore"
    r"|std::(?:thread|mutex|async|ofstream|fstream)"
    r"|QNetwork\w+|QTcpSocket|QUdpSocket)\b"
)
POOL = "zvwidgetsignalslotpool.cpp"


def source_violations(path, where):
    text = path.read_text(encoding="utf-8")
    if path.suffix == ".cpp" and PATHS not in text:
        yield f"{where}: without the paths of the exchange"
    for number, line in enumerate(text.splitlines(), 1):
        code = line.split("//")[0]
        for name in STRANGERS.findall(code):
            yield f"{where}:{number}: {name} is none of the library's business"
        if "setGlobalCollectionID" in code and path.name != POOL:
            yield f"{where}:{number}: the current collection is the pool's to set"


def form_violations(path, where):
    root = xml.parse(path).getroot()
    name = root.findtext("class")
    if root.find("widget").get("name") != name:
        yield f"{where}: the root of the form is not named {name}, as its class is"
    if path.stem != name.lower():
        yield f"{where}: the file is not named as its class, {name}"


def violations(root):
    library = root / "src" / "ZvWidgetKit"
    checks = {".cpp": source_violations, ".h": source_violations, ".ui": form_violations}
    for path in sorted(library.rglob("*")):
        if path.suffix in checks:
            yield from checks[path.suffix](path, path.relative_to(root))


def main():
    found = list(violations(pathlib.Path(sys.argv[1])))
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
