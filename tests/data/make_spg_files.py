#!/usr/bin/env python3
"""Writes spectrogram form files (.spg) byte by byte, for the
reader tests and as seeds of the reader's fuzz target. Run from anywhere:

    /usr/bin/python3 make_spg_files.py

Every file is little-endian, the fields in the order the form saves them:
caption, interval and dt, rows, window part, step, sampling value, display
maximum, display mode and choice, flag, filter index, df, the signal
(upper bound, then upper bound + 1 doubles), the modification list (upper
bound, then a counted text an entry), the report and the information text.

The good files' signals follow SIGNAL, which gives values exact in binary,
so a test can check every sample without trusting any writer of ours. The
bad files each break one thing in an otherwise good file.
"""
import os

from binary_fields import f64, i16, i32, text

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "spg")
SEEDS = os.path.join(HERE, "..", "..", "fuzz", "seeds", "spg_file")


def SIGNAL(i):
    return (i % 7) - 3 + i / 8.0



def spg(caption="Spectrogram 1", left=0.0, right=1.0, dt=1.0 / 128, rows=32, winlen_part=32, step=8,
        sampling=8000.0, display_max=255, mode=1, choice=0, flag=b"Y", filt=2, df=2.0,
        count=128, samples=None, modifications=(), report="", information="",
        caption_length=None, list_count=None, entry_lengths=None, report_length=None,
        information_length=None, trailing=b""):
    if samples is None:
        samples = [SIGNAL(i) for i in range(count + 1)] if count >= 0 else []
    out = text(caption, caption_length)
    out += f64(left) + f64(right) + f64(dt)
    out += i32(rows) + i32(winlen_part) + i32(step)
    out += f64(sampling) + i32(display_max) + i16(mode) + i16(choice) + flag + i16(filt) + f64(df)
    out += i32(count) + b"".join(f64(v) for v in samples)
    out += i32(len(modifications) if list_count is None else list_count)
    for k, m in enumerate(modifications):
        out += text(m, None if entry_lengths is None else entry_lengths[k])
    out += text(report, report_length) + text(information, information_length)
    return out + trailing


BASIC = dict(
    modifications=("T:0.5", "G:(g1)(g1>2)"),
    report="1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n",
    information="Filter: Hamming\r\nWindow length: 64\r\nShift: 8\r\n",
)

GOOD = {
    # N = 128, window 64, step 8, two modifications.
    "basic.spg": spg(**BASIC),
    # N = 512, window 128: no caption, list or texts; the last entry of
    # every side-box list.
    "plain.spg": spg(caption="", left=-2.5, right=2.5, dt=5.0 / 512, rows=64, winlen_part=64, step=128,
                     sampling=0.0, display_max=0, mode=3, choice=1, flag=b"N", filt=4, df=0.8,
                     count=512, modifications=(), report="", information=""),
    # Empty list entries' texts and a caption with every byte value above 127.
    "high_bytes.spg": spg(caption="".join(chr(c) for c in range(128, 256)), winlen_part=32, step=64,
                          modifications=("T:", "G:"), report="x", information="\xff"),
}

BAD = {
    "empty.spg": b"",
    "nonsense.spg": b"This is not a spectrogram form file at all.\r\n" * 3,
    "negative_caption.spg": spg(caption="", caption_length=-1, **BASIC),
    "huge_caption.spg": spg(caption="abc", caption_length=0x7FFFFFFF, **BASIC),
    "negative_list.spg": spg(modifications=(), list_count=-1, report="", information=""),
    "huge_list.spg": spg(modifications=("T:1",), list_count=0x7FFFFFFF),
    "negative_entry.spg": spg(modifications=("T:0.5", ""), entry_lengths=(5, -2)),
    "huge_entry.spg": spg(modifications=("T:0.5",), entry_lengths=(0x7FFFFFF0,)),
    "negative_report.spg": spg(modifications=(), report="", report_length=-5),
    "huge_report.spg": spg(modifications=(), report="abc", report_length=0x40000000),
    "negative_information.spg": spg(modifications=(), information="", information_length=-1),
    "huge_information.spg": spg(modifications=(), information="abc", information_length=0x7FFFFFFF),
    "trailing.spg": spg(trailing=b"\x00", **BASIC),
    "count_63.spg": spg(count=63, winlen_part=32, step=1),
    "count_65.spg": spg(count=65, winlen_part=32, step=1),
    "count_96.spg": spg(count=96, winlen_part=32, step=1),
    "count_32.spg": spg(count=32, winlen_part=32, step=1),
    "count_0.spg": spg(count=0, winlen_part=32, step=1),
    "count_negative.spg": spg(count=-1, winlen_part=32, step=1),
    "count_huge.spg": spg(count=0x7FFFFFFF, samples=[0.0] * 16, winlen_part=32, step=1),
    # The window longer than 128 points take, not a power of two, shorter
    # than any accepted, negative, or so large that twice it overflows.
    "window_128_of_128.spg": spg(winlen_part=64, step=8),
    "window_96.spg": spg(winlen_part=48, step=8),
    "window_32.spg": spg(winlen_part=16, step=8),
    "window_negative.spg": spg(winlen_part=-32, step=8),
    "window_huge.spg": spg(winlen_part=0x7FFFFFFF, step=8),
    "step_0.spg": spg(step=0),
    "step_negative.spg": spg(step=-8),
    "step_65.spg": spg(step=65),
    "mode_4.spg": spg(mode=4),
    "mode_negative.spg": spg(mode=-1),
    "choice_2.spg": spg(choice=2),
    "choice_negative.spg": spg(choice=-1),
    "filter_5.spg": spg(filt=5),
    "filter_negative.spg": spg(filt=-1),
    # An input the reader fuzzer reported as slow once, while the machine was
    # busy; it reads in 2 ms.
    "fuzz_stall.spg": bytes.fromhex(
        "00000000000000000000080000010001000000000000000000000001000000000"
        "00d000000000000000000010000040000001000000000000001050000010000250000"),
}


def main():
    os.makedirs(OUT, exist_ok=True)
    os.makedirs(SEEDS, exist_ok=True)
    for name, data in list(GOOD.items()) + list(BAD.items()):
        with open(os.path.join(OUT, name), "wb") as f:
            f.write(data)
    for name in ("basic.spg", "plain.spg", "high_bytes.spg", "huge_list.spg", "window_96.spg"):
        with open(os.path.join(SEEDS, name), "wb") as f:
            f.write(GOOD.get(name) or BAD[name])


if __name__ == "__main__":
    main()
