// What the library writes of a list of transactions.

#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "tests/support/Hosts.h"
#include "tests/support/VectorTransactions.h"

// An engine after both passes, and its documents.
class ExportedModel {
 public:
  // support: a fraction, for both passes.
  ExportedModel(const Transactions& transactions, double support)
      : settings_(settingsWithSupport(support)), source_(transactions) {
    engine_ = std::make_unique<CarmaAssociationAlgorithm>(settings_.get(), &source_);
    EXPECT_TRUE(engine_->RunPhaseI(source_.size()).IsOK());
    EXPECT_TRUE(engine_->RunPhaseII().IsOK());
  }

  std::string rules(double minSupport, double minConfidence, bool nonRedundant) {
    std::ostringstream out;
    EXPECT_TRUE(engine_->ExportRulesXML(out, minSupport, minConfidence, nonRedundant).IsOK());
    return out.str();
  }
  std::string lattice() {
    std::ostringstream out;
    EXPECT_TRUE(engine_->ExportLatticeXML(out).IsOK());
    return out.str();
  }

 private:
  std::unique_ptr<CarmaSettings> settings_;
  VectorTransactions source_;
  std::unique_ptr<CarmaAssociationAlgorithm> engine_;
};
