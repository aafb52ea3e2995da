#!/usr/bin/env python3
"""Reference bits for the image processor's multi-context arithmetic coder.

An independent model of the coder in plain Python integers: 9 code bits
(top 511, quarters 128, 256, 384), maximum total 127, seven contexts:
1..3 with the characters 0, 1, 2 (run digits and the end mark), 4..7 with
0 and 1 (signs, refinement bits). Frequencies are kept by sorted index with
the total in cum[0]; a model is halved when its total reaches 127 exactly,
over indices 3..0 for the three-character contexts and 2..0 for the others.
The closing step codes index 1 without an update and ends with one more
deferred bit, whose followers are zeros either way.

Writes aswdr_arith.tsv: one line a sequence,
  name <TAB> operations <TAB> emitted bits <TAB> bits+pending after each op
    <TAB> characters the model's decoder reads back
where an operation is E<c>:<ch> (a three-character context), T<c>:<ch>
(a two-character context) or D<c> (the closing step in context c). The
decoder reads the emitted bits, then zeros.
"""

import random
import sys
from pathlib import Path

CODE_BITS = 9
TOP = (1 << CODE_BITS) - 1
FIRST_QUARTER = TOP // 4 + 1
HALF = 2 * FIRST_QUARTER
THIRD_QUARTER = 3 * FIRST_QUARTER
MAX_TOTAL = 127


class Model:
    def __init__(self, characters):
        self.n = characters
        if characters == 3:
            self.freq = [0, 1, 1, 1, 1]
            self.cum = [3, 2, 1, 0, -1]
        else:
            self.freq = [0, 1, 1, 1, 0]
            self.cum = [2, 1, 0, -1, 0]
        self.char_to_index = {k: k + 1 for k in range(characters)}
        self.index_to_char = {k + 1: k for k in range(characters)}

    def update(self, index):
        if self.cum[0] == MAX_TOTAL:
            running = 0
            for j in range(self.n, -1, -1):
                self.freq[j] = (self.freq[j] + 1) // 2
                self.cum[j] = running
                running += self.freq[j]
        k = index
        while self.freq[k] == self.freq[k - 1]:
            k -= 1
        if k < index:
            a, b = self.index_to_char[k], self.index_to_char[index]
            self.index_to_char[k], self.index_to_char[index] = b, a
            self.char_to_index[a] = index
            self.char_to_index[b] = k
        self.freq[k] += 1
        for j in range(k - 1, -1, -1):
            self.cum[j] += 1


def fresh_models():
    return {c: Model(3 if c <= 3 else 2) for c in range(1, 8)}


class Encoder:
    def __init__(self):
        self.models = fresh_models()
        self.low, self.high, self.pending = 0, TOP, 0
        self.bits = []

    def emit(self, bit):
        self.bits.append(bit)
        self.bits.extend([1 - bit] * self.pending)
        self.pending = 0

    def narrow(self, model, index):
        span = self.high - self.low + 1
        self.high = self.low + span * model.cum[index - 1] // model.cum[0] - 1
        self.low = self.low + span * model.cum[index] // model.cum[0]
        while True:
            if self.high < HALF:
                self.emit(0)
            elif self.low >= HALF:
                self.emit(1)
                self.low -= HALF
                self.high -= HALF
            elif self.low >= FIRST_QUARTER and self.high < THIRD_QUARTER:
                self.pending += 1
                self.low -= FIRST_QUARTER
                self.high -= FIRST_QUARTER
            else:
                break
            self.low = 2 * self.low
            self.high = 2 * self.high + 1

    def code(self, context, char):
        model = self.models[context]
        index = model.char_to_index[char]
        self.narrow(model, index)
        model.update(index)

    def done(self, context):
        self.narrow(self.models[context], 1)
        self.pending += 1
        first = 1 if self.low >= FIRST_QUARTER else 0
        self.bits.append(first)
        self.bits.extend([0] * self.pending)
        self.pending = 0


class Decoder:
    def __init__(self, bits):
        self.models = fresh_models()
        self.bits = bits
        self.at = 0
        self.value = 0
        for _ in range(CODE_BITS):
            self.value = 2 * self.value + self.next_bit()
        self.low, self.high = 0, TOP

    def next_bit(self):
        bit = self.bits[self.at] if self.at < len(self.bits) else 0
        self.at += 1
        return bit

    def decode(self, context):
        model = self.models[context]
        span = self.high - self.low + 1
        target = ((self.value - self.low + 1) * model.cum[0] - 1) // span
        index = 1
        while model.cum[index] > target:
            index += 1
        self.high = self.low + span * model.cum[index - 1] // model.cum[0] - 1
        self.low = self.low + span * model.cum[index] // model.cum[0]
        while True:
            if self.high < HALF:
                pass
            elif self.low >= HALF:
                self.value -= HALF
                self.low -= HALF
                self.high -= HALF
            elif self.low >= FIRST_QUARTER and self.high < THIRD_QUARTER:
                self.value -= FIRST_QUARTER
                self.low -= FIRST_QUARTER
                self.high -= FIRST_QUARTER
            else:
                break
            self.low = 2 * self.low
            self.high = 2 * self.high + 1
            self.value = 2 * self.value + self.next_bit()
        char = model.index_to_char[index]
        model.update(index)
        return char


def run_symbols(rng, runs):
    """The symbols of a pass-like stream: runs, signs and refinement bits,
    each in the context its kind's former symbol selects."""
    ops = []
    digit_ctx, sign_ctx, refine_ctx = 1, 4, 6
    for _ in range(runs):
        run = rng.choice([1, 1, 2, 3, 5, 8, 13, 40, 200, 1000])
        run += rng.randrange(run)
        while run >= 2:
            d = run % 2
            ops.append(("E", digit_ctx, d))
            digit_ctx = 2 if d else 1
            run //= 2
        ops.append(("E", digit_ctx, 2))
        digit_ctx = 3
        negative = 1 if rng.random() < 0.4 else 0
        ops.append(("T", sign_ctx, negative))
        sign_ctx = 5 if negative else 4
        for _ in range(rng.randrange(4)):
            kept = 1 if rng.random() < 0.7 else 0
            ops.append(("T", refine_ctx, kept))
            refine_ctx = 7 if kept else 6
    ops.append(("D", digit_ctx, None))
    return ops


def sequences():
    rng = random.Random(20240611)
    out = [
        ("one_digit", [("E", 1, 0), ("D", 1, None)]),
        ("end_mark", [("E", 3, 2), ("D", 3, None)]),
        ("two_char_pair", [("T", 4, 1), ("T", 5, 0), ("D", 1, None)]),
        ("short_mixed", [("E", 1, 1), ("E", 2, 0), ("E", 1, 2), ("T", 4, 0), ("T", 6, 1),
                         ("T", 7, 1), ("E", 3, 1), ("E", 2, 2), ("T", 4, 1), ("D", 3, None)]),
    ]
    # One context far past its first halving, with a skewed source.
    skew = [("E", 1, 0 if rng.random() < 0.85 else rng.choice([1, 2])) for _ in range(600)]
    out.append(("rescale_three", skew + [("D", 1, None)]))
    two = [("T", 6, 1 if rng.random() < 0.93 else 0) for _ in range(700)]
    out.append(("rescale_two", two + [("D", 2, None)]))
    flat = [("T", 5, rng.randrange(2)) for _ in range(300)] + [("E", 2, rng.randrange(3)) for _ in range(300)]
    out.append(("flat", flat + [("D", 2, None)]))
    for k, runs in enumerate([20, 150, 600]):
        out.append((f"passes_{k}", run_symbols(rng, runs)))
    return out


def main():
    target = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).with_name("aswdr_arith.tsv")
    lines = []
    for name, ops in sequences():
        enc = Encoder()
        used = []
        for kind, ctx, ch in ops:
            if kind == "D":
                enc.done(ctx)
            else:
                enc.code(ctx, ch)
            used.append(len(enc.bits) + enc.pending)
        dec = Decoder(enc.bits)
        decoded = [str(dec.decode(ctx)) for kind, ctx, ch in ops if kind != "D"]
        text_ops = " ".join(f"D{ctx}" if kind == "D" else f"{kind}{ctx}:{ch}" for kind, ctx, ch in ops)
        lines.append("\t".join([name, text_ops, "".join(map(str, enc.bits)), ",".join(map(str, used)),
                                "".join(decoded)]))
    target.write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
