#pragma once
// The samples of a form's graphs and the domain of each: `capacity` slots
// of one row length, `workRows` more rows, and per slot (two to spare) the
// left end a, right end b, step h and largest magnitude. A one-dimensional
// form keeps rows of N+1 samples and a margin; a two-dimensional form keeps
// a whole matrix in each row.

#include <algorithm>
#include <cstddef>
#include <vector>

namespace keldo {

template <class Sample, class Scalar = double>
struct GraphStore {
  std::size_t rowLength = 0;
  int capacity = 0;
  int workRows = 1;
  std::vector<Sample> values;  // capacity + workRows rows
  std::vector<Scalar> a, b, h, peak;

  // Sizes every array for `count` slots of `length` samples; `keep`
  // keeps what the slots hold, otherwise everything becomes 0.
  void Size(std::size_t length, int count, bool keep) {
    rowLength = length;
    capacity = count;
    if (!keep) values.clear();
    values.resize(static_cast<std::size_t>(capacity + workRows) * rowLength, Sample{});
    for (std::vector<Scalar>* v : {&a, &b, &h, &peak}) {
      if (!keep) v->clear();
      v->resize(static_cast<std::size_t>(capacity) + 2, Scalar{});
    }
  }
  // Room for at least `count` graphs, keeping the present ones.
  void Grow(int count) {
    if (count > capacity) Size(rowLength, count, true);
  }

  Sample* Row(int g) { return values.data() + rowLength * static_cast<std::size_t>(g); }
  const Sample* Row(int g) const { return values.data() + rowLength * static_cast<std::size_t>(g); }

  // Moves slots first+1 .. count-1 down by one over slot `first`: the first
  // `samples` of each row and the domain.
  void Remove(int first, int count, std::size_t samples) {
    for (int k = first + 1; k < count; ++k) {
      std::copy_n(Row(k), samples, Row(k - 1));
      const auto from = static_cast<std::size_t>(k), to = from - 1;
      a[to] = a[from];
      b[to] = b[from];
      h[to] = h[from];
      peak[to] = peak[from];
    }
  }
};

}  // namespace keldo
