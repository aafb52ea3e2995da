#!/usr/bin/python3
"""Writes formula2d_table.tsv: formulas of x and y on the grid of N = 8 over
[-0.5, 0.5] (x and y from -0.5 in steps of 0.125), each value computed by a
hand-written numpy translation of the formula in single precision.

The rules the translations follow: x, y and every constant are float32; the
result of every binary operation is rounded to float32; functions are
computed in double from their argument and their result is rounded only when
it meets a binary operation or at the end. Operators of one group apply by
priority, ^ first, then /, *, -, +, the comparisons, AND, OR; operators of the
same kind left to right.

Run: /usr/bin/python3 tests/data/make_formula2d_table.py > tests/data/formula2d_table.tsv
"""
import math
import numpy as np

N = 8
STEP = 1.0 / N
PI = 3.14159265358979


def R(v):
    """Rounds a double to single precision, as a stored value."""
    return float(np.float32(v))


def C(v):
    """A constant of the program: single precision."""
    return R(v)


def tanh(a):
    return (math.exp(a) - math.exp(-a)) / (math.exp(a) + math.exp(-a))


def sinc(a):
    a = R(a)
    return 1.0 if a == 0 else math.sin(PI * a) / (PI * a)


def sign(a):
    return 1.0 if a > 0 else (-1.0 if a < 0 else 0.0)


def rect(a):
    a = abs(R(a))
    return 1.0 if a < 0.5 else (0.5 if a == 0.5 else 0.0)


def bell(a):
    a = abs(R(a))
    if a >= 0.75:
        return 0.0
    if a <= 0.25:
        return 1.0
    t = 1.5 - 2 * a
    for _ in range(3):
        t = math.sin(t * 1.570796326794895) ** 2
    return t


def b(v):
    return 1.0 if v else 0.0


def g1(i, j):
    """The stored graph G1 of the table's runs: (i - j) / 8 at row i, column j."""
    return R((i - j) / 8.0)


def delta(a):
    return b(-STEP / 2 <= a <= STEP / 2)


CASES = [
    ("x", lambda x, y: x),
    ("y", lambda x, y: y),
    ("x+y", lambda x, y: R(x + y)),
    ("x-y", lambda x, y: R(x - y)),
    ("x*y", lambda x, y: R(x * y)),
    ("x*y+1", lambda x, y: R(R(x * y) + 1)),
    ("2*x+3*y", lambda x, y: R(R(2 * x) + R(3 * y))),
    ("x^2+y^2", lambda x, y: R(R(x ** 2) + R(y ** 2))),
    ("sin(6*x)", lambda x, y: math.sin(R(6 * x))),
    ("cos(4*y)", lambda x, y: math.cos(R(4 * y))),
    ("sin(6*x)*cos(4*y)", lambda x, y: R(math.sin(R(6 * x)) * math.cos(R(4 * y)))),
    ("exp(x+y)", lambda x, y: math.exp(R(x + y))),
    ("exp(-(x^2+y^2))", lambda x, y: math.exp(R(0 - R(R(x ** 2) + R(y ** 2))))),
    ("sqr(x^2+y^2)", lambda x, y: math.sqrt(R(R(x ** 2) + R(y ** 2)))),
    ("abs(x-y)", lambda x, y: abs(R(x - y))),
    ("tanh(3*x)", lambda x, y: tanh(R(3 * x))),
    ("tanh(x)*y", lambda x, y: R(tanh(x) * y)),
    ("sinc(4*x)", lambda x, y: sinc(R(4 * x))),
    ("sinc(x*y*7)", lambda x, y: sinc(R(R(x * y) * 7))),
    ("sign(x)", lambda x, y: sign(x)),
    ("sign(x-y)*2", lambda x, y: R(sign(R(x - y)) * 2)),
    ("rect(2*x)", lambda x, y: rect(R(2 * x))),
    ("rect(x+y)", lambda x, y: rect(R(x + y))),
    ("bell(x)", lambda x, y: bell(x)),
    ("bell(2*y)*x", lambda x, y: R(bell(R(2 * y)) * x)),
    ("x>0", lambda x, y: b(x > 0)),
    ("x>=y", lambda x, y: b(x >= y)),
    ("x<=y", lambda x, y: b(x <= y)),
    ("x<>y", lambda x, y: b(x != y)),
    ("x=y", lambda x, y: b(x == y)),
    ("x<y and y<0.25", lambda x, y: b(b(x < y) == 1 and b(y < C(0.25)) == 1)),
    ("(x<0) or (y>0)", lambda x, y: b(b(x < 0) == 1 or b(y > 0) == 1)),
    ("x^2+y^2<0.1", lambda x, y: b(R(R(x ** 2) + R(y ** 2)) < C(0.1))),
    ("log(1+x^2)", lambda x, y: math.log(R(1 + R(x ** 2)))),
    ("ln(2+y)", lambda x, y: math.log(R(2 + y))),
    ("atn(x)", lambda x, y: math.atan(x)),
    ("tan(x)", lambda x, y: math.tan(x)),
    ("sinh(x+y)", lambda x, y: (math.exp(R(x + y)) - math.exp(-R(x + y))) * 0.5),
    ("cosh(x-y)", lambda x, y: (math.exp(R(x - y)) + math.exp(-R(x - y))) * 0.5),
    ("fac(3)*x", lambda x, y: R(6.0 * x)),
    ("pi*x", lambda x, y: R(C(PI) * x)),
    ("2^x", lambda x, y: R(2.0 ** x)),
    ("x*y*x*y", lambda x, y: R(R(R(x * y) * x) * y)),
    ("1/(1+x^2+y^2)", lambda x, y: R(1 / R(R(1 + R(x ** 2)) + R(y ** 2)))),
    ("x/(y+2)", lambda x, y: R(x / R(y + 2))),
    ("x+h", lambda x, y: R(x + C(1.0 / 8))),
    ("g(3*x)", lambda x, y: float(math.floor(R(3 * x)))),
    ("not(x>0)", lambda x, y: b(b(x > 0) <= 0)),
    ("-x", lambda x, y: R(0 - x)),
    ("x-y-0.25", lambda x, y: R(R(x - y) - C(0.25))),
    ("x+y-0.25", lambda x, y: R(x + R(y - C(0.25)))),
    ("x*y/3", lambda x, y: R(x * R(y / 3))),
    ("2*sin(x)*cos(y)", lambda x, y: R(R(2 * math.sin(x)) * math.cos(y))),
    ("exp(x)/exp(y)", lambda x, y: R(math.exp(x) / math.exp(y))),
    ("x^3-3*x*y^2", lambda x, y: R(R(x ** 3) - R(R(3 * x) * R(y ** 2)))),
    ("0.1*x", lambda x, y: R(C(0.1) * x)),
    ("x+0.1", lambda x, y: R(x + C(0.1))),
    ("1E-3*y", lambda x, y: R(C(0.001) * y)),
    ("abs(x)^0.5", lambda x, y: R(abs(x) ** 0.5)),
    ("cos(pi*x)*cos(pi*y)", lambda x, y: R(math.cos(R(C(PI) * x)) * math.cos(R(C(PI) * y)))),
    ("(x+y)^2", lambda x, y: R(R(x + y) ** 2)),
    ("sqr(abs(x*y))", lambda x, y: math.sqrt(abs(R(x * y)))),
    ("sin(x)^2+cos(x)^2", lambda x, y: R(R(math.sin(x) ** 2) + R(math.cos(x) ** 2))),
    ("delta(x)", lambda x, y: delta(x)),
    ("delta(y-0.0625)", lambda x, y: delta(R(y - C(0.0625)))),
    ("x<y<0.25", lambda x, y: b(b(x < y) == 1 and b(y < C(0.25)) == 1)),
    ("x>=y>=-0.25", lambda x, y: b(b(x >= y) == 1 and b(y >= C(-0.25)) == 1)),
    ("sumi(x*i)\\i=1,3", lambda x, y: R(x * 1) + R(x * 2) + R(x * 3)),
    ("sumi(y^i)\\i=0,4", lambda x, y: sum(R(y ** k) for k in range(5))),
    ("sumj(x*j+y)\\j=1,2", lambda x, y: R(R(x * 1) + y) + R(R(x * 2) + y)),
    # The parameters are spliced in as groups: "(2)*X+(0-3)*Y".
    ("a*x+b*y\\a=2\\b=-3", lambda x, y: R(R(2 * x) + R(R(0 - 3) * y))),
]


# Formulas that read the stored graph G1; fn(x, y, g) with g = G1 there.
GRAPH_CASES = [
    ("G1", lambda x, y, g: g),
    ("G1+x", lambda x, y, g: R(g + x)),
    ("G1*G1-y", lambda x, y, g: R(R(g * g) - y)),
    ("x<G1", lambda x, y, g: b(x < g)),
    ("abs(G1)^0.5*sign(G1)", lambda x, y, g: R(R(abs(g) ** 0.5) * sign(g))),
    ("G1+G2", lambda x, y, g: g),  # G2 is empty: it reads 0
]


def main():
    print("# formula\ti\tj\tvalue (row i is y, column j is x; G1 is (i-j)/8); written by make_formula2d_table.py")
    for i in range(N + 1):
        for j in range(N + 1):
            x = R(-0.5 + j * STEP)
            y = R(-0.5 + i * STEP)
            for text, fn in CASES:
                print(f"{text}\t{i}\t{j}\t{R(fn(x, y))!r}")
            for text, fn in GRAPH_CASES:
                print(f"{text}\t{i}\t{j}\t{R(fn(x, y, g1(i, j)))!r}")


main()
