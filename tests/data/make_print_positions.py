#!/usr/bin/env python3
"""Printer rectangles of every print position, straight from the position
table: for each window and page ratio, the coordinates that the page's
left, right, top and bottom edges take, and the size letter.

Writes print_positions.tsv: position, xl, xr, yb, yt, page width over
height, left, right, top, bottom, size."""

import os

WINDOWS = [(-0.5, 0.5, -1.0, 1.0), (0.0, 2.0, -0.375, 0.375), (-3.0, 7.0, 10.0, 250.0), (0.25, 0.3125, -1e-3, 2e-3)]
RATIOS = [11.0 / 8.5, 8.5 / 11.0, 1.0]


def rectangle(p, xl, xr, yb, yt, ratio):
    dx, dy = xr - xl, yt - yb
    dx15, dy15, dx6 = dx / 15, dy / 15, dx / 6
    r, r2 = 1.2 * ratio, 1.5 * ratio
    a_lr = (xl - 1.7 * r * dx15, xr + r * dx)
    b_lr = (xl - 14 * r * dx15, xr + 4 * dx15)
    s_lr = (xl - 8.5 * r * dx15, xr + 1.5 * r * dx)
    sb_lr = (xl - 8.5 * r * dx15 - 20 * dx15, xr + 1.5 * r * dx - 20 * dx15)
    medium_top = (yt + 1.7 * r * dy15, yb - 1.7 * r * dy)
    small_top = (yt + 2.21 * r * dy15 + 5 * dy15, yb - 3.06 * r * dy + 5 * dy15)
    small_centre = (yt + 2.21 * r * dy15 + 24 * dy15, yb - 3.06 * r * dy + 24 * dy15)
    medium_centre = (yt + 34 * r * dy / 36, yb - 30 * r * dy / 36)
    large_top = (yt + r * dy15, yb - r * dy)
    table = {
        "(AA), Big, top, right": ((xl - dx15, xr + dx), (yt + r * dy15, yb - r * dy), "B"),
        "(A), Medium, top, left": (a_lr, medium_top, "M"),
        "(B), Medium, top, right": (b_lr, medium_top, "M"),
        "(a), Small, top, left": (s_lr, small_top, "S"),
        "(b), Small, top, right": (sb_lr, small_top, "S"),
        "(c), Small, center, left": (s_lr, small_centre, "S"),
        "(d), Small, center, right": (sb_lr, small_centre, "S"),
        "Small, top, center": ((xl - 8.5 * r * dx15 - 10 * dx15, xr + 1.5 * r * dx - 10 * dx15), small_top, "S"),
        "(C), Medium, center, left": (a_lr, medium_centre, "M"),
        "(D), Medium, center, right": (b_lr, medium_centre, "M"),
        "Medium, center, center": ((xl - 11 * dx15, xr + 11 * dx15), (yt + 32 * r * dy / 36, yb - 32 * r * dy / 36), "M"),
        "Large, center, center": ((xl - dx / 2, xr + dx / 2), (yt + 15 * r * dy / 32, yb - 15 * r * dy / 32), "B"),
        "(1) Large, top, center": ((xl - 7 * dx / 16, xr + 9 * dx / 16), large_top, "B"),
        "(2) Large, bottom, center": ((xl - 7 * dx / 16, xr + 9 * dx / 16), (yt + 5 * r * dy / 6, yb - r * dy / 6), "B"),
        "1: Large, top, left": ((xl - dx15, xr + dx), (yt + r2 * dy15, yb - r2 * dy), "B"),
        "2: Large, top, right": ((xl - dx - dx6, xr + dx6), (yt + r2 * dy15, yb - r2 * dy), "B"),
    }
    (left, right), (top, bottom), size = table[p]
    return left, right, top, bottom, size


POSITIONS = [
    "(AA), Big, top, right", "(A), Medium, top, left", "(B), Medium, top, right", "(a), Small, top, left",
    "(b), Small, top, right", "(c), Small, center, left", "(d), Small, center, right", "Small, top, center",
    "(C), Medium, center, left", "(D), Medium, center, right", "Medium, center, center", "Large, center, center",
    "(1) Large, top, center", "(2) Large, bottom, center", "1: Large, top, left", "2: Large, top, right",
]


def main():
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), "print_positions.tsv")
    with open(out, "w") as f:
        f.write("# made by make_print_positions.py\n")
        for p in POSITIONS:
            for (xl, xr, yb, yt) in WINDOWS:
                for ratio in RATIOS:
                    left, right, top, bottom, size = rectangle(p, xl, xr, yb, yt, ratio)
                    nums = [xl, xr, yb, yt, ratio, left, right, top, bottom]
                    f.write(p + "\t" + "\t".join(repr(v) for v in nums) + "\t" + size + "\n")


if __name__ == "__main__":
    main()
