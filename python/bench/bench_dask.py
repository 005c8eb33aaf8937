"""The speed-up of qallib.dask on this machine's cores over one thread.

Each batch call runs on a Dask array of curves in blocks of 8 curves, once with the
synchronous scheduler (one thread, blocks one after the other) and once with the threaded
scheduler and one worker per core; the batch calls release the GIL, so the blocks run in
parallel. Prints the best of five runs of each, and checks that both give the same bits.

    /usr/bin/python3 python/bench/bench_dask.py [curves] [samples]
"""

import os
import sys
import time

import dask
import dask.array as da
import numpy as np

import qallib as q
import qallib.dask as qd


REPEATS = 5


def best_of(repeats, run):
    times = []
    for _ in range(repeats):
        begin = time.perf_counter()
        result = run()
        times.append(time.perf_counter() - begin)
    return min(times), result


def main():
    curves = int(sys.argv[1]) if len(sys.argv) > 1 else 64
    samples = int(sys.argv[2]) if len(sys.argv) > 2 else 200_000
    workers = os.cpu_count()
    rng = np.random.default_rng(12)
    x = np.cumsum(rng.uniform(0.5, 1.5, samples))
    y = np.sin(x / 500.0) + rng.normal(0.0, 0.1, (curves, samples))
    y_dask = da.from_array(y, chunks=(8, samples))
    y32_dask = da.from_array(y.astype(np.float32), chunks=(8, samples))
    cases = [
        ("filter_array_batch, Savitzky-Golay 21 taps, float64", lambda: qd.filter_array_batch(y_dask, 20, 21, 4)),
        ("filter_array_batch, Savitzky-Golay 21 taps, float32",
         lambda: qd.filter_array_batch(y32_dask, 20, 21, 4)),
        ("deriv_array_batch, line fits over 9 samples", lambda: qd.deriv_array_batch(x, y_dask, q.DERIV_LINE_FIT, 1, 9)),
        ("get_range_extremum_batch, windows of 30", lambda: qd.get_range_extremum_batch(x, y_dask, 30, q.EXTREMUM_MAX)),
    ]
    print(f"{curves} curves x {samples} samples, blocks of 8 curves, {workers} cores; best of {REPEATS} runs")
    print(f"{'call':<56} {'1 thread':>9} {f'{workers} threads':>10} {'speed-up':>9}")
    for name, build in cases:
        lazy = build()
        one, serial = best_of(REPEATS, lambda: dask.compute(*lazy, scheduler="synchronous"))
        many, threaded = best_of(REPEATS, lambda: dask.compute(*lazy, scheduler="threads", num_workers=workers))
        assert all(np.array_equal(a, b, equal_nan=True) for a, b in zip(serial, threaded))
        print(f"{name:<56} {one:>8.3f}s {many:>9.3f}s {one / many:>8.2f}x")


if __name__ == "__main__":
    main()
