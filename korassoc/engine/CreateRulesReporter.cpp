#include "korassoc/engine/CreateRulesReporter.h"

int CreateRulesReporter::GetIntValue(const std::string& key) const {
  if (key == "bounds") return bounds_;
  if (key == "setTotal") return setTotal_;
  if (key == "antecedents") return antecedents_;
  return 0;
}

double CreateRulesReporter::GetDoubleValue(const std::string& /*key*/) const { return 0.0; }
