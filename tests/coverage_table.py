#!/usr/bin/env python3
"""Prints what a file of lcov tells of the lines of src: a table by room, and the lines of parsers that
nothing reached.

    tests/coverage_table.py FILE ROOT
"""
import pathlib
import sys
from collections import defaultdict

PARSERS = ("src/formats/", "src/metadata/", "src/archive/", "src/documents/", "src/movies/",
           "src/pictures/")


def lines_of(lcov, root):
    """Of each file of src the lines that have code, and how often each ran."""
    files = defaultdict(dict)
    name = None
    for line in lcov.read_text(encoding="utf-8").splitlines():
        kind, _, rest = line.partition(":")
        if kind == "SF":
            path = pathlib.Path(rest)
            name = str(path.relative_to(root)) if path.is_relative_to(root / "src") else None
        elif kind == "DA" and name:
            number, count = map(int, rest.split(",")[:2])
            files[name][number] = max(count, files[name].get(number, 0))
    return files


def follows_a_try(source, number):
    """Whether the line stands behind a statement with VELL_TRY, which may return in the middle of it: the
    compiler has no counter for that line then, and tells 0."""
    for previous in range(number - 1, max(number - 6, 0), -1):
        text = source[previous - 1].rstrip()
        if "VELL_TRY(" in text:
            return True
        if previous < number - 1 and text.endswith((";", "{", "}")):
            return False
    return False


def without_uncounted(files, root):
    for name, lines in files.items():
        source = (root / name).read_text(encoding="utf-8").splitlines()
        yield name, {number: count for number, count in lines.items()
                     if count > 0 or not follows_a_try(source, number)}


def ranges(numbers):
    """[1, 2, 3, 7] as "1-3 7"."""
    texts = []
    for number in numbers:
        if texts and number == texts[-1][1] + 1:
            texts[-1][1] = number
        else:
            texts.append([number, number])
    return " ".join(str(a) if a == b else f"{a}-{b}" for a, b in texts)


def main():
    root = pathlib.Path(sys.argv[2]).resolve()
    files = dict(without_uncounted(lines_of(pathlib.Path(sys.argv[1]), root), root))
    rooms = defaultdict(lambda: [0, 0])
    for name, lines in files.items():
        room = rooms["/".join(name.split("/")[:2])]
        room[0] += len(lines)
        room[1] += sum(count > 0 for count in lines.values())
    print(f"{'room':<16} {'lines':>8} {'reached':>8} {'percent':>8}")
    for room, (count, reached) in sorted(rooms.items()):
        print(f"{room:<16} {count:>8} {reached:>8} {100 * reached / count:>7.1f}%")
    print("\nLines of parsers that no test reached:")
    for name, lines in sorted(files.items()):
        missed = [number for number, count in sorted(lines.items()) if count == 0]
        if missed and name.startswith(PARSERS):
            print(f"  {name}: {ranges(missed)}")


if __name__ == "__main__":
    main()
