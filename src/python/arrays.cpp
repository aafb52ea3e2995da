#include "python/arrays.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <limits>
#include <cmath>

#include "app/catalogue.h"

namespace keldo::python {
namespace {

py::array AsArray(const py::handle& object, const char* name) {
  py::array a = py::array::ensure(object);
  if (!a) throw py::type_error(std::string(name) + " must be an array of numbers");
  return a;
}

// The dtype kinds that hold plain numbers: bool, signed, unsigned, float.
bool IsRealKind(char kind) { return kind == 'b' || kind == 'i' || kind == 'u' || kind == 'f'; }

// One pass with no early exit, so that the compiler can take the values
// several at a time: a NaN fails the comparison, an infinity exceeds it.
void CheckFinite(const double* values, std::size_t count, const char* name) {
  bool finite = true;
  for (std::size_t i = 0; i < count; ++i) finite &= std::fabs(values[i]) <= std::numeric_limits<double>::max();
  if (!finite) throw py::value_error(std::string(name) + " must hold finite values");
}

}  // namespace

void ThrowCatalogue(int number) {
  throw py::value_error("message " + std::to_string(number) + ": " + CatalogueMessage(number));
}

void ThrowValue(const std::string& text) { throw py::value_error(text); }

bool IsComplexArray(const py::handle& object) {
  py::array a = py::array::ensure(object);
  return a && a.dtype().kind() == 'c';
}

std::vector<double> RealVector(const py::handle& object, const char* name, std::size_t spare) {
  py::array a = AsArray(object, name);
  const char kind = a.dtype().kind();
  if (kind == 'c') throw py::type_error(std::string(name) + " must be real, not complex");
  if (!IsRealKind(kind)) throw py::type_error(std::string(name) + " must be an array of numbers");
  if (a.ndim() != 1) throw py::value_error(std::string(name) + " must be one-dimensional");
  auto d = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(a);
  std::vector<double> v;
  v.reserve(static_cast<std::size_t>(d.size()) + spare);
  v.assign(d.data(), d.data() + d.size());
  CheckFinite(v.data(), v.size(), name);
  return v;
}

std::vector<float> FloatMatrixOf(const py::handle& object, const char* name, int& rows, int& columns) {
  py::array a = AsArray(object, name);
  const char kind = a.dtype().kind();
  if (kind == 'c') throw py::type_error(std::string(name) + " must be real, not complex");
  if (!IsRealKind(kind)) throw py::type_error(std::string(name) + " must be an array of numbers");
  if (a.ndim() != 2) throw py::value_error(std::string(name) + " must be two-dimensional");
  if (a.shape(0) < 1 || a.shape(1) < 1 || a.shape(0) > kLargestSide2D || a.shape(1) > kLargestSide2D)
    throw py::value_error(std::string(name) + " must have sides from 1 to " + std::to_string(kLargestSide2D));
  rows = static_cast<int>(a.shape(0));
  columns = static_cast<int>(a.shape(1));
  std::vector<float> v;
  bool finite = true;
  const auto take = [&](const auto* p, std::size_t count) {
    v.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      v[i] = static_cast<float>(p[i]);
      finite = finite && std::isfinite(v[i]);
    }
  };
  if (kind == 'f' && a.itemsize() == 4) {
    auto f = py::array_t<float, py::array::c_style | py::array::forcecast>::ensure(a);
    take(f.data(), static_cast<std::size_t>(f.size()));
  } else {
    auto d = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(a);
    take(d.data(), static_cast<std::size_t>(d.size()));
  }
  if (!finite) throw py::value_error(std::string(name) + " must hold finite values in single precision");
  return v;
}

std::vector<std::complex<double>> ComplexVector(const py::handle& object, const char* name) {
  py::array a = AsArray(object, name);
  const char kind = a.dtype().kind();
  if (kind != 'c' && !IsRealKind(kind)) throw py::type_error(std::string(name) + " must be an array of numbers");
  if (a.ndim() != 1) throw py::value_error(std::string(name) + " must be one-dimensional");
  auto d = py::array_t<std::complex<double>, py::array::c_style | py::array::forcecast>::ensure(a);
  std::vector<std::complex<double>> v(d.data(), d.data() + d.size());
  for (const auto& z : v)
    if (!std::isfinite(z.real()) || !std::isfinite(z.imag()))
      throw py::value_error(std::string(name) + " must hold finite values");
  return v;
}

RealMatrix RealMatrixOf(const py::handle& object, const char* name) {
  py::array a = AsArray(object, name);
  const char kind = a.dtype().kind();
  if (kind == 'c') throw py::type_error(std::string(name) + " must be real, not complex");
  if (!IsRealKind(kind)) throw py::type_error(std::string(name) + " must be an array of numbers");
  if (a.ndim() != 2) throw py::value_error(std::string(name) + " must be two-dimensional");
  if (a.shape(0) < 1 || a.shape(1) < 1 || a.shape(0) > kLargestSide2D || a.shape(1) > kLargestSide2D)
    throw py::value_error(std::string(name) + " must have sides from 1 to " + std::to_string(kLargestSide2D));
  auto d = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(a);
  RealMatrix m;
  m.rows = static_cast<int>(a.shape(0));
  m.columns = static_cast<int>(a.shape(1));
  m.v.assign(d.data(), d.data() + d.size());
  CheckFinite(m.v.data(), m.v.size(), name);
  return m;
}

SquareGraph SquareGraphOf(const py::handle& object, const char* name) {
  int rows = 0, columns = 0;
  const std::vector<float> a = FloatMatrixOf(object, name, rows, columns);
  if (rows != columns) throw py::value_error(std::string(name) + " must be square");
  const bool power = (rows & (rows - 1)) == 0;
  SquareGraph g;
  g.side = rows;
  g.m = PowerOfTwoExponent(static_cast<std::size_t>(power ? rows : rows - 1), 1, 12, "the matrix's side");
  g.n = 1 << g.m;
  g.stride = static_cast<std::size_t>(g.n) + 1;
  g.v.assign(g.stride * g.stride, 0.0f);
  for (int r = 0; r < rows; ++r) {
    const auto row = a.begin() + static_cast<std::ptrdiff_t>(r) * columns;
    std::copy(row, row + columns, g.v.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(r) * g.stride));
  }
  return g;
}

py::array_t<double> SquareGraphToArray(const float* values, int side, std::size_t stride) {
  py::array_t<double> out({static_cast<py::ssize_t>(side), static_cast<py::ssize_t>(side)});
  double* o = out.mutable_data();
  for (int r = 0; r < side; ++r)
    for (int c = 0; c < side; ++c) *o++ = values[static_cast<std::size_t>(r) * stride + static_cast<std::size_t>(c)];
  return out;
}

int IntOf(const py::handle& object, const char* name) {
  if (!py::isinstance<py::int_>(object)) throw py::type_error(std::string(name) + " must be an integer");
  int overflow = 0;
  const long long v = PyLong_AsLongLongAndOverflow(object.ptr(), &overflow);
  if (overflow != 0 || v < INT_MIN || v > INT_MAX) throw py::value_error(std::string(name) + " is out of range");
  return static_cast<int>(v);
}

int PowerOfTwoExponent(std::size_t n, int low, int high, const char* name) {
  for (int m = low; m <= high; ++m)
    if (n == (std::size_t{1} << m)) return m;
  throw py::value_error(std::string(name) + " must have a power of two from 2^" + std::to_string(low) + " to 2^" +
                        std::to_string(high) + " values, not " + std::to_string(n));
}

py::array_t<double> ToArray(const double* values, std::size_t count) {
  py::array_t<double> out(static_cast<py::ssize_t>(count));
  std::copy(values, values + count, out.mutable_data());
  return out;
}

py::array_t<double> ToArray(const std::vector<double>& values) { return ToArray(values.data(), values.size()); }

py::array_t<double> ToArray(std::vector<double>&& values, std::size_t count) {
  auto* owner = new std::vector<double>(std::move(values));
  py::capsule release(owner, [](void* p) { delete static_cast<std::vector<double>*>(p); });
  return py::array_t<double>(static_cast<py::ssize_t>(count), owner->data(), release);
}

py::array_t<double> ToMatrix(const double* values, int rows, int columns) {
  py::array_t<double> out({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(columns)});
  std::copy(values, values + static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), out.mutable_data());
  return out;
}

py::array_t<std::complex<double>> ToComplexArray(const double* re, const double* im, std::size_t count) {
  py::array_t<std::complex<double>> out(static_cast<py::ssize_t>(count));
  std::complex<double>* z = out.mutable_data();
  for (std::size_t i = 0; i < count; ++i) z[i] = {re[i], im ? im[i] : 0.0};
  return out;
}

std::string Folded(const std::string& text) {
  std::string out;
  for (unsigned char c : text)
    if (std::isalnum(c)) out += static_cast<char>(std::tolower(c));
  return out;
}

}  // namespace keldo::python
