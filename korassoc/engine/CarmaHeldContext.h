// What a callback of a pass, or of the stream of an export, may not do.

#pragma once

#include "korassoc/engine/CarmaContext.h"

// Stands before the state of the engine while the host has the word in the middle of a pass or of an export.
// No engine is ever in it: it only answers what would change the sets that are counted or written.
class CarmaHeldContext : public CarmaContext {
 public:
  static const CarmaHeldContext& inPass();
  static const CarmaHeldContext& inExport();

 protected:
  korassoc::detail::State state() const override { return state_; }

 private:
  explicit constexpr CarmaHeldContext(korassoc::detail::State state) : state_(state) {}

  korassoc::detail::State state_;
};
