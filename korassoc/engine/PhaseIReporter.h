// What phase I reports of its progress.

#pragma once

#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/engine/ProgressReport.h"

class CarmaAssociationAlgorithm;

// Answers from the live engine, which must outlive the report. Integers:
//   "nTrans"     transactions processed
//   "longAdded"  items of the longest set added
//   "maxExt"     the most stored sets that one transaction extended
//   "setTotal"   stored sets now
//   "removed"    sets removed by pruning so far
//   "memory"     the most sets at a pruning point; before the first one, the stored sets now
// Real values:
//   "aveExt"     the mean number of stored sets that a transaction extended
//   "avSigma"    the average support, a fraction
//   "sigma"      the support of the last transaction, a fraction
// What an engine that was cancelled has given up counts as 0.
class KORASSOC_EXPORT PhaseIReporter : public ProgressReport {
 public:
  explicit PhaseIReporter(const CarmaAssociationAlgorithm& engine) : engine_(engine) {}

  int GetIntValue(const std::string& key) const override;
  double GetDoubleValue(const std::string& key) const override;

 private:
  const CarmaAssociationAlgorithm& engine_;
};
