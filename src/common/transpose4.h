#pragma once
// Four doubles as one vector (GCC and Clang vector extensions), and the
// transpose of four of them: the data moves, no value changes.

namespace keldo {

typedef double Doubles4 __attribute__((vector_size(32)));

// Rows a[0..3] to columns: out[c] = (a[0][c], a[1][c], a[2][c], a[3][c]).
// out may be a itself.
inline __attribute__((always_inline)) void Transpose4(const Doubles4* a, Doubles4* out) {
  const Doubles4 t0 = __builtin_shufflevector(a[0], a[1], 0, 4, 2, 6);
  const Doubles4 t1 = __builtin_shufflevector(a[0], a[1], 1, 5, 3, 7);
  const Doubles4 t2 = __builtin_shufflevector(a[2], a[3], 0, 4, 2, 6);
  const Doubles4 t3 = __builtin_shufflevector(a[2], a[3], 1, 5, 3, 7);
  out[0] = __builtin_shufflevector(t0, t2, 0, 1, 4, 5);
  out[1] = __builtin_shufflevector(t1, t3, 0, 1, 4, 5);
  out[2] = __builtin_shufflevector(t0, t2, 2, 3, 6, 7);
  out[3] = __builtin_shufflevector(t1, t3, 2, 3, 6, 7);
}

}  // namespace keldo
