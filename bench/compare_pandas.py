#!/usr/bin/python3
"""One-minute bars to 7-minute bars: this library's conversion beside pandas' resample.

Builds the same 1,000,000 one-minute bars as bench/securities/BenchHistory.h (every minute of
a 9:30 to 16:00 New York session on every weekday from 2 January 2012, prices and volumes
from the same formula), times resample('7min') with open/high/low/close/sum on them, runs
the library's benchmark of the same conversion, and prints both rates and their ratio.

pandas' bins are cut from midnight and run through nights and week ends; the library's are
cut from each session's open and end with it. The work differs in that, not in the data.

Run with Debian's python3 (/usr/bin/python3), where python3-pandas lives.

usage: bench/compare_pandas.py [PATH_TO_bench_conversion]
"""
import json
import subprocess
import sys
import time

import numpy as np
import pandas as pd

COUNT = 1_000_000
BENCHMARK = "BM_HistoryMinutesToSevenMinuteBars/1000000"


def session_minutes(count):
    days = pd.bdate_range("2012-01-02", periods=count // 390 + 1)
    opens = (days + pd.Timedelta(hours=9, minutes=30)).tz_localize("America/New_York")
    minutes = opens.values.astype("datetime64[s]")[:, None] + np.arange(390) * np.timedelta64(60, "s")
    return pd.DatetimeIndex(minutes.ravel()[:count], tz="UTC")


def bars():
    i = np.arange(COUNT)
    price = (100.0 + ((i * 37) % 101) * 0.25).astype(np.float32)
    return pd.DataFrame(
        {
            "open": price,
            "close": price + np.float32(0.25),
            "high": price + np.float32(0.5),
            "low": price - np.float32(0.25),
            "volume": (1 + i % 97).astype(np.int32),
        },
        index=session_minutes(COUNT),
    )


def pandas_rate(frame, runs=5):
    # CPU time, as the library's benchmark reports its rate, so that a busy machine does
    # not favour either side.
    best = float("inf")
    for _ in range(runs):
        start = time.process_time()
        out = frame.resample("7min").agg(
            {"open": "first", "high": "max", "low": "min", "close": "last", "volume": "sum"}
        )
        best = min(best, time.process_time() - start)
    return COUNT / best, len(out.dropna())


def library_rate(binary):
    result = subprocess.run(
        [binary, f"--benchmark_filter={BENCHMARK}$", "--benchmark_format=json",
         "--benchmark_min_time=1"],
        check=True, capture_output=True, text=True)
    report = json.loads(result.stdout)
    return report["benchmarks"][0]["items_per_second"]


def main():
    binary = sys.argv[1] if len(sys.argv) > 1 else "build/bench/securities/bench_conversion"
    rate, produced = pandas_rate(bars())
    ours = library_rate(binary)
    print(f"pandas resample('7min'):  {rate / 1e6:8.2f} M bars/s  ({produced} bars)")
    print(f"library, session-aligned: {ours / 1e6:8.2f} M bars/s")
    print(f"ratio:                    {ours / rate:8.1f} x")


if __name__ == "__main__":
    main()
