"""Little-endian fields for the scripts that write the form files byte by
byte: 16- and 32-bit integers, doubles, and a text after its 32-bit length
(a length given apart makes a file whose length lies)."""
import struct


def i16(v):
    return struct.pack("<h", v)


def i32(v):
    return struct.pack("<i", v)


def f64(v):
    return struct.pack("<d", v)


def text(s, length=None):
    b = s.encode("latin-1")
    return i32(len(b) if length is None else length) + b
