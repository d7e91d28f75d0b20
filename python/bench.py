"""Throughput of tvkgen's fft, rfft and irfft beside numpy.fft and scipy.fft
(scipy with workers=-1, tvkgen with one thread and with workers=-1) along the
last axis of a (rows, N) array, and the cost of one 16-point fft call.

    PYTHONPATH=python python3 python/bench.py [rows]

Prints a table of million transforms per second (the best of five runs).
"""

import sys
import timeit

import numpy as np
import scipy.fft

import tvkgen


def best(call, number):
    return min(timeit.repeat(call, number=number, repeat=5)) / number


def main(rows=100_000):
    one = np.ones(16, np.complex128)
    print("one 16-point fft: " + ", ".join(f"{lib.__name__} {best(lambda: lib.fft(one), 20000) * 1e6:.2f} us"
                                           for lib in (tvkgen, np.fft, scipy.fft)))
    print(f"{'transform':8} {'type':10} {'N':>3} {'numpy':>8} {'scipy':>8} {'tvkgen':>8} {'tvk -1':>8}  (Mtransforms/s)")
    for name in ("fft", "rfft", "irfft"):
        for real in (np.float32, np.float64):
            for n in (8, 16, 32, 60, 64):
                shape = (rows, n // 2 + 1) if name == "irfft" else (rows, n)
                kind = np.result_type(real, np.complex64) if name != "rfft" else real
                x = np.random.default_rng(n).standard_normal(shape).astype(kind)
                args = (x, n) if name == "irfft" else (x,)
                times = [best(lambda: getattr(np.fft, name)(*args), 3),
                         best(lambda: getattr(scipy.fft, name)(*args, workers=-1), 3),
                         best(lambda: getattr(tvkgen, name)(*args), 3),
                         best(lambda: getattr(tvkgen, name)(*args, workers=-1), 3)]
                print(f"{name:8} {np.dtype(kind).name:10} {n:3} " + " ".join(f"{rows / t / 1e6:8.2f}" for t in times))


if __name__ == "__main__":
    main(*(int(arg) for arg in sys.argv[1:]))
