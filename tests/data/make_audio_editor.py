#!/usr/bin/env python3
"""Wave files for the audio editor's tests, and the files its edits must
give, made here by slicing the frames with Python's wave module. Run from
this folder: python3 make_audio_editor.py

Inputs (mono):
  editor16.wav  16-bit, 8000 Hz, 5000 samples: ((37 i) mod 20000) - 10000
  editor8.wav    8-bit, 11025 Hz, 3000 samples: byte (7 i + 3) mod 256
  tiny63.wav    16-bit, 8000 Hz, 63 samples: 10 i
  tiny64.wav    16-bit, 8000 Hz, 64 samples: 10 i

The edits, as the tests make them with the pointer (Line 1 at a sample,
Line 2 clicked d samples later, so the clip is the largest power of two up
to 1.99 d that ends before the end of the file):
  paste16.wav   editor16: Line 1 at 1000, Line 2 clicked at 1100 (clip of
                128), Copy; lines erased, Line 1 at 3000, Paste: the 128
                samples from 1000 inserted before sample 3000.
  cut16.wav     then Line 1 at 200, Line 2 clicked at 500 (clip of 512),
                Cut: samples 200 to 711 removed.
  edit8.wav     editor8: Line 1 at 10, Line 2 at 250 (clip of 256), Cut;
                Line 1 at 1500 (of the shorter file), Paste: the cut
                samples back in before sample 1500.
"""
import os
import struct
import wave

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "wave")


def write(name, width, rate, samples):
    with wave.open(os.path.join(HERE, name), "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(width)
        w.setframerate(rate)
        if width == 1:
            w.writeframes(bytes(samples))
        else:
            w.writeframes(b"".join(struct.pack("<h", s) for s in samples))


def read(name):
    with wave.open(os.path.join(HERE, name), "rb") as w:
        width = w.getsampwidth()
        frames = w.readframes(w.getnframes())
    if width == 1:
        return list(frames)
    return [s for (s,) in struct.iter_unpack("<h", frames)]


def main():
    os.makedirs(HERE, exist_ok=True)
    write("editor16.wav", 2, 8000, [((37 * i) % 20000) - 10000 for i in range(5000)])
    write("editor8.wav", 1, 11025, [(7 * i + 3) % 256 for i in range(3000)])
    write("tiny63.wav", 2, 8000, [10 * i for i in range(63)])
    write("tiny64.wav", 2, 8000, [10 * i for i in range(64)])

    s = read("editor16.wav")
    copied = s[1000:1000 + 128]
    pasted = s[:3000] + copied + s[3000:]
    write("paste16.wav", 2, 8000, pasted)
    cut = pasted[:200] + pasted[200 + 512:]
    write("cut16.wav", 2, 8000, cut)

    b = read("editor8.wav")
    taken = b[10:10 + 256]
    shorter = b[:10] + b[10 + 256:]
    write("edit8.wav", 1, 11025, shorter[:1500] + taken + shorter[1500:])


if __name__ == "__main__":
    main()
