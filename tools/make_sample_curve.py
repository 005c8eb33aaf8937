#!/usr/bin/env python3
"""Writes examples/data/sample_curve.csv, the demo's measured-looking curve.

A slowly drifting baseline, two peaks of different height and width, one valley, and
deterministic noise from a fixed linear congruential generator, so the file is the same
on every run. Run it from the repository root; the committed file is its output.
"""
import math

def noise():
    state = 20261123
    while True:
        state = (1103515245 * state + 12345) % 2**31
        yield state / 2**31 - 0.5

def main():
    rnd = noise()
    rows = ["x,y"]
    for i in range(601):
        x = i * 0.25
        baseline = 20.0 + 0.04 * x
        peak1 = 35.0 * math.exp(-((x - 32.0) / 5.0) ** 2)
        peak2 = 60.0 * math.exp(-((x - 104.0) / 8.0) ** 2)
        valley = -14.0 * math.exp(-((x - 68.0) / 7.0) ** 2)
        y = baseline + peak1 + peak2 + valley + 1.6 * next(rnd)
        rows.append(f"{x:.2f},{y:.4f}")
    with open("examples/data/sample_curve.csv", "w") as f:
        f.write("\n".join(rows) + "\n")

if __name__ == "__main__":
    main()
