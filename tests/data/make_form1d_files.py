#!/usr/bin/env python3
"""Writes one-dimensional form and data files byte by byte with struct, and
the clipboard texts, for the loader tests. Run from this folder:

    python3 make_form1d_files.py

Every file is described in form1d/expected.txt, one line a fact, so a test
can check what the loaders make of it without trusting any writer of ours.
"""
import math
import os
import struct

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "form1d")


def i16(v):
    return struct.pack("<h", v)


def i32(v):
    return struct.pack("<i", v)


def f64(v):
    return struct.pack("<d", v)


def text(s):
    b = s.encode("cp1252")
    return i32(len(b)) + b


def graph_values(kind, n, a, h):
    if kind == "sin":
        return [math.sin(2 * math.pi * (a + i * h)) for i in range(n + 1)]
    if kind == "ramp":
        return [a + i * h for i in range(n + 1)]
    return [0.25 * i for i in range(n + 1)]


def form_file(version, graphs, n=64, history=(), key="", dots="N", back="W", trace=7,
              caption="Caption", remarks="Remarks\r\nline 2", grid="X",
              printer="(B), Medium, top, right", labels=(1, 0, 1), colour="N"):
    out = bytearray()
    out += i16(1)
    out += f64(-1.0) + f64(1.5) + f64(-2.0) + f64(3.0)  # window
    out += f64(0.0) + f64(2.0)  # interval
    out += i32(len(graphs)) + i32(n)
    for kind, a, b in graphs:
        h = (b - a) / n
        out += f64(a) + f64(b) + f64(h)
        for v in graph_values(kind, n, a, h):
            out += f64(v)
    out += text("C:\\figures\\old.kd1")
    out += i32(version)
    if version > 0:
        out += i32(len(history))
        for entry in history:
            out += text(entry)
    if version > 1:
        out += text(key)
    if version > 2:
        out += dots.encode() + back.encode() + i32(trace) + text(caption) + text(remarks)
    if version > 3:
        out += grid.encode()
    if version > 4:
        out += text(printer) + b"".join(i16(v) for v in labels) + colour.encode()
    return bytes(out)


def write(name, data):
    with open(os.path.join(OUT, name), "wb") as f:
        f.write(data)


def main():
    os.makedirs(OUT, exist_ok=True)
    facts = []
    two = [("sin", -0.5, 0.5), ("ramp", 0.0, 2.0)]
    for version in range(6):
        name = "version%d.kd1" % version
        write(name, form_file(version, two, history=("sin(2*pi*x)", "x"), key="Calc"))
        facts.append("%s graphs 2 points 64" % name)
    write("empty.kd1", form_file(5, [], n=128))
    facts.append("empty.kd1 graphs 0 points 128")
    whole = form_file(5, two, history=("sin(2*pi*x)", "x"), key="Calc")
    write("truncated.kd1", whole[:-1])
    write("truncated_graph.kd1", whole[:200])
    bad_n = bytearray(whole)
    bad_n[54:58] = i32(100)
    write("bad_points.kd1", bytes(bad_n))
    huge = bytearray(whole)
    huge[50:54] = i32(0x7FFFFFFF)
    write("huge_count.kd1", bytes(huge))
    write("nonsense.kd1", b"not a form at all")
    write("zero.kd1", b"")

    n = 128
    a, b = -1.0, 1.0
    h = (b - a) / n
    values = graph_values("sin", n, a, h)
    write("sine128.kb1", i32(n) + f64(a) + f64(b) + f64(h) + b"".join(f64(v) for v in values))
    facts.append("sine128.kb1 points 128 a -1 b 1")
    n2 = 64
    a2, b2 = 0.0, 4.0
    v2 = graph_values("ramp", n2, a2, (b2 - a2) / n2)
    write("ramp64.kdt", i16(0) + i16(n2) + f64(a2) + f64(b2) + b"".join(f64(v) for v in v2))
    facts.append("ramp64.kdt points 64 a 0 b 4")
    write("short.kb1", i32(64) + f64(0.0) + f64(1.0) + f64(1.0 / 64) + f64(1.0) * 10)

    def clip(n, a, b, vals, end="\r\n"):
        fields = [repr(n), repr(a), repr(b)] + [repr(v) for v in vals]
        return ("\r\n".join(fields) + end).encode()

    write("clip_ok.txt", clip(64, -1.0, 1.0, [0.5 * i for i in range(65)]))
    write("clip_ab_90.txt", clip(64, 1.0, 2.0, [0.0] * 65))
    write("clip_ab_89.txt", clip(64, 1.0, -1.0, [0.0] * 65))
    write("clip_short_91.txt", clip(64, -1.0, 1.0, [0.0] * 30))
    write("clip_128.txt", clip(128, 0.0, 3.0, [float(i) for i in range(129)]))
    with open(os.path.join(OUT, "expected.txt"), "w") as f:
        f.write("\n".join(facts) + "\n")


if __name__ == "__main__":
    main()
