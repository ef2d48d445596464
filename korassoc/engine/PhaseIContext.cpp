#include "korassoc/engine/PhaseIContext.h"

#include <algorithm>
#include <climits>
#include <iostream>
#include <stdexcept>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/engine/CeilArray.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "korassoc/engine/PhaseIReporter.h"
#include "korassoc/itemsets/CountBound.h"

using KorAssoc::KorStatus;
using korassoc::detail::completes;
using korassoc::detail::kExceptionCode;
using korassoc::detail::saturatingSum;

namespace {

// A frequency of 0 has no multiples.
bool isMultiple(long long transaction, int frequency) {
  return frequency != 0 && transaction % frequency == 0;
}

}  // namespace

// How far one call of RunPhaseI has come.
struct PhaseIContext::Pass {
  long long transaction;        // the number of the last one read, counted over all calls
  double averageSupport = 0.0;  // after it; 0 while none was read
  bool cancelled = false;
  KorStatus result{};
};

const PhaseIContext& PhaseIContext::instance() {
  static const PhaseIContext instance;
  return instance;
}

KorStatus PhaseIContext::SaveState(Engine& engine, std::fstream& stream) const {
  return engine.phaseIResumable_ ? engine.doSave(stream) : engine.setStatus(KorStatus(4, true));
}

KorStatus PhaseIContext::SaveStateXML(Engine& engine, std::ostream& stream) const {
  return engine.phaseIResumable_ ? engine.doSaveXML(stream) : engine.setStatus(KorStatus(4, true));
}

void PhaseIContext::SetMaxInStoreSets(Engine& engine, int sets) const {
  CarmaContext::SetMaxInStoreSets(engine, sets);
  engine.dictionary_->setMaxInStoreSets(sets);
}

// A callback of the host can have a cancel carried out, and so end the phase that it was called from.
bool PhaseIContext::isLeft(const Engine& engine) const { return engine.state_ != this; }

KorStatus PhaseIContext::RunPhaseI(Engine& engine, int transactions) const {
  const Engine::Passing passing(engine);
  engine.phaseIResumable_ = false;
  Pass pass{engine.transactionsSeen_};
  const auto attempt = [&pass](auto&& work) {
    if (completes(work)) return;
    completes([] { std::cout << "Dictionary Failure" << std::endl; });  // hosts can let the stream throw
    pass.result = KorStatus(kExceptionCode, true);
  };
  attempt([&] { readTransactions(engine, transactions, pass); });
  if (pass.cancelled || !engine.dictionary_) {
    pass.cancelled = true;
    engine.doCancel();
    pass.result = KorStatus(1, true);
  } else if (pass.result.IsOK() && !isLeft(engine)) {
    attempt([&] { close(engine, pass); });
  }
  if (pass.result.IsOK()) {
    attempt([&] { report(engine); });
  } else {
    completes([&] { report(engine); });  // what went wrong first is the result
  }
  if (pass.cancelled) return pass.result;  // the engine's own status is an error
  if (isLeft(engine)) return engine.currentStatus_;
  engine.phaseIResumable_ = pass.result.IsOK();
  return engine.setStatus(pass.result);
}

void PhaseIContext::readTransactions(Engine& engine, int transactions, Pass& pass) const {
  if (engine.iterator_ == nullptr) throw std::logic_error("no transactions");
  const long long seenBefore = pass.transaction;
  const int pruneFrequency = engine.settings_->GetRemoveSmallFreq();
  const int reportFrequency = engine.settings_->GetReportFreqPhaseI();
  for (int i = 0; i < transactions; ++i) {
    if (!engine.iterator_->HasNext()) return;
    if (engine.cancelRequested_) {
      pass.cancelled = true;
      return;
    }
    const Transaction* transaction = engine.iterator_->Next();
    if (transaction == nullptr) return;
    pass.transaction = seenBefore + 1 + i;
    SupportSource* source = engine.settings_->GetSupportSource();
    if (source == nullptr) throw std::logic_error("no support source");
    const double support =
        source->GetSupport(static_cast<int>(std::min<long long>(pass.transaction, INT_MAX)));
    if (isLeft(engine)) return;

    engine.currentSupport_ = support;
    const double averageBefore = engine.ceilings_->average();
    engine.ceilings_->add(support);
    pass.averageSupport = engine.ceilings_->average();
    pass.result = engine.core_->step(*engine.dictionary_, *transaction, averageBefore, pass.averageSupport,
                                     engine.supportCount_);
    if (!pass.result.IsOK() || isLeft(engine)) return;

    if (isMultiple(pass.transaction, pruneFrequency)) {
      engine.peakSets_ = std::max(engine.peakSets_, engine.dictionary_->getTotalSetCount());
      prune(engine, static_cast<double>(pass.transaction) * pass.averageSupport);
      if (isMultiple(pass.transaction, reportFrequency)) report(engine);
      if (isLeft(engine)) return;
    }
  }
}

void PhaseIContext::close(Engine& engine, const Pass& pass) const {
  engine.transactionsSeen_ = engine.core_->transactions();
  if (!isMultiple(pass.transaction, engine.settings_->GetRemoveSmallFreq())) {
    prune(engine, static_cast<double>(pass.transaction) * pass.averageSupport);
  }
}

void PhaseIContext::prune(Engine& engine, double transactionsAtSupport) {
  engine.supportCount_ = korassoc::detail::countBound(transactionsAtSupport);
  const int removed = engine.dictionary_->removeSmallSets(engine.supportCount_);
  engine.setsRemoved_ = saturatingSum(engine.setsRemoved_, removed);
}

void PhaseIContext::report(Engine& engine) {
  ProgressListener* listener = engine.settings_->GetProgressListener();
  if (listener == nullptr) return;
  PhaseIReporter report(engine);
  listener->OnProgress(&report);
}

KorStatus PhaseIContext::EndPhaseI(Engine& engine) const {
  const Engine::Passing passing(engine);
  engine.phaseIResumable_ = false;
  const bool ended = completes([&] {
    const double minCount = engine.transactionsSeen_ * engine.ceilings_->average();
    engine.setsRemoved_ = saturatingSum(engine.setsRemoved_, engine.dictionary_->removeSmallSets(minCount));
    engine.setStatus(KorStatus());
    report(engine);
  });
  if (isLeft(engine)) return engine.currentStatus_;
  if (!ended) return engine.setStatus(KorStatus(kExceptionCode, false));
  engine.changeState(PhaseIIContext::instance());
  return engine.setStatus(KorStatus());  // the listener may have been refused something
}
