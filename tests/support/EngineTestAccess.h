// What tests see of an engine's inside.

#pragma once

#include <memory>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaContext.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/CeilArray.h"

struct CarmaAssociationAlgorithmTestAccess {
  using Engine = CarmaAssociationAlgorithm;

  static SetDictionary* dictionary(const Engine& engine) { return engine.dictionary_.get(); }
  static CarmaCore* core(const Engine& engine) { return engine.core_.get(); }
  static CeilArray* ceilings(const Engine& engine) { return engine.ceilings_.get(); }
  static const CarmaContext& state(const Engine& engine) { return *engine.state_; }
  static bool cancelRequested(const Engine& engine) { return engine.cancelRequested_; }
  static bool isResumable(const Engine& engine) { return engine.phaseIResumable_; }
  static int setsRemoved(const Engine& engine) { return engine.setsRemoved_; }
  static int peakSets(const Engine& engine) { return engine.peakSets_; }
  static int transactionsSeen(const Engine& engine) { return engine.transactionsSeen_; }
  static double currentSupport(const Engine& engine) { return engine.currentSupport_; }
  static double supportCount(const Engine& engine) { return engine.supportCount_; }

  static void changeState(Engine& engine, const CarmaContext& state) { engine.changeState(state); }
  static void setStatus(Engine& engine, const KorAssoc::KorStatus& status) { engine.setStatus(status); }
};
