// The Python module: numpy arrays in and out of the routines the forms
// call, and the script runner on headless forms.

#include "python/bindings.h"

PYBIND11_MODULE(keldo, m) {
  m.doc() = R"(KELDO's Fourier and wavelet routines for numpy arrays.

Every routine is the one the program's forms call, with the forms' scalings
and layouts; run() drives headless forms with a keldo-run script.)";
  keldo::python::BindFourier(m);
  keldo::python::BindWavelet(m);
  keldo::python::BindTimeFrequency(m);
  keldo::python::BindImages(m);
  keldo::python::BindScript(m);
}
