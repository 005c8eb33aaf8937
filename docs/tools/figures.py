#!/usr/bin/env python3
"""The figures of the manual, in docs/figures/.

One figure per analysis of the command-line tool, drawn by the tool itself on the sample curve:
    qal COMMAND examples/data/sample_curve.csv [OPTIONS] --plot docs/figures/COMMAND.png
(the options of each in examples.COMMANDS)
(run as `python -m qallib` with this interpreter, from the repository root), and
extremum-windows.png, drawn here with matplotlib from the library's own results: the windows of
the extremum search on a small curve, the three means of the winning window and its parabola.

Run alone from the repository root: build/python-venv/bin/python docs/tools/figures.py
"""

from __future__ import annotations

import pathlib
import subprocess
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
import qallib  # noqa: E402

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import examples  # noqa: E402  the small curve, its window and the mean points

SAMPLE = "examples/data/sample_curve.csv"
COMMANDS = examples.COMMANDS
SAVE = {"dpi": 100, "metadata": {"Software": None}}


def cli_figure(command: str, target: pathlib.Path, repo: pathlib.Path) -> None:
    options = COMMANDS[command][0]
    run = subprocess.run([sys.executable, "-m", "qallib", command, SAMPLE, *options, "--plot", str(target)],
                         cwd=repo, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    if run.returncode != 0 or not target.is_file():
        raise RuntimeError(f"qal {command} --plot {target.name} failed ({run.returncode}): {run.stderr.strip()}")


def parabola(points, t):
    """The parabola through the three mean points, in the Lagrange form the search uses."""
    (x1, y1), (x2, y2), (x3, y3) = points
    w1 = y1 / ((x1 - x3) * (x1 - x2))
    w2 = y2 / ((x2 - x3) * (x2 - x1))
    w3 = y3 / ((x3 - x2) * (x3 - x1))
    return w1 * (t - x3) * (t - x2) + w2 * (t - x3) * (t - x1) + w3 * (t - x2) * (t - x1)


def windows_figure(target: pathlib.Path) -> None:
    y = np.array(examples.CURVE_Y)
    x = np.arange(float(len(y)))
    w, third = examples.WINDOW, examples.WINDOW // 3
    outcomes = []
    for start in range(len(y) - w):
        result, outcome = examples.window_outcome(x[start:start + w], y[start:start + w])
        has_vertex = not (result.x == 0.0 and result.y == 0.0)
        outcomes.append((start, outcome, result if has_vertex else None))
    best = qallib.get_range_extremum(x, y, w, qallib.EXTREMUM_MAX, True, examples.HEIGHT)
    start = next(s for s, o, r in outcomes if o == "accepted" and r.y == best.y)
    run = slice(start, start + w)
    points = examples.mean_points(x[run].tolist(), y[run].tolist())
    top = qallib.get_range_extremum(x, y, w, qallib.EXTREMUM_MAX, False, examples.HEIGHT)

    fig, (ax, bars) = plt.subplots(2, 1, figsize=(8, 4.5), sharex=True, gridspec_kw={"height_ratios": [3, 2]})
    shades = ["#dbe9f6", "#f6e3c8", "#dbe9f6"]
    for k in range(3):
        lo, hi = start + k * third - 0.5, start + (k + 1) * third - 0.5
        ax.axvspan(lo, hi, color=shades[k], zorder=0, label=f"thirds of window {start}..{start + w - 1}" if k == 0 else None)
        ax.hlines(points[k][1], lo, hi, color="#1f4e79", linewidth=1.5, zorder=2)
    ax.plot(x, y, "-o", color="#555555", markersize=3.5, linewidth=1, label="samples", zorder=3)
    t = np.linspace(start - 0.5, start + w - 0.5, 200)
    ax.plot(t, parabola(points, t), "--", color="#c0392b", linewidth=1.3, label="parabola through the means", zorder=4)
    ax.plot([p[0] for p in points], [p[1] for p in points], "D", color="#1f4e79", markersize=7,
            label="means of the thirds", zorder=5)
    ax.plot(best.x, best.y, "*", color="#c0392b", markersize=12, label="vertex (useVertex 1)", zorder=6)
    ax.plot(top.x, top.y, "o", markerfacecolor="none", markeredgecolor="black", markersize=13,
            markeredgewidth=1.5, label="highest sample (useVertex 0)", zorder=6)
    ax.set_ylabel("y")
    ax.set_ylim(0.4, 6.3)
    ax.legend(loc="upper right", fontsize=8, framealpha=0.95)
    ax.set_title(f"Extremum search, windows of {w} samples, height 5 %", fontsize=10)

    colours = {"accepted": "#2e8b57", "refused": "#e67e22", "no vertex": "#b0b0b0"}
    seen = set()
    for s, outcome, result in outcomes:
        key = "accepted" if outcome == "accepted" else ("refused" if result is not None else "no vertex")
        label = {"accepted": "accepted", "refused": "vertex refused",
                 "no vertex": "no vertex (slopes)"}[key]
        bars.hlines(s, s - 0.4, s + w - 0.6, color=colours[key], linewidth=3,
                    label=label if key not in seen else None)
        seen.add(key)
        if result is not None and s - 0.5 <= result.x <= s + w - 0.5:
            bars.plot(result.x, s, "|", color="black", markersize=7,
                      label="vertex" if "vertex" not in seen else None)
            seen.add("vertex")
    bars.set_ylabel("window start")
    bars.set_xlabel("x (sample index)")
    bars.set_ylim(len(outcomes) - 0.5 + 1, -1.5)
    bars.set_xlim(-0.8, len(y) - 0.2)
    bars.legend(loc="upper right", fontsize=8, framealpha=0.95, ncol=2)
    fig.tight_layout()
    fig.savefig(target, **SAVE)
    plt.close(fig)


def build(out_dir: pathlib.Path, repo: pathlib.Path) -> list[pathlib.Path]:
    folder = out_dir / "figures"
    folder.mkdir(parents=True, exist_ok=True)
    written = []
    for command in COMMANDS:
        target = folder / f"{command}.png"
        cli_figure(command, target, repo)
        written.append(target)
    target = folder / "extremum-windows.png"
    windows_figure(target)
    written.append(target)
    return written


if __name__ == "__main__":
    repo_root = pathlib.Path(__file__).resolve().parents[2]
    only = sys.argv[1:]
    if only:  # figures.py NAME ...: just those (extremum-windows, or CLI commands)
        folder = repo_root / "docs" / "figures"
        folder.mkdir(parents=True, exist_ok=True)
        for name in only:
            if name == "extremum-windows":
                windows_figure(folder / "extremum-windows.png")
            else:
                cli_figure(name, folder / f"{name}.png", repo_root)
            print(f"docs/figures/{name}.png")
    else:
        for path in build(repo_root / "docs", repo_root):
            print(path.relative_to(repo_root))
