#!/usr/bin/env python3
"""Runs the benchmarks in rounds, each with its peers; bench/run tells how it is called.

A round times the native programs of a group, then starts the program of the benchmarks once, which
times the functions and what it compares them with in its own process. A row's ratio is the median of
its rounds.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DATA = ROOT / "build" / "bench"
PROGRAM = ROOT / "build" / "windows" / "bin" / "vell_bench.exe"


@dataclass(frozen=True)
class Peer:
    """A native command, for bash, in the folder of samples. The time of `start` is taken off: it does
    nothing, as often as the command is started. `before` runs first and is not timed."""
    variable: str
    command: str
    start: str = "true"
    before: str = "true"


def thumbnail(row, size):
    return Peer(f"VELL_VIPS_{row}_{size}",
                f"vipsthumbnail -s {size} -o $PWD/thumbnails/%s.jpg "
                f"{row}.{'jpg' if row in ('jpg', 'pro') else 'png'}",
                "vipsthumbnail -s 80 -o $PWD/thumbnails/%s.jpg dot.jpg")


def archivers(tree):
    name = f"VELL_{tree.upper()}"
    return [Peer(f"{name}_ZIP", f"rm -f {tree}.zip.zip; zip -9 -qr {tree}.zip.zip {tree}"),
            Peer(f"{name}_7Z", f"rm -f {tree}.7z.zip; 7z a -tzip -mx5 -mmt1 {tree}.7z.zip {tree}",
                 "7z")]


PEERS = {
    "contents": [],
    "dispatch": [],
    "files": [Peer("VELL_SHA1SUM", "sha1sum text.txt"), Peer("VELL_MD5SUM", "md5sum text.txt")],
    "metadata": [Peer("VELL_EXIV2", "exiv2 -PE photographs/*.j*", "exiv2 -PE photographs/ExifTool.jps"),
                 Peer("VELL_EXIFTOOL", "exiftool -n -j -G1 photographs/*.j*",
                      "exiftool -n -j -G1 photographs/ExifTool.jps")],
    "movies": [Peer("VELL_MEDIAINFO", "mediainfo movies/*", "mediainfo --Version")],
    "pdf": [Peer("VELL_PDFINFO", "for file in documents/*.pdf; do pdfinfo $file; done",
                 "for file in documents/*.pdf; do pdfinfo -v; done"),
            Peer("VELL_PDFTOTEXT", "pdftotext -enc UTF-8 pages.pdf -", "pdftotext -v")],
    "pictures": [*(thumbnail(*row) for row in (("jpg", 80), ("jpg", 256), ("jpg", 1024), ("pro", 256),
                                               ("png", 256), ("big", 256), ("lac", 1024))),
                 Peer("VELL_VIPS_ALL",
                      "vipsthumbnail -s 256 -o $PWD/thumbnails/%s.jpg photographs/* more_photographs/*",
                      "vipsthumbnail -s 80 -o $PWD/thumbnails/%s.jpg dot.jpg")],
    "substitute": [Peer("VELL_SED_HITS", "rm -f sed.txt; sed 's/Invoice/Rechnung/g' text.txt >sed.txt"),
                   Peer("VELL_SED_NONE",
                        "rm -f sed.txt; sed 's/Zebra crossing/Rechnung/g' text.txt >sed.txt"),
                   Peer("VELL_SED_CASE",
                        "rm -f sed.txt; sed 's/iNVOICE/Rechnung/gI' text.txt >sed.txt")],
    "zip": [*archivers("mixed"), *archivers("texts"), *archivers("large"), *archivers("pictures"),
            Peer("VELL_UNZIP", "unzip -q mixed.zip.zip -d $(<made/last)",
                 before="mktemp -d made/XXXXXX >made/last"),
            Peer("VELL_UNZIP_OVER", "unzip -qo mixed.zip.zip -d $(<made/last)"),
            Peer("VELL_UNZIP_ONE", "unzip -q one.zip -d made/one", before="rm -rf made/one")],
}

UNTIMED = 1  # nanoseconds, of a peer that has taken no longer than its start alone


def nanoseconds_of(command):
    start = time.perf_counter_ns()
    subprocess.run(["bash", "-c", command], cwd=DATA, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return time.perf_counter_ns() - start


def make_round(group, starts):
    """The rows of one round. `starts` has the shortest time of each program's start so far."""
    environment = {**os.environ, "VELL_BENCH_DATA": "Z:" + str(DATA).replace("/", "\\")}
    for start in {peer.start for peer in PEERS[group]}:
        starts[start] = min(nanoseconds_of(start), starts.get(start, sys.maxsize))
    for peer in PEERS[group]:
        nanoseconds_of(peer.before)
        took = nanoseconds_of(peer.command) - starts[peer.start]
        environment[peer.variable] = str(max(took, UNTIMED))
    done = subprocess.run([ROOT / "scripts" / "wine", PROGRAM, group], env=environment,
                          stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit(f"The benchmarks of {group} ended with exit code {done.returncode}")
    return json.loads(done.stdout)


def summary(rounds):
    """One row of the same rows of all rounds, without those whose peer could not be timed."""
    rounds = [row for row in rounds if row["peer"] > UNTIMED] or rounds
    ratios = [row["ratio"] for row in rounds]
    return {**rounds[0], "note": rounds[-1]["note"], "low": min(ratios), "high": max(ratios),
            **{part: statistics.median(row[part] for row in rounds)
               for part in ("ours", "peer", "ratio")}}


def run_group(group, count):
    """All of its rounds. What they make in the folder `made` goes after the last one: where files have
    just been deleted, ext4 looks long for a place for new ones."""
    rows = {}
    starts = {}
    shutil.rmtree(DATA / "made", ignore_errors=True)
    (DATA / "made").mkdir()
    for number in range(count):
        print(f"\r{group}: round {number + 1} of {count} ", end="", file=sys.stderr, flush=True)
        for row in make_round(group, starts):
            rows.setdefault((row["work"], row["note"].split(";")[0]), []).append(row)
    shutil.rmtree(DATA / "made")
    print("\r\033[K", end="", file=sys.stderr, flush=True)
    return [summary(rounds) for rounds in rows.values()]


def is_missed(row):
    return "goal" in row and row["ratio"] > row["goal"]


def time_text(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.0f} ns"


def print_table(rows):
    print("| work | ours | peer | ratio | from, to | goal | note |\n|---|---|---|---|---|---|---|")
    for row in rows:
        goal = f"{row['goal']:g}{' MISSED' if is_missed(row) else ''}" if "goal" in row else "-"
        print(f"| {row['work']} | {time_text(row['ours'])} | {time_text(row['peer'])} "
              f"| {row['ratio']:.2f} | {row['low']:.2f}, {row['high']:.2f} | {goal} | {row['note']} |")


def samples_for(group):
    done = subprocess.run([ROOT / "bench" / "samples", group], stdout=subprocess.PIPE, text=True,
                          check=False)
    if done.returncode != 0:
        print(f"Without {group}: {done.stdout.strip()}", file=sys.stderr)
    return done.returncode == 0


def main():
    parser = argparse.ArgumentParser(prog="bench/run")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--json", type=Path, metavar="FILE")
    parser.add_argument("--chart", type=Path, metavar="FILE.svg")
    parser.add_argument("groups", nargs="*", metavar="GROUP")
    options = parser.parse_args()
    for group in options.groups:
        if group not in PEERS:
            parser.error(f"there is no group {group}, but {', '.join(PEERS)}")
    rows = []
    started = time.monotonic()
    for group in options.groups or PEERS:
        if samples_for(group):
            rows += run_group(group, options.rounds)
    print_table(rows)
    kept = options.json or DATA / "rows.json"
    kept.write_text(json.dumps({"rounds": options.rounds, "rows": rows}, indent=1) + "\n",
                    encoding="utf-8")
    if options.chart:
        subprocess.run([ROOT / "bench" / "chart.py", kept, options.chart], check=True)
    missed = [row["work"] for row in rows if is_missed(row)]
    print(f"\n{len(rows)} rows in {time.monotonic() - started:.0f} s; "
          + ("missed: " + "; ".join(missed) if missed else "all within their goals"))
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
