#pragma once
// Eight doubles that the lifting steps treat as one element: every
// operation acts on each lane alone, exactly as on a double (a scalar
// operand, int or double, is taken as that double), so eight lines run
// through a step written once over the element type give each line the
// values it would get on its own. The lines of an image, eight at a time,
// lie in an array of these: lane j of element i is value i of line j.

#include <cmath>

namespace keldo::wavelet {

struct Lanes8 {
  static constexpr int kCount = 8;
  double v[kCount] = {};

  Lanes8& operator+=(const Lanes8& b) {
    for (int j = 0; j < kCount; ++j) v[j] += b.v[j];
    return *this;
  }
  Lanes8& operator-=(const Lanes8& b) {
    for (int j = 0; j < kCount; ++j) v[j] -= b.v[j];
    return *this;
  }
};

inline Lanes8 operator+(Lanes8 a, const Lanes8& b) { return a += b; }
inline Lanes8 operator-(Lanes8 a, const Lanes8& b) { return a -= b; }
inline Lanes8 operator*(Lanes8 a, double s) {
  for (double& x : a.v) x *= s;
  return a;
}
inline Lanes8 operator*(double s, Lanes8 a) {
  for (double& x : a.v) x = s * x;
  return a;
}
inline Lanes8 operator/(Lanes8 a, double s) {
  for (double& x : a.v) x /= s;
  return a;
}
// Each lane rounded to the nearest integer, ties to even (as std::nearbyint
// in the default rounding mode).
inline Lanes8 NearbyInt(Lanes8 a) {
  for (double& x : a.v) x = std::nearbyint(x);
  return a;
}
inline double NearbyInt(double x) { return std::nearbyint(x); }

}  // namespace keldo::wavelet
