#pragma once
// Reading a wavelet from Python: an integer code as the transforms take it
// (-1 Haar, 1..9 Daubechies of order 2(code + 1), 1..5 coiflets of order
// 6 code with family "coiflet", 101..110 the "Other" list) or a name
// ("Haar", "Daub4".."Daub20", "Coif6".."Coif30", or an "Other" name such as
// "Daub 9/7"), checked with the forms' own rules and messages.

#include <pybind11/pybind11.h>

#include <string>

#include "wavelet/series.h"

namespace keldo::python {

// The choice and the levels for n = 2^m points; ValueError with the
// catalogue's message (13, 14, 15, 21, 80) when the forms would refuse it.
wavelet::WaveletChoice WaveletChoiceOf(const pybind11::handle& code, const std::string& family, bool symmetric, int m,
                                       int levels);

}  // namespace keldo::python
