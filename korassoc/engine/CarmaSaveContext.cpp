#include "korassoc/engine/CarmaSaveContext.h"

#include "korassoc/engine/CarmaAssociationAlgorithm.h"

const CarmaSaveContext& CarmaSaveContext::instance() {
  static const CarmaSaveContext instance;
  return instance;
}

void CarmaSaveContext::Cancel(Engine& engine) const { engine.cancelRequested_ = true; }
