"""Prints chosen fields of a JSON list as columns, a line an element.

    kestrel classify diary.json | python3 columns.py date predictedState confidence reasons

Numbers are rounded to two decimals, lists joined by "; ", and an absent field is a hyphen.
"""

import json
import signal
import sys


def text(value):
    if value is None:
        return "-"
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, float):
        return str(round(value, 2))
    if isinstance(value, list):
        return "; ".join(map(text, value)) or "-"
    return str(value)


def main(fields):
    rows = [[text(element.get(field)) for field in fields] for element in json.load(sys.stdin)]
    widths = [max(map(len, column)) for column in zip(*rows)]
    for row in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


if __name__ == "__main__":
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # `| head` has had enough: end quietly
    main(sys.argv[1:])
