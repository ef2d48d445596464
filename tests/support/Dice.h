// Seeded random numbers for tests.

#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

// Numbers that are the same on every platform: the standard fixes the engine, not its distributions.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : engine_(seed) {}

  // 0 <= result < bound.
  int below(int bound) { return static_cast<int>(engine_() % static_cast<std::uint64_t>(bound)); }
  int between(int low, int high) { return low + below(high - low + 1); }
  double fraction() { return static_cast<double>(engine_() >> 11) / 9007199254740992.0; }  // 2^53
  int anyInt() { return static_cast<int>(static_cast<std::uint32_t>(engine_())); }
  bool chance(int percent) { return below(100) < percent; }

  template <typename T>
  const T& oneOf(const std::vector<T>& choices) {
    return choices[static_cast<std::size_t>(below(static_cast<int>(choices.size())))];
  }

  template <typename T>
  void shuffle(std::vector<T>& values) {
    for (int i = static_cast<int>(values.size()) - 1; i > 0; --i) {
      std::swap(values[static_cast<std::size_t>(i)], values[static_cast<std::size_t>(below(i + 1))]);
    }
  }

 private:
  std::mt19937_64 engine_;
};
