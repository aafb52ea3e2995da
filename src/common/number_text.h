#pragma once
// The number formats the system shows, kept in one place.

#include <string>

namespace keldo {

// An integer as a Str-like conversion writes it: a leading blank for zero and
// positive numbers, a minus sign otherwise ("1DGraph " + StrInt(1) is
// "1DGraph  1").
std::string StrInt(long long value);

// The label format "#0.###": at least one integer digit, at most three
// decimals, trailing zeros dropped, and a trailing "." removed.
std::string FormatLabel(double value);

// The shortest text that reads back to the same double (up to 17 significant
// digits); "nan", "inf" and "-inf" for the special values.
std::string RoundTripText(double value);

// The plain text form of a double: up to 15 significant digits, an exponent
// written as E+20 or E-05 when the number is very large or very small.
std::string PlainNumber(double value);

// The plain form with a leading blank for zero and positive numbers, a minus
// sign otherwise: " 0.5", "-2".
std::string StrNumber(double value);

// The number at the start of a text, as a numeric conversion of typed text
// reads it: blanks skipped, an optional sign, digits with one point, an
// optional exponent (E or D); 0 when no number stands there.
double Val(const std::string& text);

// "##0.#" and "#0.##": a fixed number of decimals, trailing zeros dropped;
// the point stays when no decimal is left, as the format writes it.
std::string FormatDecimals(double value, int decimals);

// A single-precision value in its plain text form (7 significant digits),
// with the leading blank of StrNumber.
std::string StrSingle(float value);

}  // namespace keldo
