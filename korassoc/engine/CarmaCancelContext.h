// An engine that was cancelled: its dictionary is gone, and nothing leads out.

#pragma once

#include "korassoc/engine/CarmaContext.h"

class CarmaCancelContext : public CarmaContext {
 public:
  static const CarmaCancelContext& instance();

 protected:
  korassoc::detail::State state() const override { return korassoc::detail::State::Cancelled; }
};
