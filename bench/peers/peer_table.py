#!/usr/bin/python3
"""The closing table of `make bench`: the library's rate over each peer's, one row a pair.

usage: bench/peers/peer_table.py TABLE BUILD_DIR

TABLE holds the lines that the bench_peer_* programs appended (see PeerComparison.h). Two
comparisons are not C++ programs and join here, each only when it can run:
- bar conversion against pandas: bench/compare_pandas.py, when it is in the tree, pandas
  is installed and its benchmark is built; its "ratio:" line is taken;
- cached history delivery against memcpy: a bench_peer_history program, when the tick
  cache has one, writes its own lines like the others.
A comparison that cannot run is listed as such, so the table always says what is missing.
"""
import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(os.path.dirname(HERE))


def pandas_row(build):
    script = os.path.join(SOURCE, "bench", "compare_pandas.py")
    binary = os.path.join(build, "bench", "securities", "bench_conversion")
    if not os.path.exists(script):
        return "bar conversion, pandas: not in this tree (bench/compare_pandas.py)"
    if not os.path.exists(binary):
        return "bar conversion, pandas: its benchmark is not built"
    try:
        import pandas  # noqa: F401
    except ImportError:
        return "bar conversion, pandas: pandas is not installed (python3-pandas)"
    out = subprocess.run([sys.executable, script, binary], capture_output=True, text=True)
    print(out.stdout, end="")
    found = re.search(r"^ratio:\s*([0-9.]+)", out.stdout, re.M)
    if out.returncode != 0 or not found:
        return "bar conversion, pandas: the comparison failed: " + out.stderr.strip()[-200:]
    return ("Bar conversion", "pandas", None, None, float(found.group(1)))


def main():
    table, build = sys.argv[1], sys.argv[2]
    rows, missing = [], []
    if os.path.exists(table):
        with open(table) as lines:
            for line in lines:
                name, peer, ours, theirs, ratio = line.rstrip("\n").split("\t")
                rows.append((name, peer, float(ours), float(theirs), float(ratio)))
    pandas = pandas_row(build)
    (missing if isinstance(pandas, str) else rows).append(pandas)
    if not any(peer == "memcpy" for _, peer, *_ in rows):
        missing.append("cached history delivery, memcpy: no bench_peer_history built yet")
    for peer, package in (("abseil", "libabsl-dev"), ("fmt", "libfmt-dev")):
        if not any(p == peer for _, p, *_ in rows):
            missing.append(f"{peer}: not measured (is {package} installed?)")

    print("\nThe library against its peers (ratio above 1: the library is faster)")
    print(f"{'comparison':<28} {'peer':<10} {'qvnrt M/s':>10} {'peer M/s':>10} {'ratio':>7}")
    for name, peer, ours, theirs, ratio in rows:
        rate = lambda v: f"{v / 1e6:10.2f}" if v is not None else f"{'':>10}"
        print(f"{name:<28} {peer:<10} {rate(ours)} {rate(theirs)} {ratio:7.2f}")
    for line in missing:
        print("  not run: " + line)


if __name__ == "__main__":
    main()
