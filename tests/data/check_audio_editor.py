#!/usr/bin/env python3
"""Checks what examples/audio_editor.ksc left in its folder, with Python's
wave module: the edited file is the first one with the clip copied and
pasted, and the dump shows the lines and the clip of the edited file.

    python3 check_audio_editor.py FOLDER

The script marks Line 1 at 20000 and clicks Line 2 at 21500: 1.99 * 1500 =
2985 gives a clip of 2048 samples, copied and pasted before sample 50000.
Then Line 1 stands at 50000 and a click at 52000 marks a clip of 2048
there, plotted: the clip holds samples 50000 to 52048 of the edited file.
"""
import json
import struct
import sys
import wave


def samples(path):
    with wave.open(path, "rb") as w:
        assert w.getnchannels() == 1 and w.getsampwidth() == 2, w.getparams()
        rate = w.getframerate()
        frames = w.readframes(w.getnframes())
    return rate, [s for (s,) in struct.iter_unpack("<h", frames)]


def main():
    folder = sys.argv[1]
    rate, tone = samples(folder + "/tone.wav")
    edited_rate, edited = samples(folder + "/tone-edited.wav")
    assert rate == edited_rate == 22050, (rate, edited_rate)
    want = tone[:50000] + tone[20000:20000 + 2048] + tone[50000:]
    assert edited == want, next(i for i in range(min(len(edited), len(want))) if edited[i] != want[i])

    with open(folder + "/audio-editor.json") as f:
        dump = json.load(f)
    assert dump["kind"] == "audio", dump["kind"]
    whole, clip = dump["graphs"]
    assert whole["name"] == "file" and clip["name"] == "clip"
    assert whole["samples"] == len(want) and whole["line1"] == 50000 and whole["line2"] == 52048
    assert whole["lineState"] == "2" and whole["clipLength"] == 2048 and whole["pasteReady"] == "Y"
    stride = len(want) // 512
    assert whole["stride"] == stride and whole["values"] == want[0:512 * stride + 1:stride][:513]
    assert clip["values"] == want[50000:52049], "clip differs"
    assert dump["controls"]["labSamples"]["caption"] == "Samples: %d" % len(want)
    assert dump["controls"]["labPos(1)"]["caption"] == "52048"
    print("audio editor example: %d samples checked" % len(want))


if __name__ == "__main__":
    main()
