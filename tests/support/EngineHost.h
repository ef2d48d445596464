// A host with everything that a run needs: settings, transactions in memory, an engine.

#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "tests/support/EngineTestAccess.h"
#include "tests/support/Hosts.h"
#include "tests/support/VectorTransactions.h"

inline Transactions repeated(const std::vector<int>& items, int times) {
  return Transactions(static_cast<std::size_t>(times), items);
}

// An engine with a constant support threshold, pruning every 10 transactions.
struct EngineHost {
  explicit EngineHost(const Transactions& transactions, double support = 0.5)
      : settings(settingsWithSupport(support)), source(transactions) {
    settings->SetRemoveSmallFreq(10);
    engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
  }

  TestListener& listen(TestListener::Reaction reaction) {
    auto* listener = new TestListener(std::move(reaction));
    engine->SetProgressListener(listener);
    return *listener;
  }
  TestSupport& support(TestSupport::Rule rule) {
    auto* support = new TestSupport(std::move(rule));
    engine->SetSupportSource(support);
    return *support;
  }
  int count(int item) const {
    return CarmaAssociationAlgorithmTestAccess::dictionary(*engine)->getCount(item);
  }

  std::unique_ptr<CarmaSettings> settings;
  VectorTransactions source;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
};
