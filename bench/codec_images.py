#!/usr/bin/env python3
"""Writes the test images of bench_codec as 8-bit grey PGM files (P5) into a
folder, from Debian's python3-skimage, so that no picture is kept in the
repository:

    python3 codec_images.py FOLDER

camera.pgm is skimage.data.camera(), 512 x 512 grey; astronaut.pgm is
skimage.data.astronaut() made grey by skimage.color.rgb2gray (ITU-R 709
weights), scaled to 0..255 and rounded, its 512 x 512 top-left corner.
"""
import os
import sys

import numpy as np

SIDE = 512


def grey_images():
    from skimage import color, data  # only here: read_pgm serves without it

    camera = np.asarray(data.camera(), dtype=np.uint8)
    astronaut = np.rint(color.rgb2gray(data.astronaut()) * 255.0).clip(0, 255).astype(np.uint8)
    return {"camera": camera[:SIDE, :SIDE], "astronaut": astronaut[:SIDE, :SIDE]}


def write_pgm(path, pixels):
    height, width = pixels.shape
    with open(path, "wb") as f:
        f.write(b"P5\n%d %d\n255\n" % (width, height))
        f.write(np.ascontiguousarray(pixels, dtype=np.uint8).tobytes())


def read_pgm(path):
    """An 8-bit P5 file as a height x width uint8 array; '#' comments in the
    header (as opj_decompress writes one) are skipped."""
    with open(path, "rb") as f:
        raw = f.read()
    fields, at = [], 0
    while len(fields) < 4:
        while raw[at:at + 1].isspace() or raw[at:at + 1] == b"#":
            if raw[at:at + 1] == b"#":
                at = raw.index(b"\n", at)
            at += 1
        start = at
        while not raw[at:at + 1].isspace():
            at += 1
        fields.append(raw[start:at])
    if fields[0] != b"P5" or int(fields[3]) != 255:
        raise ValueError("%s: not an 8-bit P5 file" % path)
    width, height = int(fields[1]), int(fields[2])
    return np.frombuffer(raw[at + 1:at + 1 + width * height], dtype=np.uint8).reshape(height, width)


def main():
    os.makedirs(sys.argv[1], exist_ok=True)
    for name, pixels in grey_images().items():
        write_pgm(os.path.join(sys.argv[1], name + ".pgm"), pixels)


if __name__ == "__main__":
    main()
