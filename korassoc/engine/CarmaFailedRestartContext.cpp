#include "korassoc/engine/CarmaFailedRestartContext.h"

const CarmaFailedRestartContext& CarmaFailedRestartContext::instance() {
  static const CarmaFailedRestartContext instance;
  return instance;
}
