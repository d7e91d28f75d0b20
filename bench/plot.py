#!/usr/bin/env python3
"""Figures of a benchmark run: for each family and variant, the time per call
of tvkgen and of its peer against size, and their ratio where there is a
peer, both element types; sizes that are all powers of two on a log-2 axis.
The ratio is against FFTW where it ran, else against the first other peer.

    tvkgen_bench --benchmark_out=results.json --benchmark_out_format=json
    python3 bench/plot.py results.json --out figures/

Each case's time is the median of its repetitions. --only FAMILY/VARIANT
draws one figure; --name sets its file name.
"""

import argparse
import collections
import json
import os
import platform
import statistics

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402 (after the backend is chosen)

OURS = "tvkgen"


def machine():
    """The processor this runs on, from /proc/cpuinfo where there is one."""
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    return f"{line.split(':', 1)[1].strip()}, {os.cpu_count()} cores"
    except OSError:
        pass
    return platform.processor() or platform.machine()


def read(path):
    """{(family, variant): {type: {impl: {size: median ns}}}}"""
    times = collections.defaultdict(list)
    with open(path) as f:
        for run in json.load(f)["benchmarks"]:
            if run.get("run_type", "iteration") != "iteration" or "error_occurred" in run:
                continue
            parts = run["run_name" if "run_name" in run else "name"].split("/")
            if len(parts) < 5:
                continue
            family, type_, variant, size, impl = parts[:5]
            scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run.get("time_unit", "ns")]
            times[(family, variant, type_, impl, int(size))].append(run["real_time"] * scale)
    table = collections.defaultdict(lambda: collections.defaultdict(lambda: collections.defaultdict(dict)))
    for (family, variant, type_, impl, size), values in times.items():
        table[(family, variant)][type_][impl][size] = statistics.median(values)
    return table


# The benchmark's families and variants, and its peers, in words.
TITLES = {
    ("dft_complex", "fwd"): "complex DFT forward",
    ("dft_complex", "inv"): "complex DFT inverse",
    ("dft_real", "fwd"): "real DFT forward, CCS layout",
    ("dft_real", "inv"): "real DFT inverse, CCS layout",
    ("hartley", "dht"): "Hartley transform",
    ("wht", "buffer"): "Walsh-Hadamard, work buffer given",
    ("dct4", "run"): "DCT-IV, plan run",
    ("dct4", "init"): "DCT-IV, plan building",
}
BATCHES = {
    "batch_complex": "complex DFT",
    "batch_real_ccs": "real DFT, CCS layout",
    "batch_hartley": "Hartley",
    "batch_wht": "Walsh-Hadamard",
}
PEERS = {"fftw": "FFTW", "loop": "plain loop", "singles": "loop of single calls", "copy": "copy of the bytes"}
STYLES = {OURS: "-", "singles": ":", "copy": "-."}  # others, FFTW first, dashed


def title(family, variant):
    """Words for a figure; a batch variant is its direction and count."""
    if family in BATCHES:
        direction, count = variant.rsplit("_", 1)
        return f"{BATCHES[family]} {direction}, batches of {count}"
    return TITLES.get((family, variant), f"{family} {variant}")


def powers_of_two(sizes):
    return all(s > 0 and s & (s - 1) == 0 for s in sizes)


def draw(key, types, path, where):
    family, variant = key
    with_peer = any(OURS in impls and len(impls) > 1 for impls in types.values())
    if with_peer:
        figure, (top, bottom) = plt.subplots(2, 1, figsize=(9, 7), sharex=True, gridspec_kw={"height_ratios": [3, 2]})
    else:
        figure, top = plt.subplots(figsize=(9, 4.5))
    sizes_drawn = set()
    for index, (type_, impls) in enumerate(sorted(types.items())):
        color = f"C{index}"  # one color per element type, one line style per implementation
        for impl, by_size in sorted(impls.items()):
            sizes = sorted(by_size)
            sizes_drawn.update(sizes)
            style = STYLES.get(impl, "--")
            top.plot(sizes, [by_size[s] for s in sizes], style, color=color, marker=".",
                     label=f"{PEERS.get(impl, impl)} {type_}")
        peers = sorted((impl for impl in impls if impl != OURS), key=lambda impl: (impl != "fftw", impl))
        if OURS in impls and peers:
            ours, peer = impls[OURS], impls[peers[0]]
            sizes = sorted(set(ours) & set(peer))
            bottom.plot(sizes, [ours[s] / peer[s] for s in sizes], color=color, marker=".",
                        label=f"{type_}: tvkgen / {PEERS.get(peers[0], peers[0])}")
    top.set_ylabel("ns per call")
    top.set_yscale("log")
    top.set_title(f"{title(family, variant)} ({where})")
    top.legend(fontsize="small")
    top.grid(True, which="both", alpha=0.3)
    last = top
    if with_peer:
        bottom.axhline(1.0, color="black", linewidth=0.8)
        bottom.set_ylabel("time ratio (below 1: tvkgen faster)")
        bottom.legend(fontsize="small")
        bottom.grid(True, alpha=0.3)
        last = bottom
    if powers_of_two(sizes_drawn):  # each doubling one step, not the short lengths all at zero
        last.set_xscale("log", base=2)
    last.set_xlabel("size")
    figure.tight_layout()
    figure.savefig(path, dpi=110)
    plt.close(figure)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results", help="the benchmark's JSON output")
    parser.add_argument("--out", default=".", help="folder for the figures")
    parser.add_argument("--only", help="one family/variant, say dft_complex/fwd")
    parser.add_argument("--name", help="file name of the --only figure")
    args = parser.parse_args()
    os.makedirs(args.out, exist_ok=True)
    where = machine()
    for key, types in sorted(read(args.results).items()):
        if args.only and "/".join(key) != args.only:
            continue
        path = os.path.join(args.out, args.name if args.only and args.name else f"{key[0]}_{key[1]}.png")
        draw(key, types, path, where)
        print(path)


if __name__ == "__main__":
    main()
