#!/usr/bin/env python3
"""Prints the table of bench_denoise2d from the JSON files of a
bench/compare.sh run:

    python3 denoise2d_table.py FOLDER

For each picture and noise level, every method's PSNR against the clean
picture, its distance from 33 dB (the best classical figure on a 512 x 512
portrait at sigma 20, a context for the sigma 20 rows only), our time per
picture and the yardstick's (scikit-image's BayesShrink beside a wavelet
method, SciPy's median filter beside a median filter), each by the wall
clock and by processor time, and the ratio of the processor times (the
wall clock of a loaded machine says more about the load than about the
code). The yardsticks' own rows stand among ours, with their times alone.
"""
import json
import os
import sys

REFERENCE_DB = 33.0


def load(folder, name):
    path = os.path.join(folder, name)
    if not os.path.exists(path):
        return []
    with open(path) as f:
        try:
            return json.load(f)["benchmarks"]
        except ValueError:
            return []


def seconds(b, field):
    return b.get(field, b["real_time"]) * {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[b.get("time_unit", "ns")]


def main():
    folder = sys.argv[1]
    rows = {}
    for b in load(folder, "bench_denoise2d.json") + load(folder, "denoise2d_yardstick.json"):
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"]) if b.get("run_type") == "aggregate" else b["name"]
        part = name.split("/")
        if len(part) != 5 or part[0] != "BM_Denoise2D":
            continue
        entry = rows.setdefault((part[1], part[2], part[3]), {})
        entry[part[4]] = (seconds(b, "real_time"), b.get("psnr"), b.get("noisy_psnr"), seconds(b, "cpu_time"))
    if not rows:
        return
    print("\nDenoising at 512 x 512: PSNR (dB) against the clean picture, time per picture")
    print(f"{'picture':10} {'sigma':>5} {'method':24} {'PSNR':>7} {'-33 dB':>7} {'ours wall':>10} {'ours cpu':>10}"
          f" {'yard wall':>10} {'yard cpu':>10} {'cpu ratio':>9}")
    last = None
    for (image, sigma, method), v in sorted(rows.items(), key=lambda kv: (kv[0][0], int(kv[0][1][1:]), "ours" not in kv[1], kv[0][2])):
        if (image, sigma) != last:
            noisy = next((x[2] for (i, s, _), w in rows.items() if (i, s) == (image, sigma)
                          for x in w.values() if x[2] is not None), None)
            if noisy is not None:
                print(f"{image:10} {sigma[1:]:>5} {'(noisy input)':24} {noisy:7.2f}")
            last = (image, sigma)
        ours, yard = v.get("ours"), v.get("yardstick")
        # A yardstick's copy beside one of our methods that did not run
        # (a filter) is not a row of its own.
        if ours is None and not method.startswith(("skimage-", "scipy-")):
            continue
        shown = ours or yard
        quality = shown[1]
        distance = f"{quality - REFERENCE_DB:+7.2f}" if sigma == "s20" and quality is not None else f"{'':7}"
        ms = lambda t: f"{t * 1e3:8.1f}ms"
        dash = f"{'-':>10}"
        ours_time = f"{ms(ours[0])} {ms(ours[3])}" if ours else f"{dash} {dash}"
        yard_time = f"{ms(yard[0])} {ms(yard[3])}" if yard else f"{dash} {dash}"
        ratio = f"{ours[3] / yard[3]:9.2f}" if ours and yard and yard[3] > 0 else f"{'-':>9}"
        print(f"{image:10} {sigma[1:]:>5} {method:24} {quality:7.2f} {distance} {ours_time} {yard_time} {ratio}")


if __name__ == "__main__":
    main()
