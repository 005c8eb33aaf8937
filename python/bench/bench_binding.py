"""What the binding costs: qallib calls timed against the same C++ calls.

On 100 samples the difference is the binding's overhead per call (argument checks, result
arrays, the GIL release); on 1,000,000 samples (the Savitzky-Golay filter, width 51) the
Python call should cost within 5 % of the C++ call. The C++ figures come from the
Google Benchmark program of the bench preset:

    cmake --workflow --preset bench
    build/python-venv/bin/python python/bench/bench_binding.py [--cpp build/bench/bench/qal_bench]

Each figure is the fastest of several repetitions of the process's CPU time, on both sides,
so that other work on the machine does not enter it.
"""

import argparse
import json
import math
import subprocess
import sys
import time
import timeit
from pathlib import Path

import numpy as np

import qallib as q

ROOT = Path(__file__).resolve().parents[2]
REPEATS = 7


def python_seconds(call, number):
    timer = timeit.Timer(call, timer=time.process_time)
    return min(timer.repeat(number=number, repeat=REPEATS)) / number


def cpp_seconds(program, pattern):
    """Fastest repetition of each C++ benchmark matching pattern, in seconds."""
    run = subprocess.run([str(program), f"--benchmark_filter={pattern}", "--benchmark_format=json",
                          f"--benchmark_repetitions={REPEATS}"], capture_output=True, text=True, check=True)
    unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    best = {}
    for entry in json.loads(run.stdout)["benchmarks"]:
        if entry.get("run_type") == "iteration":
            seconds = entry["cpu_time"] * unit[entry["time_unit"]]
            best[entry["run_name"]] = min(best.get(entry["run_name"], math.inf), seconds)
    return best


def small_curve():
    i = np.arange(100.0)
    return 0.5 * i, 10.0 + 0.1 * i + 30.0 * np.exp(-((i - 50.0) / 10.0) * ((i - 50.0) / 10.0))


def noisy_curve(count=1_000_000):
    """The curve of the C++ filter benchmark: the same generator, the same samples."""
    state = 4711
    noise = np.empty(count)
    for k in range(count):
        state = (state * 1664525 + 1013904223) & 0xFFFFFFFF
        noise[k] = (state >> 8) / 16777216.0 - 0.5
    return 50.0 + 20.0 * np.sin(0.00005 * np.arange(count)) + noise


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--cpp", type=Path, default=ROOT / "build" / "bench" / "bench" / "qal_bench")
    args = parser.parse_args()
    if not args.cpp.exists():
        sys.exit(f"{args.cpp} is missing: cmake --workflow --preset bench")

    x, y = small_curve()
    small = {
        "BM_Small_FilterArray": lambda: q.filter_array(y, q.FILTER_AVERAGE, 5),
        "BM_Small_LinFit": lambda: q.lin_fit(x, y),
        "BM_Small_Interpol": lambda: q.interpol(20.25, x, y, option=q.INTERPOL_SEGMENT),
        "BM_Small_FindX_at_YThreshold": lambda: q.find_x_at_y_threshold(x, y, 25.0),
        "BM_Small_GetRangeExtremum": lambda: q.get_range_extremum(x, y, 15, q.EXTREMUM_MAX),
        "BM_Small_DerivArray": lambda: q.deriv_array(x, y, q.DERIV_SPLINE),
    }
    cpp = cpp_seconds(args.cpp, "BM_Small_|BM_FilterArraySavitzkyGolay/51")
    print(f"{'100 samples':32} {'C++ us':>9} {'Python us':>10} {'overhead us':>12}")
    for name, call in small.items():
        py = python_seconds(call, 20000)
        print(f"{name[len('BM_Small_'):]:32} {cpp[name] * 1e6:9.2f} {py * 1e6:10.2f} {(py - cpp[name]) * 1e6:12.2f}")

    big = noisy_curve()
    py = python_seconds(lambda: q.filter_array(big, q.FILTER_SAVITZKY_GOLAY, 51), 3)
    c = cpp["BM_FilterArraySavitzkyGolay/51"]
    ratio = py / c
    print(f"\n1,000,000 samples, filter_array kind 20 width 51: C++ {c * 1e3:.2f} ms, "
          f"Python {py * 1e3:.2f} ms, Python / C++ = {ratio:.3f} ({'within' if ratio <= 1.05 else 'NOT within'} 5 %)")
    return 0 if ratio <= 1.05 else 1


if __name__ == "__main__":
    sys.exit(main())
