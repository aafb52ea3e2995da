#!/usr/bin/env python3
"""Reads the wave files a keldo-run script saved and checks them sample by
sample against the rounding rules, computed here from the graph's formula.

    python3 check_saved_waves.py FOLDER

The script plotted y = 300 sin(2 pi x) + x on [0, 1] with 64 points, volume
0.5: saved.16.wav at 16 bits (floor(s + 0.5)) and saved.8.wav at 8 bits
(round-half-even of s + 0.5, plus 128), both at 8000 Hz, 65 samples.
"""
import math
import sys
import wave


def values():
    return [0.5 * (300 * math.sin(2 * math.pi * i / 64) + i / 64) for i in range(65)]


def main():
    folder = sys.argv[1]
    with wave.open(folder + "/saved.16.wav", "rb") as w:
        assert w.getnchannels() == 1 and w.getsampwidth() == 2 and w.getframerate() == 8000, w.getparams()
        frames = w.readframes(w.getnframes())
        got = [int.from_bytes(frames[2 * i:2 * i + 2], "little", signed=True) for i in range(w.getnframes())]
    want = [max(-32768, min(32767, math.floor(s + 0.5))) for s in values()]
    assert got[:65] == want, (got[:8], want[:8])
    with wave.open(folder + "/saved.8.wav", "rb") as w:
        assert w.getsampwidth() == 1 and w.getframerate() == 8000, w.getparams()
        got8 = list(w.readframes(w.getnframes()))
    def clip8(s):
        if s > 126.5:
            return 127 + 128
        if s < -128.5:
            return -128 + 128
        return round(s + 0.5) + 128  # Python rounds half to even
    want8 = [clip8(s) for s in values()]
    assert got8[:65] == want8, (got8[:8], want8[:8])
    print("saved waves match")


if __name__ == "__main__":
    main()
