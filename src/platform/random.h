#pragma once
// Uniform random numbers in [0, 1), seeded from the clock unless a seed is given.

#include <cstdint>

namespace keldo::platform {

class Random {
 public:
  virtual ~Random() = default;
  virtual void Seed(std::uint64_t seed) = 0;
  virtual void SeedFromClock() = 0;
  virtual double Next() = 0;
};

}  // namespace keldo::platform
