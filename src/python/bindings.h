#pragma once
// The parts of the module, each adding its routines to it.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "wavelet/image_transform.h"

namespace keldo::python {

void BindFourier(pybind11::module_& m);
void BindWavelet(pybind11::module_& m);
void BindTimeFrequency(pybind11::module_& m);
void BindImages(pybind11::module_& m);
void BindScript(pybind11::module_& m);

// The image processor's wavelet from 1..3 or its name; ValueError otherwise.
int ImageWaveletIndex(const pybind11::handle& wavelet);
// An image as a plane, its sides multiples of 2^levels and levels within
// the image processor's limit (message 21 otherwise).
wavelet::ImagePlane ImagePlaneOf(const pybind11::handle& image, const char* name, int levels, int index);
pybind11::array_t<double> PlaneToArray(const wavelet::ImagePlane& plane);

}  // namespace keldo::python
