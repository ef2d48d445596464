// Where exceptions end: at the border of the engine, and of the lattice.

#pragma once

#include "korassoc/engine/Exceptions.h"
#include "korassoc/engine/KorStatus.h"

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

// The status that work answers; 40001, error, when it throws.
template <typename Work>
KorAssoc::KorStatus caughtStatus(Work&& work) {
  KorAssoc::KorStatus status(kExceptionCode, false);
  completes([&] { status = work(); });
  return status;
}

}  // namespace korassoc::detail
