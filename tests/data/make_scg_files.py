#!/usr/bin/env python3
"""Writes scalogram form files (.scg) byte by byte, for the
reader tests and as seeds of the reader's fuzz target. Run from anywhere:

    /usr/bin/python3 make_scg_files.py

Every file is little-endian, the fields in the order the form saves them:
caption, the two display flags, interval and dx, the wavelet's number as a
character, octaves, width, voices, frequency, signal mean, rows, columns,
reference, mode, the two signal flags, view, sampling, display kind, the
signal (upper bound, then upper bound + 1 doubles), the modification list
(upper bound, then a counted text an entry), the report and the information
text.

The good files' signals follow SIGNAL, which gives values exact in binary,
so a test can check every sample without trusting any writer of ours. The
bad files each break one thing in an otherwise good file.
"""
import os

from binary_fields import f64, i16, i32, text

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "scg")
SEEDS = os.path.join(HERE, "..", "..", "fuzz", "seeds", "scg_file")


def SIGNAL(i):
    return (i % 5) - 2 + i / 16.0



def scg(caption="Scalogram 1", display_flags=(-1, 0), left=0.0, right=2.0, dx=2.0 / 128, wavelet=b"3",
        octaves=4, width=1.5, voices=8, frequency=2.0, mean=0.25, rows=None, columns=None,
        reference=37.5, mode=1, signal_flags=(0, -1), view=0, sampling=8000.0, display_kind=b"G",
        count=128, samples=None, modifications=(), report="", information="",
        caption_length=None, list_count=None, entry_lengths=None, report_length=None,
        information_length=None, trailing=b""):
    if rows is None:
        rows = octaves * voices if -2**31 <= octaves * voices < 2**31 else 0
    if columns is None:
        columns = count
    if samples is None:
        samples = [SIGNAL(i) for i in range(count + 1)] if count >= 0 else []
    out = text(caption, caption_length)
    out += i16(display_flags[0]) + i16(display_flags[1])
    out += f64(left) + f64(right) + f64(dx)
    out += wavelet + i32(octaves) + f64(width) + i32(voices) + f64(frequency) + f64(mean)
    out += i32(rows) + i32(columns) + f64(reference)
    out += i16(mode) + i16(signal_flags[0]) + i16(signal_flags[1]) + i16(view)
    out += f64(sampling) + display_kind
    out += i32(count) + b"".join(f64(v) for v in samples)
    out += i32(len(modifications) if list_count is None else list_count)
    for k, m in enumerate(modifications):
        out += text(m, None if entry_lengths is None else entry_lengths[k])
    out += text(report, report_length) + text(information, information_length)
    return out + trailing


BASIC = dict(
    modifications=("T:0.5", "G:(g1)(g1>2)"),
    report="1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n",
    information="Wavelet type: 3. Gabor cosine (real)\r\nOctaves: 4\r\nVoices: 8\r\n",
)

GOOD = {
    # N = 128, Gabor cosine, 4 octaves of 8 voices, two modifications.
    "basic.scg": scg(**BASIC),
    # N = 512, the complex Gabor wavelet, 256 octaves of one voice: no
    # caption, list or texts; the last entry of the mode and view lists.
    "plain.scg": scg(caption="", display_flags=(0, -1), left=-4.0, right=4.0, dx=8.0 / 512, wavelet=b"5",
                     octaves=256, width=0.5, voices=1, frequency=0.75, mean=-1.5, reference=0.0,
                     mode=3, signal_flags=(-1, 0), view=1, sampling=0.0, display_kind=b"G", count=512),
    # The Mexican hat, one octave of 256 voices, empty list entries' texts,
    # a caption with every byte value above 127 and flags as other values.
    "high_bytes.scg": scg(caption="".join(chr(c) for c in range(128, 256)), display_flags=(1, 2), wavelet=b"1",
                          octaves=1, voices=256, mode=0, signal_flags=(-32768, 32767), display_kind=b"\xc7",
                          modifications=("T:", "G:"), report="x", information="\xff"),
}

BAD = {
    "empty.scg": b"",
    "nonsense.scg": b"This is not a scalogram form file at all.\r\n" * 3,
    "negative_caption.scg": scg(caption="", caption_length=-1, **BASIC),
    "huge_caption.scg": scg(caption="abc", caption_length=0x7FFFFFFF, **BASIC),
    "negative_list.scg": scg(modifications=(), list_count=-1),
    "huge_list.scg": scg(modifications=("T:1",), list_count=0x7FFFFFFF),
    "negative_entry.scg": scg(modifications=("T:0.5", ""), entry_lengths=(5, -2)),
    "huge_entry.scg": scg(modifications=("T:0.5",), entry_lengths=(0x7FFFFFF0,)),
    "negative_report.scg": scg(report="", report_length=-5),
    "huge_report.scg": scg(report="abc", report_length=0x40000000),
    "negative_information.scg": scg(information="", information_length=-1),
    "huge_information.scg": scg(information="abc", information_length=0x7FFFFFFF),
    "trailing.scg": scg(trailing=b"\x00", **BASIC),
    # Signal counts that are not a power of two from 64 to 65536, the
    # columns following the count.
    "count_63.scg": scg(count=63),
    "count_65.scg": scg(count=65),
    "count_96.scg": scg(count=96),
    "count_32.scg": scg(count=32),
    "count_0.scg": scg(count=0),
    "count_negative.scg": scg(count=-1),
    "count_131072.scg": scg(count=131072, samples=[0.0] * 16),
    "count_huge.scg": scg(count=0x7FFFFFFF, samples=[0.0] * 16),
    # Columns other than the signal's upper bound.
    "columns_256.scg": scg(columns=256),
    "columns_127.scg": scg(columns=127),
    "columns_0.scg": scg(columns=0),
    "columns_negative.scg": scg(columns=-128),
    # Octaves and voices no scalogram takes, too many scales, and rows
    # other than octaves * voices.
    "octaves_0.scg": scg(octaves=0),
    "octaves_257.scg": scg(octaves=257, voices=1),
    "octaves_negative.scg": scg(octaves=-4, voices=-8),
    "voices_0.scg": scg(voices=0),
    "voices_negative.scg": scg(voices=-1),
    "scales_257.scg": scg(octaves=257, voices=1, rows=257),
    "scales_512.scg": scg(octaves=256, voices=2),
    "scales_272.scg": scg(octaves=16, voices=17),
    # 256 * 16777216 is 2^32: 0 in 32 bits, so rows 0 would pass a
    # product taken in 32 bits.
    "scales_wrap.scg": scg(octaves=256, voices=16777216, rows=0),
    "rows_31.scg": scg(rows=31),
    "rows_33.scg": scg(rows=33),
    "rows_0.scg": scg(rows=0),
    "rows_negative.scg": scg(rows=-32),
    # Wavelets that are not '1'..'5', and list indices outside their lists.
    "wavelet_0.scg": scg(wavelet=b"0"),
    "wavelet_6.scg": scg(wavelet=b"6"),
    "wavelet_3_as_number.scg": scg(wavelet=b"\x03"),
    "wavelet_letter.scg": scg(wavelet=b"G"),
    "wavelet_high.scg": scg(wavelet=b"\xb3"),
    "mode_4.scg": scg(mode=4),
    "mode_negative.scg": scg(mode=-1),
    "view_2.scg": scg(view=2),
    "view_negative.scg": scg(view=-1),
}


def main():
    os.makedirs(OUT, exist_ok=True)
    os.makedirs(SEEDS, exist_ok=True)
    for name, data in list(GOOD.items()) + list(BAD.items()):
        with open(os.path.join(OUT, name), "wb") as f:
            f.write(data)
    for name in ("basic.scg", "plain.scg", "high_bytes.scg", "huge_list.scg", "rows_31.scg", "scales_512.scg"):
        with open(os.path.join(SEEDS, name), "wb") as f:
            f.write(GOOD.get(name) or BAD[name])


if __name__ == "__main__":
    main()
