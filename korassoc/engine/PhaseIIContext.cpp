#include "korassoc/engine/PhaseIIContext.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/engine/CeilArray.h"
#include "korassoc/engine/CompletePass.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/PhaseIIReporter.h"
#include "korassoc/itemsets/CountBound.h"

using KorAssoc::KorStatus;
using korassoc::detail::completes;
using korassoc::detail::kExceptionCode;
using korassoc::detail::saturatingInt;

namespace {

// The settings' frequency counts whatever its sign.
int setsBetweenReports(const CarmaSettings& settings) {
  const long long sets = settings.GetDictionarySettings().GetReportFrequency();
  return saturatingInt(static_cast<double>(std::abs(sets)));
}

}  // namespace

// In what the two forms of the second pass differ.
struct PhaseIIContext::Variant {
  bool needsLongSets;  // nothing is counted when the settings allow sets of one item only
  int firstLevel;      // the shortest sets that are counted anew
  bool sameOrder;      // the transactions come as in phase I
};

const PhaseIIContext& PhaseIIContext::instance() {
  static const PhaseIIContext instance;
  return instance;
}

template <typename Work>
KorStatus PhaseIIContext::run(Engine& engine, Work&& work) const {
  const Engine::Passing passing(engine);
  KorStatus result;
  if (!completes([&] { result = work(); })) result = KorStatus(kExceptionCode, false);
  if (engine.cancelRequested_ && result.IsOK()) result = KorStatus(1, false);
  return engine.setStatus(result);
}

KorStatus PhaseIIContext::RunPhaseII(Engine& engine) const {
  return run(engine,
             [&] { return pass(engine, {.needsLongSets = true, .firstLevel = 2, .sameOrder = true}); });
}

KorStatus PhaseIIContext::RunPhaseIIrandom(Engine& engine) const {
  return run(engine,
             [&] { return pass(engine, {.needsLongSets = false, .firstLevel = 1, .sameOrder = false}); });
}

// References are taken before the first callback: one that carries a cancel out takes the engine's pointers
// away. The dictionary is held whenever the host has the word.
KorStatus PhaseIIContext::pass(Engine& engine, const Variant& variant) const {
  if (engine.iterator_ == nullptr) throw std::logic_error("no transactions");
  SetDictionary& dictionary = *engine.dictionary_;
  CarmaCore& core = *engine.core_;
  engine.transactionsSeen_ = core.transactions();
  const bool restarted = restart(engine, dictionary);
  const bool tooMany =
      dictionary.getTotalSetCount() > engine.settings_->GetDictionarySettings().GetMaxInStoreSets();
  const bool hasLongSets = dictionary.getHighestLevel() > 1;
  const bool counts = hasLongSets && (!variant.needsLongSets || engine.settings_->GetMaxLengthSet() > 1);
  if (restarted && !tooMany && counts) return countAgain(engine, dictionary, core, variant);
  if (tooMany) return KorStatus(3, false);
  if (!engine.cancelRequested_ && !hasLongSets) {
    dictionary.buildLattice();
    report(engine, dictionary);
    return KorStatus();
  }
  return restarted ? KorStatus() : KorStatus(2, false);
}

// What phase I has counted need not be counted again, as long as the transactions are the same: that shows
// only when they have been read, and when they are others all is counted.
KorStatus PhaseIIContext::countAgain(Engine& engine, SetDictionary& dictionary, CarmaCore& core,
                                     const Variant& variant) const {
  try {
    if (!variant.sameOrder || !core.preparePhaseIIBeforeTIDs(dictionary, variant.firstLevel))
      core.preparePhaseII(dictionary, variant.firstLevel);
    if (!readAgain(engine, dictionary, core)) return engine.currentStatus_;
    if (!engine.cancelRequested_ && core.hasMetOthers()) {
      if (!restart(engine, dictionary)) {
        dictionary.breakOff();
        return KorStatus(2, false);
      }
      core.preparePhaseII(dictionary, variant.firstLevel);
      if (!readAgain(engine, dictionary, core)) return engine.currentStatus_;
    }
    if (engine.cancelRequested_) return KorStatus();
    core.endPhaseII();
    dictionary.removeSmallSets(engine.transactionsSeen_ * engine.ceilings_->average());
    dictionary.buildLattice();
  } catch (...) {
    dictionary.breakOff();  // the counts are those of a part of the transactions
    throw;
  }
  report(engine, dictionary);
  return KorStatus();
}

bool PhaseIIContext::restart(Engine& engine, const SetDictionary& dictionary) {
  const SetDictionary::Hold hold(dictionary);
  return engine.iterator_->Restart() == 0;
}

// Counts as many transactions as phase I, or those that there are. False when it was cancelled before one.
bool PhaseIIContext::readAgain(Engine& engine, const SetDictionary& dictionary, CarmaCore& core) {
  const SetDictionary::Hold hold(dictionary);  // the core counts by its descriptors
  const int frequency = engine.settings_->GetReportFreqPhaseII();
  for (int count = 0; count < engine.transactionsSeen_;) {
    if (!engine.iterator_->HasNext()) break;
    if (engine.cancelRequested_) {
      engine.doCancel();
      return false;
    }
    const Transaction* transaction = engine.iterator_->Next();
    if (transaction == nullptr) break;
    ++count;
    core.stepPhaseII(dictionary, *transaction);
    if (frequency != 0 && count % frequency == 0) report(engine, dictionary);
  }
  return true;
}

KorStatus PhaseIIContext::RunPhaseIIcomplete(Engine& engine, double minSupport) const {
  return run(engine, [&] { return countCompletely(engine, minSupport); });
}

KorStatus PhaseIIContext::countCompletely(Engine& engine, double minSupport) const {
  using korassoc::detail::CompletePass;
  if (engine.iterator_ == nullptr) throw std::logic_error("no transactions");
  const CarmaSettings& settings = *engine.settings_;
  const int frequency = settings.GetReportFreqPhaseII();
  SetDictionary& dictionary = *engine.dictionary_;
  CarmaCore& core = *engine.core_;
  core.noteTransactionII(0);
  core.noteItemsets(0);
  engine.countThatFits_ = 0;
  const CompletePass::Watch watch{
      .cancelled = [&engine] { return engine.cancelRequested_.load(); },
      .onRead =
          [&](int number) {
            core.noteTransactionII(number);
            if (frequency != 0 && number % frequency == 0) report(engine, dictionary);
          },
      // A host that wants no reports of its transactions wants none of what they make either.
      .itemsetsBetweenCalls = frequency != 0 ? setsBetweenReports(settings) : 0,
      .onFound =
          [&](int itemsets) {
            core.noteItemsets(itemsets);
            report(engine, dictionary);
          }};
  const int maxSets = settings.GetDictionarySettings().GetMaxInStoreSets();
  // The dictionary keeps to the length with which it was made, whatever the settings say by now.
  const int maxLength = std::min(settings.GetMaxLengthSet(), dictionary.maxLevel());
  CompletePass pass(*engine.iterator_,
                    {minSupport, maxLength, std::max(maxSets, 1) - 1, settings.GetCompleteIndexBudget()},
                    watch);
  const auto runHeld = [&] {
    const SetDictionary::Hold hold(dictionary);
    return pass.run();
  };
  switch (runHeld()) {
    case CompletePass::Outcome::kNotRestarted:
      return KorStatus(2, false);
    case CompletePass::Outcome::kTooManySets:
      engine.countThatFits_ = pass.countThatFits();
      if (!engine.cancelRequested_) return KorStatus(3, false);
      [[fallthrough]];
    case CompletePass::Outcome::kCancelled:
      engine.doCancel();
      return engine.currentStatus_;
    case CompletePass::Outcome::kDone:
      break;
  }
  core.endPhaseII();
  core.noteItemsets(saturatingInt(static_cast<double>(pass.itemsets().size())));
  dictionary.adopt(pass.itemsets());
  // What a later pass over the same transactions counts.
  engine.transactionsSeen_ = pass.itemsets().transactionCount;
  core.restoreTransactions(engine.transactionsSeen_, core.averageSupport());
  report(engine, dictionary);
  return KorStatus();
}

KorStatus PhaseIIContext::SaveStateXML(Engine& engine, std::ostream& stream) const {
  if (engine.dictionary_->isBrokenOff()) return engine.setStatus(KorStatus(4, true));
  return engine.doSaveXML(stream);  // what is not OK is code 2, error, here as there
}

KorStatus PhaseIIContext::RunNullPhaseII(Engine& engine, double fraction) const {
  const Engine::Passing passing(engine);
  KorStatus result;
  const bool done = completes([&] {
    const int seen = engine.transactionsSeen_;
    const int added = korassoc::detail::countBoundFromFraction(seen, fraction);
    SetDictionary& dictionary = *engine.dictionary_;
    result = dictionary.takeTransactionCount(korassoc::detail::saturatingSum(seen, added));
    if (!result.IsOK()) return;
    dictionary.removeSmallSets(seen * engine.currentSupport_);
    dictionary.buildLattice();
  });
  if (done) return result;
  if (engine.dictionary_) engine.dictionary_->breakOff();
  return KorStatus(kExceptionCode, false);
}

SemiLattice* PhaseIIContext::GetLattice(Engine& engine) const { return engine.dictionary_.get(); }

KorStatus PhaseIIContext::Ask(Engine& engine, korassoc::detail::Operation /*operation*/,
                              const Query& query) const {
  const Engine::Running running(engine);
  KorStatus result;
  if (!completes([&] { result = query(*engine.dictionary_); })) result = KorStatus(kExceptionCode, false);
  engine.setStatus(result);
  if (result.IsOK() && engine.cancelRequested_) engine.doCancel();
  return engine.currentStatus_;
}

void PhaseIIContext::report(Engine& engine, const SetDictionary& dictionary) {
  ProgressListener* listener = engine.settings_->GetProgressListener();
  if (listener == nullptr) return;
  const SetDictionary::Hold hold(dictionary);
  PhaseIIReporter report(engine);
  listener->OnProgress(&report);
}
