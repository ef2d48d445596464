#include "korassoc/engine/PhaseIReporter.h"

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CeilArray.h"

int PhaseIReporter::GetIntValue(const std::string& key) const {
  const CarmaCore* core = engine_.core_.get();
  const int setTotal = engine_.dictionary_ ? engine_.dictionary_->getTotalSetCount() : 0;
  if (key == "nTrans") return core != nullptr ? core->transactions() : 0;
  if (key == "longAdded") return core != nullptr ? core->longAdded() : 0;
  if (key == "maxExt") return core != nullptr ? core->maxExtension() : 0;
  if (key == "setTotal") return setTotal;
  if (key == "removed") return engine_.setsRemoved_;
  if (key == "memory") return engine_.peakSets_ != 0 ? engine_.peakSets_ : setTotal;
  return 0;
}

double PhaseIReporter::GetDoubleValue(const std::string& key) const {
  if (key == "aveExt") return engine_.core_ ? engine_.core_->averageExtension() : 0.0;
  if (key == "avSigma") return engine_.ceilings_ ? engine_.ceilings_->average() : 0.0;
  if (key == "sigma") return engine_.currentSupport_;
  return 0.0;
}
