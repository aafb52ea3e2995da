#!/usr/bin/env python3
"""Reference bytes for the workshop's single-stream arithmetic coder.

An independent model in plain Python integers of the adaptive coder the
workshop's encoders use on their two streams:

  sig0   significance symbols "0" "1" "+" "-" (values 0..3), one model,
         11 code bits (top 2047, quarters 512, 1024, 1536), maximum total 511
  sigmm  the same symbols in four models chosen by the former symbol
         (model 1 after "+" and at the start, 2 after "-", 3 after "0",
         4 after "1"), 10 code bits (top 1023, quarters 256, 512, 768),
         maximum total 255
  ref    refinement bits "0" "1", one model, 11 code bits, maximum total 511

A model of n symbols keeps counts by sorted index 0..n+1 (index 0 a zero
count, index n+1 the end of the stream, count 1); cum[i] sums the counts of
the indices above i. When the total equals the maximum the whole model is
halved, (f + 1) // 2, before the count grows. The stream closes with the
end index coded in the model in force without an update, then one more
deferred bit: 0 and the deferred bits as ones if low is below the first
quarter, otherwise 1 and the deferred bits as zeros. The bits are packed
eight a byte, the first in the lowest place, the last byte's unused high
bits zero.

Writes workshop_arith.tsv: one line a case,
  name <TAB> stream <TAB> symbols (or "." for none) <TAB> bits emitted
    <TAB> bytes in hex <TAB> counts by sorted index of each model after the
    last update, models apart by "|", counts by ","
    <TAB> the number of halvings, all models together
"""

import random
import sys
from pathlib import Path

STREAMS = {
    # name: (code bits, maximum total, alphabet, models)
    "sig0": (11, 511, "01+-", 1),
    "sigmm": (10, 255, "01+-", 4),
    "ref": (11, 511, "01", 1),
}
MODEL_AFTER = {"+": 0, "-": 1, "0": 2, "1": 3}


class Model:
    def __init__(self, n, max_total):
        self.n = n
        self.max_total = max_total
        self.freq = [0] + [1] * (n + 1)
        self.cum = [n + 1 - i for i in range(n + 2)]
        self.index_of = {c: c + 1 for c in range(n)}
        self.symbol_at = {c + 1: c for c in range(n)}
        self.halvings = 0

    def count(self, i):
        if self.cum[0] == self.max_total:
            self.halvings += 1
            total = 0
            for j in range(self.n + 1, -1, -1):
                self.freq[j] = (self.freq[j] + 1) // 2
                self.cum[j] = total
                total += self.freq[j]
        k = i
        while self.freq[k] == self.freq[k - 1]:
            k -= 1
        if k < i:
            a, b = self.symbol_at[k], self.symbol_at[i]
            self.symbol_at[k], self.symbol_at[i] = b, a
            self.index_of[b] = k
            self.index_of[a] = i
        self.freq[k] += 1
        for j in range(k):
            self.cum[j] += 1


def encode(stream, symbols):
    bits_n, max_total, alphabet, model_count = STREAMS[stream]
    top = (1 << bits_n) - 1
    q1 = top // 4 + 1
    half, q3 = 2 * q1, 3 * q1
    models = [Model(len(alphabet), max_total) for _ in range(model_count)]
    low, high, pending = 0, top, 0
    out = []

    def put(bit):
        nonlocal pending
        out.append(bit)
        out.extend([1 - bit] * pending)
        pending = 0

    def code(model, i):
        nonlocal low, high, pending
        width = high - low + 1
        high = low + width * model.cum[i - 1] // model.cum[0] - 1
        low = low + width * model.cum[i] // model.cum[0]
        while True:
            if high < half:
                put(0)
            elif low >= half:
                put(1)
                low -= half
                high -= half
            elif low >= q1 and high < q3:
                pending += 1
                low -= q1
                high -= q1
            else:
                break
            low *= 2
            high = 2 * high + 1

    current = 0
    for ch in symbols:
        model = models[current]
        i = model.index_of[alphabet.index(ch)]
        code(model, i)
        model.count(i)
        if model_count > 1:
            current = MODEL_AFTER[ch]
    code(models[current], len(alphabet) + 1)
    pending += 1
    if low < q1:
        put(0)
    else:
        put(1)
    packed = []
    for start in range(0, len(out), 8):
        packed.append(sum(b << k for k, b in enumerate(out[start:start + 8])))
    return out, packed, models


def cases():
    rng = random.Random(7341)
    out = [
        ("empty_sig0", "sig0", ""),
        ("empty_sigmm", "sigmm", ""),
        ("empty_ref", "ref", ""),
        ("one_zero_sig0", "sig0", "0"),
        ("one_minus_sig0", "sig0", "-"),
        ("one_plus_sigmm", "sigmm", "+"),
        ("one_one_ref", "ref", "1"),
        ("short_sig0", "sig0", "+0-1100+-01"),
        ("short_sigmm", "sigmm", "+0-1100+-01"),
        ("short_ref", "ref", "0110100111"),
    ]

    def draw(alphabet, weights, length):
        return "".join(rng.choices(alphabet, weights=weights, k=length))

    # Uniform and skewed streams, some long enough to halve their models
    # several times (at 511 after 506 or 508 counts, at 255 in each model).
    out.append(("uniform_sig0", "sig0", draw("01+-", [1, 1, 1, 1], 300)))
    out.append(("skewed_sig0", "sig0", draw("01+-", [30, 8, 2, 1], 2500)))
    out.append(("uniform_sigmm", "sigmm", draw("01+-", [1, 1, 1, 1], 300)))
    out.append(("skewed_sigmm", "sigmm", draw("01+-", [30, 8, 2, 1], 3000)))
    out.append(("runs_sigmm", "sigmm", draw("01+-", [5, 5, 1, 1], 1800)))
    out.append(("uniform_ref", "ref", draw("01", [1, 1], 400)))
    out.append(("skewed_ref", "ref", draw("01", [19, 1], 2200)))
    out.append(("all_zero_ref", "ref", "0" * 1200))
    out.append(("all_minus_sig0", "sig0", "-" * 1100))
    return out


def main():
    target = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).with_name("workshop_arith.tsv")
    lines = []
    for name, stream, symbols in cases():
        bits, packed, models = encode(stream, symbols)
        counts = "|".join(",".join(str(f) for f in m.freq) for m in models)
        halvings = sum(m.halvings for m in models)
        lines.append("\t".join([name, stream, symbols or ".", str(len(bits)),
                                "".join(f"{b:02x}" for b in packed), counts, str(halvings)]))
    target.write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
