#!/usr/bin/env python3
"""Runs the Python examples under examples/python into a work folder; each
checks its own results (the scalogram denoiser gains SNR, ASWDR's PSNR
grows with the rate) and writes its figure.

    python3 tests/python/run_examples.py SOURCE_FOLDER WORK_FOLDER
"""
import os
import subprocess
import sys

source, work = sys.argv[1], sys.argv[2]
folder = os.path.join(source, "examples", "python")
for name in sorted(os.listdir(folder)):
    if not name.endswith(".py"):
        continue
    out = os.path.join(work, name[:-3])
    subprocess.run([sys.executable, os.path.join(folder, name), out], check=True)
    figures = [f for f in os.listdir(out) if f.endswith(".png")]
    if not figures:
        sys.exit(f"{name} wrote no figure")
    print(f"{name}: {', '.join(figures)}")
