#!/usr/bin/env python3
"""Wave files written with Python's standard wave module, for the loader
tests. Run from this folder: python3 make_wave_files.py

  ramp8.wav      8-bit mono, 8000 Hz, 300 samples: byte (7 i) mod 256
  sine16.wav     16-bit mono, 22050 Hz, 1000 samples: round(12000 sin(i/10))
  stereo16.wav   16-bit stereo, 44100 Hz, 100 frames
  long66000.wav  16-bit mono, 44100 Hz, 66000 samples: (i mod 2000) - 1000
  edge65537.wav  16-bit mono, 44100 Hz, 65537 samples: the same rule
  short20.wav    16-bit mono, 8000 Hz, 20 samples: 100 i
"""
import math
import os
import struct
import wave

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "wave")


def write(name, channels, width, rate, frames):
    with wave.open(os.path.join(HERE, name), "wb") as w:
        w.setnchannels(channels)
        w.setsampwidth(width)
        w.setframerate(rate)
        w.writeframes(frames)


def main():
    os.makedirs(HERE, exist_ok=True)
    write("ramp8.wav", 1, 1, 8000, bytes((7 * i) % 256 for i in range(300)))
    write("sine16.wav", 1, 2, 22050,
          b"".join(struct.pack("<h", round(12000 * math.sin(i / 10))) for i in range(1000)))
    write("stereo16.wav", 2, 2, 44100, b"".join(struct.pack("<hh", i, -i) for i in range(100)))
    for name, count in (("long66000.wav", 66000), ("edge65537.wav", 65537)):
        write(name, 1, 2, 44100, b"".join(struct.pack("<h", (i % 2000) - 1000) for i in range(count)))
    write("short20.wav", 1, 2, 8000, b"".join(struct.pack("<h", 100 * i) for i in range(20)))


if __name__ == "__main__":
    main()
