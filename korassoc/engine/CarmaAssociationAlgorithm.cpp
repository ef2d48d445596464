#include "korassoc/engine/CarmaAssociationAlgorithm.h"

#include <functional>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "korassoc/base/Version.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaCancelContext.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/CarmaFailedRestartContext.h"
#include "korassoc/engine/CarmaHeldContext.h"
#include "korassoc/engine/CarmaSaveContext.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/engine/CeilArray.h"
#include "korassoc/engine/PhaseIContext.h"
#include "korassoc/engine/PhaseIIContext.h"
#include "korassoc/engine/ProgressListener.h"

using KorAssoc::KorStatus;
using korassoc::detail::Answer;
using korassoc::detail::completes;
using korassoc::detail::Operation;
using korassoc::detail::State;

namespace {

// Hands each report of a query to the listener that is installed when it comes: a report may install another
// one, which deletes the former.
class InstalledListener final : public ProgressListener {
 public:
  explicit InstalledListener(const CarmaSettings& settings) : settings_(settings) {}

  void OnProgress(ProgressReport* report) override {
    if (ProgressListener* listener = settings_.GetProgressListener()) listener->OnProgress(report);
  }
  // Null when there is none: then nothing is reported.
  ProgressListener* get() { return settings_.GetProgressListener() != nullptr ? this : nullptr; }

 private:
  const CarmaSettings& settings_;
};

}  // namespace

CarmaAssociationAlgorithm::CarmaAssociationAlgorithm(CarmaSettings* settings, MultiPassTransIter* iterator)
    : settings_(settings), iterator_(iterator), state_(&PhaseIContext::instance()) {
  const bool made = completes([this] {
    if (settings_ == nullptr) throw std::invalid_argument("no settings");
    makeDictionary();
    makeCounters();
    auto emptySet = std::make_unique<CarmaSetDescriptor>(0, 0, 0);
    if (dictionary_->addEmptySet(emptySet.get())) emptySet.release();
  });
  if (!made) failRestart();
}

CarmaAssociationAlgorithm::~CarmaAssociationAlgorithm() = default;

// Only a phase can be within a pass or an export; a save, which holds the dictionary too, has its own state.
const CarmaContext& CarmaAssociationAlgorithm::contextFor(Operation operation) const {
  const CarmaContext& state = *state_;
  const bool inPass = passes_ > 0;
  if (!inPass && !(dictionary_ && dictionary_->isHeld())) return state;
  if (&state != &PhaseIContext::instance() && &state != &PhaseIIContext::instance()) return state;
  const Answer guarded = korassoc::detail::answerOf(operation, inPass ? State::InPass : State::InExport);
  if (guarded.kind == Answer::AsState) return state;
  return inPass ? CarmaHeldContext::inPass() : CarmaHeldContext::inExport();
}

void CarmaAssociationAlgorithm::Cancel() { state_.load()->Cancel(*this); }

KorStatus CarmaAssociationAlgorithm::SaveState(std::fstream& stream) {
  return contextFor(Operation::SaveState).SaveState(*this, stream);
}

KorStatus CarmaAssociationAlgorithm::SaveStateXML(std::ostream& stream) {
  return contextFor(Operation::SaveStateXML).SaveStateXML(*this, stream);
}

void CarmaAssociationAlgorithm::SetProgressListener(ProgressListener* listener) {
  state_.load()->SetProgressListener(*this, listener);
}

void CarmaAssociationAlgorithm::SetSupportSource(SupportSource* source) {
  state_.load()->SetSupportSource(*this, source);
}

void CarmaAssociationAlgorithm::SetMaxInStoreSets(int sets) { state_.load()->SetMaxInStoreSets(*this, sets); }

KorStatus CarmaAssociationAlgorithm::RunPhaseI(int transactions) {
  return transactions > 0 ? contextFor(Operation::RunPhaseI).RunPhaseI(*this, transactions) : KorStatus();
}

KorStatus CarmaAssociationAlgorithm::RunPhaseII() {
  contextFor(Operation::EndPhaseI).EndPhaseI(*this);  // refused when phase I has ended already
  return contextFor(Operation::RunPhaseII).RunPhaseII(*this);
}

KorStatus CarmaAssociationAlgorithm::RunPhaseIIcomplete(double minSupport) {
  const CarmaContext* const state = &contextFor(Operation::RunPhaseIIcomplete);
  const bool isInAPhase = state == &PhaseIContext::instance() || state == &PhaseIIContext::instance();
  const bool isFraction = minSupport >= 0.0 && minSupport <= 1.0;  // no for NaN
  // Before phase I is closed, so that nothing changes. What other states answer goes first.
  if (isInAPhase && !isFraction) return setStatus(KorStatus(korassoc::detail::kExceptionCode, false));
  contextFor(Operation::EndPhaseI).EndPhaseI(*this);
  return contextFor(Operation::RunPhaseIIcomplete).RunPhaseIIcomplete(*this, minSupport);
}

KorStatus CarmaAssociationAlgorithm::RunPhaseIIrandom() {
  contextFor(Operation::EndPhaseI).EndPhaseI(*this);
  return contextFor(Operation::RunPhaseIIrandom).RunPhaseIIrandom(*this);
}

KorStatus CarmaAssociationAlgorithm::RunNullPhaseII(double fraction) {
  if (!cancelRequested_) {
    const KorStatus ended = contextFor(Operation::EndPhaseI).EndPhaseI(*this);
    if (!ended.IsOK()) return ended;
    changeState(PhaseIIContext::instance());
    const KorStatus result = state_.load()->RunNullPhaseII(*this, fraction);
    if (result.IsOK() || result.GetCode() != 1) return result;
  }
  doCancel();
  return currentStatus_;
}

// A copy of a query with many arguments would take memory, and where it is made nothing is caught.
template <typename Query>
KorStatus CarmaAssociationAlgorithm::ask(Operation operation, const Query& query) {
  return contextFor(operation).Ask(*this, operation, std::cref(query));
}

KorStatus CarmaAssociationAlgorithm::CreateNgetRules(double minSupport, double minConfidence,
                                                     std::vector<AssociationRule>& rules) {
  return ask(Operation::CreateNgetRules, [&](SetDictionary& dictionary) {
    return dictionary.createRules(minSupport, minConfidence, rules, InstalledListener(*settings_).get(),
                                  true);
  });
}

KorStatus CarmaAssociationAlgorithm::GetRulesSpecial(
    double minConfidence, double maxConfidence, double minSupport, double maxSupport, double minLift,
    char sortBy, ItemSet* antecedentRequired, ItemSet* antecedentAllowed, int minAntecedentLength,
    int maxAntecedentLength, ItemSet* consequentRequired, ItemSet* consequentAllowed, int minConsequentLength,
    int maxConsequentLength, int maxRules, bool minimalAntecedentsOnly, std::vector<AssociationRule>& rules) {
  return ask(Operation::GetRulesSpecial, [&](SetDictionary& dictionary) {
    return dictionary.createFilteredRules(minConfidence, maxConfidence, minSupport, maxSupport, minLift,
                                          sortBy, antecedentRequired, antecedentAllowed, minAntecedentLength,
                                          maxAntecedentLength, consequentRequired, consequentAllowed,
                                          minConsequentLength, maxConsequentLength, maxRules,
                                          minimalAntecedentsOnly, rules, InstalledListener(*settings_).get());
  });
}

KorStatus CarmaAssociationAlgorithm::GetItemsSpecial(double minConfidence, double maxConfidence,
                                                     double minSupport, double maxSupport, double minLift,
                                                     char sortBy, ItemSet* antecedentRequired,
                                                     ItemSet* antecedentAllowed, int minAntecedentLength,
                                                     int maxAntecedentLength, ItemSet* consequentAllowed,
                                                     int maxItems, std::vector<ConsequentDescriptor>& items) {
  return ask(Operation::GetItemsSpecial, [&](SetDictionary& dictionary) {
    return dictionary.createFilteredConsequents(minConfidence, maxConfidence, minSupport, maxSupport, minLift,
                                                sortBy, antecedentRequired, antecedentAllowed,
                                                minAntecedentLength, maxAntecedentLength, consequentAllowed,
                                                maxItems, items, InstalledListener(*settings_).get());
  });
}

KorStatus CarmaAssociationAlgorithm::GetItems(ItemSet* antecedent, int maxItems,
                                              std::vector<ConsequentDescriptor>& items) {
  return ask(Operation::GetItems, [&](SetDictionary& dictionary) {
    return dictionary.createConsequents(antecedent, maxItems, items);
  });
}

SemiLattice* CarmaAssociationAlgorithm::GetLattice() { return state_.load()->GetLattice(*this); }

KorStatus CarmaAssociationAlgorithm::ExportRulesXML(std::ostream& out, double minSupport,
                                                    double minConfidence, bool nonRedundant) {
  return ask(Operation::ExportRulesXML, [&](SetDictionary& dictionary) {
    return dictionary.exportRulesXML(out, minSupport, minConfidence, InstalledListener(*settings_).get(),
                                     nonRedundant);
  });
}

KorStatus CarmaAssociationAlgorithm::ExportLatticeXML(std::ostream& out) {
  const double averageSupport = AverageSupport();
  return ask(Operation::ExportLatticeXML,
             [&](SetDictionary& dictionary) { return dictionary.exportLatticeXML(out, averageSupport); });
}

KorStatus CarmaAssociationAlgorithm::GetStatus() const { return currentStatus_; }

double CarmaAssociationAlgorithm::AverageSupport() const { return state_.load()->AverageSupport(*this); }

bool CarmaAssociationAlgorithm::IsLatticeBuilt() const {
  return dictionary_ && dictionary_->isLatticeBuilt();
}

int CarmaAssociationAlgorithm::NumberOfSets() const {
  return dictionary_ ? dictionary_->getTotalSetCount() : -1;
}

int CarmaAssociationAlgorithm::NumberOfTransactions() const {
  return dictionary_ ? dictionary_->getEmptySetCount() : -1;
}

int CarmaAssociationAlgorithm::LongestSet() const {
  return dictionary_ ? dictionary_->getHighestLevel() : -1;
}

int CarmaAssociationAlgorithm::CountSetsOfSize(int length) const {
  return dictionary_ ? dictionary_->getLevelSize(length) : -1;
}

void CarmaAssociationAlgorithm::DisplayDictInfo() const {
  for (int length = 0; length <= LongestSet(); ++length) {
    // Decimal, whatever the stream's flags and locale.
    std::cout << "sets of size " << std::to_string(length) << ' ' << std::to_string(CountSetsOfSize(length))
              << std::endl;
  }
}

std::string CarmaAssociationAlgorithm::GetComponentVersion() { return korassoc::detail::componentVersion(); }

CarmaAssociationAlgorithm::Running::~Running() {
  if (--engine_.running_ > 0) return;
  engine_.retiredCore_.reset();
  engine_.retiredCeilings_.reset();
  // What was asked of the lattice directly may still run; then it stays for the engine to take along.
  if (engine_.retiredDictionary_ && !engine_.retiredDictionary_->isInUse())
    engine_.retiredDictionary_.reset();
}

KorStatus CarmaAssociationAlgorithm::setStatus(const KorStatus& status) {
  currentStatus_ = status;
  return currentStatus_;
}

void CarmaAssociationAlgorithm::doCancel() {
  {
    const Running once(*this);
    if (core_) retiredCore_ = std::move(core_);
    if (dictionary_) retiredDictionary_ = std::move(dictionary_);
    if (ceilings_) retiredCeilings_ = std::move(ceilings_);
  }
  setStatus(KorStatus(1, false));
  changeState(CarmaCancelContext::instance());
}

void CarmaAssociationAlgorithm::failRestart() {
  core_.reset();
  dictionary_.reset();
  ceilings_.reset();
  if (ownSettings_) settings_ = nullptr;
  ownSettings_.reset();
  setStatus(KorStatus(5, false));
  changeState(CarmaFailedRestartContext::instance());
}
