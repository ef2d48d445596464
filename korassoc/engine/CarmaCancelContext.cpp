#include "korassoc/engine/CarmaCancelContext.h"

const CarmaCancelContext& CarmaCancelContext::instance() {
  static const CarmaCancelContext instance;
  return instance;
}
