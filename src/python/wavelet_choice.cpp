#include "python/wavelet_choice.h"

#include <cctype>

#include "python/arrays.h"
#include "wavelet/transforms.h"

namespace keldo::python {
namespace {

// Family 1 Daubechies, 2 Haar, 3 coiflets, 4 Other, as the side boxes number
// them; the order that the family's order field would hold; the Other name.
struct Spelled {
  int family = 0;
  double order = 0.0;
  std::string otherName;
};

Spelled FromCode(int code, const std::string& family) {
  const std::string f = Folded(family);
  Spelled s;
  if (f == "coiflet" || f == "coiflets" || f == "coif") {
    s.family = 3;
    s.order = 6.0 * code;
  } else if (!f.empty() && f != "daubechies" && f != "daub") {
    ThrowValue("family must be 'daubechies' or 'coiflet'");
  } else if (code == -1) {
    s.family = 2;
  } else if (code >= 101 && code <= 110) {
    s.family = 4;
    s.otherName = wavelet::OtherWaveletNames()[static_cast<std::size_t>(code - 101)];
  } else {
    s.family = 1;
    s.order = 2.0 * (static_cast<double>(code) + 1.0);
  }
  return s;
}

Spelled FromName(const std::string& name) {
  for (const std::string& other : wavelet::OtherWaveletNames())
    if (Folded(other) == Folded(name)) return {4, 0.0, other};
  const std::string f = Folded(name);
  Spelled s;
  std::size_t digits = f.size();
  while (digits > 0 && std::isdigit(static_cast<unsigned char>(f[digits - 1]))) --digits;
  const std::string word = f.substr(0, digits);
  const double order = digits < f.size() && f.size() - digits < 4 ? std::stod(f.substr(digits)) : 0.0;
  if (f == "haar" || f == "walsh") s.family = 2;
  else if (word == "daub" || word == "db" || word == "daubechies") s = {1, order, ""};
  else if (word == "coif" || word == "coiflet") s = {3, order, ""};
  else ThrowValue("unknown wavelet '" + name + "'");
  return s;
}

}  // namespace

wavelet::WaveletChoice WaveletChoiceOf(const pybind11::handle& code, const std::string& family, bool symmetric, int m,
                                       int levels) {
  Spelled s;
  if (pybind11::isinstance<pybind11::str>(code)) s = FromName(code.cast<std::string>());
  else if (pybind11::isinstance<pybind11::int_>(code)) s = FromCode(IntOf(code, "code"), family);
  else throw pybind11::type_error("code must be an integer wavelet code or a wavelet's name");
  wavelet::WaveletChoice choice;
  int checkedLevels = 0;
  const int message = wavelet::CheckWaveletChoice(s.family, levels, m, symmetric, [&] { return s.order; },
                                                  s.otherName, choice, checkedLevels);
  if (message != 0) ThrowCatalogue(message);
  return choice;
}

}  // namespace keldo::python
