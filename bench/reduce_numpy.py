#!/usr/bin/python3
"""The NumPy peer of the stand-in's merge: reads a reflection file of fixed
columns (3I4,2F8.2), brings the indices to the asymmetric unit of m-3m
(h >= k >= l >= 0), groups equivalents and takes their weighted mean with the
same sigma, writes the merged list and prints R_int and the unique count.

usage: reduce_numpy.py FILE.hkl OUT.int
"""
import sys

import numpy as np


def main():
    d = np.loadtxt(sys.argv[1], comments="!")
    hkl = np.sort(np.abs(d[:, :3].astype(np.int64)), axis=1)[:, ::-1]
    key = (hkl[:, 0] * 20000 + hkl[:, 1]) * 20000 + hkl[:, 2]
    _, first, inv, n = np.unique(key, return_index=True, return_inverse=True, return_counts=True)
    w = 1.0 / d[:, 4] ** 2
    sw = np.bincount(inv, w)
    mean = np.bincount(inv, w * d[:, 3]) / sw
    dev = d[:, 3] - mean[inv]
    spread = np.bincount(inv, w * dev ** 2)
    # sigma^2 = (counting + (n - 1) spread) / n, as the stand-in has it
    sigma = np.sqrt((1.0 / sw + spread / sw) / n)
    many = n[inv] > 1
    rint = np.abs(dev[many]).sum() / d[many, 3].sum()
    np.savetxt(sys.argv[2], np.column_stack([hkl[first], mean, sigma, n]),
               fmt="%5d%5d%5d%14.3f%12.3f%5d")
    print("unique %d R_int %.4f" % (len(n), rint))


if __name__ == "__main__":
    main()
