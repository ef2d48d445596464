#include "korassoc/engine/PhaseIIReporter.h"

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaCore.h"

int PhaseIIReporter::GetIntValue(const std::string& key) const {
  if (key == "nTrans") return engine_.core_ ? engine_.core_->transactions() : 0;
  if (key == "nTransII") return engine_.core_ ? engine_.core_->transactionsII() : 0;
  if (key == "itemsets") return engine_.core_ ? engine_.core_->itemsets() : 0;
  if (key == "setTotal") return engine_.dictionary_ ? engine_.dictionary_->getTotalSetCount() : 0;
  return 0;
}

double PhaseIIReporter::GetDoubleValue(const std::string& /*key*/) const { return 0.0; }
