// An engine whose state is being written: what the stream may call back cannot change what is saved.

#pragma once

#include "korassoc/engine/CarmaContext.h"

class CarmaSaveContext : public CarmaContext {
 public:
  static const CarmaSaveContext& instance();

  // Remembers the wish alone; the dictionary, which is being written, is left as it is.
  void Cancel(Engine& engine) const override;

 protected:
  korassoc::detail::State state() const override { return korassoc::detail::State::Save; }
};
