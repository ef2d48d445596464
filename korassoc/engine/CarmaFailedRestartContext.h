// An engine that could not be made or restored: it has nothing to work on, and nothing leads out.

#pragma once

#include "korassoc/engine/CarmaContext.h"

class CarmaFailedRestartContext : public CarmaContext {
 public:
  static const CarmaFailedRestartContext& instance();

 protected:
  korassoc::detail::State state() const override { return korassoc::detail::State::FailedRestart; }
};
