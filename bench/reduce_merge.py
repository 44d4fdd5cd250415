#!/usr/bin/python3
"""Reducing 1,000,000 reflections in m-3m: the stand-in reduction code beside
a NumPy script doing the same grouping and weighted mean on the same file.
Runs are paired and interleaved (the order alternates); wall and CPU time and
peak memory of each process are reported as median and range. The stand-in
reads a file of this size on two threads (each half of it on one): its CPU
time is the sum over both threads.

usage: reduce_merge.py OMBREL [ROUNDS]
"""
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np

HERE = os.path.dirname(os.path.abspath(__file__))
REFLECTIONS = 1_000_000
CELL = 40.0       # Angstrom, P m -3 m
STOL_MAX = 0.6    # sin(theta)/lambda of the sphere of data


def make_data(folder):
    """Every index triple of the sphere, drawn at random, measured with
    Gaussian noise of the sigma it is written with."""
    rng = np.random.default_rng(20261123)
    r = int(2 * STOL_MAX * CELL)
    pts = rng.integers(-r, r + 1, size=(3 * REFLECTIONS, 3))
    s = np.sqrt((pts ** 2).sum(1)) / (2 * CELL)
    pts = pts[(s <= STOL_MAX) & (s > 0)][:REFLECTIONS]
    u = np.sort(np.abs(pts), axis=1)
    true = ((u[:, 0] * 7919 + u[:, 1] * 104729 + u[:, 2] * 1299709) % 4999 + 1).astype(float)
    sigma = 0.02 * true + 15
    observed = true + rng.normal(0, 1, len(true)) * sigma
    np.savetxt(os.path.join(folder, "big.hkl"), np.column_stack([pts, observed, sigma]),
               fmt="%4d%4d%4d%8.2f%8.2f")
    with open(os.path.join(folder, "big.omb"), "w") as f:
        f.write("TITLE a million reflections in m-3m\nINPFIL big.hkl\nOUTFIL big\n"
                "CELL %g %g %g 90 90 90\nSPGR P m -3 m\nWAVE 0.71073\nHKL_T 0\n" % (CELL, CELL, CELL))


def run(cmd, folder):
    """Wall seconds, CPU seconds and peak resident kilobytes of one process.
    Measured by time(1): a child of this (large) Python process would inherit
    its peak resident size."""
    stats = os.path.join(folder, "time.txt")
    start = time.perf_counter()
    p = subprocess.run(["/usr/bin/time", "-o", stats, "-f", "%U %S %M"] + cmd, cwd=folder,
                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    wall = time.perf_counter() - start
    if p.returncode != 0:
        sys.exit("failed: %s" % " ".join(cmd))
    with open(stats) as f:
        user, system, peak = f.read().split()[-3:]
    return wall, float(user) + float(system), int(peak), p.stdout.decode()


def summary(values, unit):
    return "median %8.3f %s  (%.3f to %.3f)" % (statistics.median(values), unit, min(values), max(values))


def main():
    ombrel = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 7
    with tempfile.TemporaryDirectory() as folder:
        make_data(folder)
        ours = [ombrel, "big"]
        peer = ["/usr/bin/python3", os.path.join(HERE, "reduce_numpy.py"), "big.hkl", "numpy.int"]
        results = {"stand-in": [], "numpy": []}
        for i in range(rounds):
            order = [("stand-in", ours), ("numpy", peer)]
            if i % 2:
                order.reverse()
            for name, cmd in order:
                results[name].append(run(cmd, folder))
        with open(os.path.join(folder, "big.out")) as f:
            report = f.read()
        line = re.search(r"^\s+overall .*$", report, re.M).group(0).split()
        print("Reducing %d reflections in m-3m, %d paired rounds" % (REFLECTIONS, rounds))
        print("  (the stand-in reads the file on two threads; its cpu time counts both)")
        print("  stand-in: unique %s R_int %s;  numpy: %s" % (line[3], line[8], results["numpy"][0][3].strip()))
        for name in ("stand-in", "numpy"):
            r = results[name]
            print("  %-9s wall %s   cpu %s   peak %6.1f MB" % (
                name, summary([x[0] for x in r], "s"), summary([x[1] for x in r], "s"),
                statistics.median(x[2] for x in r) / 1024))
        wall = statistics.median(x[0] for x in results["numpy"]) / statistics.median(x[0] for x in results["stand-in"])
        cpu = statistics.median(x[1] for x in results["numpy"]) / statistics.median(x[1] for x in results["stand-in"])
        print("  stand-in faster by %.1f x (wall), %.1f x (cpu); aim 5 x" % (wall, cpu))


if __name__ == "__main__":
    main()
