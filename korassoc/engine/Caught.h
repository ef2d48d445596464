// Where exceptions end: at the border of the engine.

#pragma once

#include "korassoc/engine/Exceptions.h"

namespace korassoc::detail {

// Runs work and says whether it came through without an exception. Nothing that it throws gets out; the
// library's own exceptions, which come as pointers, are freed.
template <typename Work>
bool completes(Work&& work) {
  try {
    work();
    return true;
  } catch (...) {
    discardCurrentException();
    return false;
  }
}

// An exception inside the work of the engine or the dictionary.
inline constexpr int kExceptionCode = 40001;

}  // namespace korassoc::detail
