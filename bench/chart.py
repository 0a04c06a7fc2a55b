#!/usr/bin/python3
"""Draws the ratios of a run of the benchmarks.

  chart.py ROWS.json CHART.svg

A bar for each row: the time of the plug-in as a part of its peer's, with a thin line from the smallest to
the largest of its rounds. The same rows give the same file.
"""
import json
import re
import sys

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "vell-file",
                            "font.family": ["DejaVu Sans"], "font.size": 9})
from matplotlib import pyplot

WITHIN, BEYOND, UNBOUND = "#2f7d4f", "#b5482f", "#7a8694"  # the goal; without one


def colour(row):
    if "goal" not in row:
        return UNBOUND
    return WITHIN if row["ratio"] <= row["goal"] else BEYOND


def peer(row):
    found = re.match(r"peer: ([^;,(]+)", row["note"])
    return found[1].strip() if found else "the system alone"


def end_of(row):
    """Where the number stands: behind the bar, and not upon the line of the goal."""
    goal = row.get("goal", 0)
    return goal if row["ratio"] < goal < 1.7 * row["ratio"] else row["ratio"]


def draw(rows, target):
    figure, axes = pyplot.subplots(figsize=(9.6, 0.9 + 0.235 * len(rows)), layout="constrained")
    places = range(len(rows))
    axes.barh(places, [row["ratio"] for row in rows], height=0.62, color=[colour(row) for row in rows])
    for place, row in zip(places, rows):
        axes.annotate(f"{row['ratio']:.2f}", (max(row["high"], end_of(row)), place), (4, 0), va="center",
                      textcoords="offset points", color="#333333", size=8)
        axes.plot([row["low"], row["high"]], [place] * 2, color="#333333", linewidth=0.7)
        if "goal" in row:
            axes.plot([row["goal"]] * 2, [place - 0.42, place + 0.42], color="black", linewidth=1.2)
    axes.axvline(1, color="#999999", linewidth=0.8, zorder=0)
    axes.set_yticks(places, [f"{row['work']}, against {peer(row)}" for row in rows])
    axes.set_xscale("log")
    axes.xaxis.set_major_formatter(lambda value, _: f"{value:g}")
    axes.set_xlim(right=3.2 * max(1, *(row["ratio"] for row in rows)) ** 0.5)
    axes.set_xlabel("time as a multiple of the peer's, logarithmic; a black line is the goal", loc="right")
    axes.set_ylim(len(rows) - 0.4, -0.6)
    axes.spines[["top", "right"]].set_visible(False)
    figure.savefig(target, metadata={"Date": None, "Creator": None})


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as file:
        draw(json.load(file)["rows"], sys.argv[2])
