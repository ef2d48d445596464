// What the search for rules and consequents reports of its progress.

#pragma once

#include <string>

#include "korassoc/engine/ProgressReport.h"

// Integer values: "bounds", the sets searched or collected so far, and "setTotal", the sets to go through. No
// real values.
class CreateRulesReporter : public ProgressReport {
 public:
  CreateRulesReporter(int bounds, int setTotal) : bounds_(bounds), setTotal_(setTotal) {}

  int GetIntValue(const std::string& key) const override;
  double GetDoubleValue(const std::string& key) const override;

 private:
  int bounds_;
  int setTotal_;
};
