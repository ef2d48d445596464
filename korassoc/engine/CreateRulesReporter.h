// What the search for rules and consequents reports of its progress.

#pragma once

#include <string>

#include "korassoc/engine/ProgressReport.h"

// Integer values: "bounds", the sets searched or collected so far; "setTotal", the sets to go through; and
// "antecedents", those found so far, each of which makes one rule at most. No real values.
class CreateRulesReporter : public ProgressReport {
 public:
  CreateRulesReporter(int bounds, int setTotal, int antecedents = 0)
      : bounds_(bounds), setTotal_(setTotal), antecedents_(antecedents) {}

  int GetIntValue(const std::string& key) const override;
  double GetDoubleValue(const std::string& key) const override;

 private:
  int bounds_;
  int setTotal_;
  int antecedents_;
};
