#include "korassoc/engine/CarmaHeldContext.h"

using korassoc::detail::State;

const CarmaHeldContext& CarmaHeldContext::inPass() {
  static const CarmaHeldContext instance(State::InPass);
  return instance;
}

const CarmaHeldContext& CarmaHeldContext::inExport() {
  static const CarmaHeldContext instance(State::InExport);
  return instance;
}
