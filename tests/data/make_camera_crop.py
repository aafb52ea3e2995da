#!/usr/bin/python3
"""A photograph for the image processor's lossless and region tests.

The 128 by 128 block of scikit-image's camera picture whose top left corner
is at row 160, column 192 (the man's head, coat and tripod), written as a
binary PGM: "P5", a line feed, "128 128", a line feed, "255", a line feed,
then the rows.
"""
import pathlib

import numpy as np
import skimage.data

crop = skimage.data.camera()[160:288, 192:320].astype(np.uint8)
out = pathlib.Path(__file__).with_name("camera_crop.pgm")
out.write_bytes(b"P5\n128 128\n255\n" + crop.tobytes())
