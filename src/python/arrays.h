#pragma once
// What every binding of the Python module shares: reading numpy arrays into
// the plain vectors the core takes, checking their shapes and sizes first,
// and handing results back as numpy arrays. A bad argument becomes a Python
// exception (TypeError for the wrong kind of data, ValueError for the wrong
// shape, size or value), with the catalogue's words where one fits; nothing
// reaches the core unchecked.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <complex>
#include <cstddef>
#include <string>
#include <vector>

namespace keldo::python {

namespace py = pybind11;

// The largest arrays the module takes: 2^24 samples in one dimension, 4096
// on a side in two. They bound the memory a careless call can ask for.
constexpr int kLargestExponent1D = 24;
constexpr int kLargestSide2D = 4096;

// A real matrix read from numpy: row-major, rows * columns values.
struct RealMatrix {
  int rows = 0, columns = 0;
  std::vector<double> v;
  double At(int r, int c) const { return v[static_cast<std::size_t>(r) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(c)]; }
};

// ValueError "message N: <catalogue text>", as a script run prints it.
[[noreturn]] void ThrowCatalogue(int number);
[[noreturn]] void ThrowValue(const std::string& text);

// A one-dimensional array of real numbers (bool, integer or floating
// point), every value finite. TypeError for complex or non-numeric data,
// ValueError for another number of dimensions or a non-finite value.
// `spare` values of room are kept after the data, so that a kernel's work
// array of n + spare needs no second copy.
std::vector<double> RealVector(const py::handle& object, const char* name, std::size_t spare = 0);
// The same for complex data (real data is taken with zero imaginary parts).
std::vector<std::complex<double>> ComplexVector(const py::handle& object, const char* name);
// A two-dimensional real array.
RealMatrix RealMatrixOf(const py::handle& object, const char* name);
// The same read straight into single precision, row-major, for the
// routines that compute in floats; rows and columns set from the shape.
std::vector<float> FloatMatrixOf(const py::handle& object, const char* name, int& rows, int& columns);
// A graph of the two-dimensional form read from an N by N matrix, or an
// N+1 by N+1 one whose last row and column are carried through, N = 2^m
// with 1 <= m <= 12: single precision, rows of `stride` = N + 1 values, the
// extra row and column 0 when the matrix has none. `side` is the matrix's.
struct SquareGraph {
  int side = 0, m = 0, n = 0;
  std::size_t stride = 0;
  std::vector<float> v;
};
SquareGraph SquareGraphOf(const py::handle& object, const char* name);
// The first side by side values of rows of `stride` floats, as a new array.
py::array_t<double> SquareGraphToArray(const float* values, int side, std::size_t stride);

// True when the array's values are complex.
bool IsComplexArray(const py::handle& object);

// A Python integer that fits an int; TypeError for another type, ValueError
// for one too large.
int IntOf(const py::handle& object, const char* name);

// M with n = 2^M and low <= M <= high, or ValueError naming the argument.
int PowerOfTwoExponent(std::size_t n, int low, int high, const char* name);

// Fresh numpy arrays holding copies of the values.
py::array_t<double> ToArray(const double* values, std::size_t count);
py::array_t<double> ToArray(const std::vector<double>& values);
// The first `count` values of a vector handed over to numpy without a copy.
py::array_t<double> ToArray(std::vector<double>&& values, std::size_t count);
py::array_t<double> ToMatrix(const double* values, int rows, int columns);
py::array_t<std::complex<double>> ToComplexArray(const double* re, const double* im, std::size_t count);

// Lower-case letters and digits only: "Daub 9/7" and "daub-9/7" read alike.
std::string Folded(const std::string& text);

}  // namespace keldo::python
