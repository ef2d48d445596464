// What phase II reports of its progress.

#pragma once

#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/engine/ProgressReport.h"

class CarmaAssociationAlgorithm;

// Answers from the live engine, which must outlive the report. Integers: "nTrans", the transactions of phase
// I; "nTransII", those processed so far in phase II; "setTotal", the stored sets now; "itemsets", the
// itemsets of one or more items that the last RunPhaseIIcomplete has found so far, 0 before the first. No
// real values.
class KORASSOC_EXPORT PhaseIIReporter : public ProgressReport {
 public:
  explicit PhaseIIReporter(const CarmaAssociationAlgorithm& engine) : engine_(engine) {}

  int GetIntValue(const std::string& key) const override;
  double GetDoubleValue(const std::string& key) const override;

 private:
  const CarmaAssociationAlgorithm& engine_;
};
