#!/usr/bin/python3
"""Writes a rock-salt (F m -3 m) reduction job whose answer is known.

The structure factors come from a fixed model: Na at 0 0 0 and Cl at 1/2 1/2 1/2,
scattering factors Z * exp(-b s^2), one isotropic displacement factor. Every
unique reflection up to SMAX in sin(theta)/lambda is measured MULT times at
random symmetry-equivalent positions; each measurement gets Gaussian noise of
the sigma it is written with: sigma = REL * I + ABS. The expected R_int and
<I/sigma> of the merged data follow from that noise and are printed, and kept
in the reflection file's comments.

usage: make_dataset.py DIR NAME [--mult N] [--smax S] [--seed N]
"""
import argparse
import itertools
import math
import os
import random

A = 5.6402            # cell edge, Angstrom
WAVELENGTH = 0.71073
Z_NA, B_NA = 11.0, 2.6
Z_CL, B_CL = 17.0, 1.9
B_ISO = 1.2
SCALE = 2.0           # intensities of a few 10^4 for the strongest
REL, ABS = 0.02, 15.0 # sigma = REL * I + ABS


def f2(h, k, l):
    """|F|^2 of the model; 0 for reflections the F lattice forbids."""
    if len({h % 2, k % 2, l % 2}) != 1:
        return 0.0
    s2 = (h * h + k * k + l * l) / (4 * A * A)
    t = math.exp(-B_ISO * s2)
    fna = Z_NA * math.exp(-B_NA * s2) * t
    fcl = Z_CL * math.exp(-B_CL * s2) * t
    sign = 1 if h % 2 == 0 else -1  # all even: f_Na + f_Cl; all odd: f_Na - f_Cl
    return (4 * (fna + sign * fcl)) ** 2


def equivalents(h, k, l):
    out = set()
    for p in itertools.permutations((h, k, l)):
        for s in itertools.product((1, -1), repeat=3):
            out.add((p[0] * s[0], p[1] * s[1], p[2] * s[2]))
    return sorted(out)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("dir")
    ap.add_argument("name")
    ap.add_argument("--mult", type=int, default=12)
    ap.add_argument("--smax", type=float, default=0.9)
    ap.add_argument("--seed", type=int, default=20261123)
    a = ap.parse_args()
    rng = random.Random(a.seed)
    hmax = int(2 * a.smax * A)
    unique = []
    for h in range(0, hmax + 1):
        for k in range(0, h + 1):
            for l in range(0, k + 1):
                if (h, k, l) == (0, 0, 0) or math.sqrt(h * h + k * k + l * l) / (2 * A) > a.smax:
                    continue
                i = SCALE * f2(h, k, l)
                if i > 0:
                    unique.append(((h, k, l), i))
    lines, fcalc = [], []
    num = den = ios = 0.0
    for (h, k, l), i in unique:
        sigma = REL * i + ABS
        eq = equivalents(h, k, l)
        n = a.mult
        fcalc.append("%4d%4d%4d%12.3f%10.3f\n" % (h, k, l, i, sigma))
        for _ in range(n):
            hh, kk, ll = rng.choice(eq)
            lines.append("%4d%4d%4d%8.2f%8.2f\n" % (hh, kk, ll, i + rng.gauss(0, sigma), sigma))
        # E|I_j - <I>| = sigma sqrt((n-1)/n) sqrt(2/pi) for n equal weights
        num += n * sigma * math.sqrt((n - 1) / n) * math.sqrt(2 / math.pi)
        den += n * i
        # sigma(<I>) is estimated from the n measurements, which lifts the mean of
        # 1/sigma(<I>) by about 3 (n-1) / (4 n^2) (second order in its spread)
        ios += i / (sigma / math.sqrt(n)) * (1 + 3 * (n - 1) / (4 * n * n))
    rng.shuffle(lines)
    rint, i_over_sigma = num / den, ios / len(unique)
    os.makedirs(a.dir, exist_ok=True)
    with open(os.path.join(a.dir, a.name + ".hkl"), "w") as out:
        out.write("! NaCl model data, %d unique reflections x %d measurements, sigma = %g I + %g\n"
                  % (len(unique), a.mult, REL, ABS))
        out.write("! expected: R_int %.4f, <I/sigma> of the merged data %.1f\n" % (rint, i_over_sigma))
        out.writelines(lines)
    with open(os.path.join(a.dir, a.name + "_model.txt"), "w") as out:
        out.write("! The model's intensities and the sigma of one measurement: h k l I sigma\n")
        out.writelines(fcalc)
    with open(os.path.join(a.dir, a.name + ".omb"), "w") as out:
        out.write("TITLE NaCl model data, known noise\nINPFIL %s.hkl\nOUTFIL %s\n" % (a.name, a.name))
        out.write("CELL %12.6f%12.6f%12.6f%12.4f%12.4f%12.4f\n" % (A, A, A, 90, 90, 90))
        out.write("SPGR F m -3 m\nWAVE %12.5f\nHKL_T    0\n" % WAVELENGTH)
    print("unique %d, observations %d, expected R_int %.4f, <I/sigma> %.1f"
          % (len(unique), len(lines), rint, i_over_sigma))


if __name__ == "__main__":
    main()
