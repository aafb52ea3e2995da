#pragma once
// The published orthogonal wavelet filters, as tables: data only.

#include <vector>

namespace keldo::wavelet {

// Daubechies extremal phase, orders 4, 6, ... 20 (rows 0..8), sum sqrt(2).
const std::vector<std::vector<double>>& DaubechiesRows();
// Least asymmetric, orders 8, 10, ... 20 (rows 0..6), stored with sum 2.
const std::vector<std::vector<double>>& SymmetricRows();
// Coiflets of orders 12, 18, 24, 30 (rows 0..3), sum sqrt(2); order 6 is
// computed from sqrt(7).
const std::vector<std::vector<double>>& CoifletRows();

}  // namespace keldo::wavelet
