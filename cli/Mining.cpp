#include "cli/Mining.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/CliError.h"
#include "cli/Notes.h"
#include "cli/Printable.h"
#include "cli/StandardOutputGuard.h"
#include "cli/Stopwatch.h"
#include "cli/process/TemporaryFiles.h"

namespace korassoc::cli {
namespace {

constexpr long kMemoryFull = 3;
constexpr int kNoLimit = std::numeric_limits<int>::max();

// The approximate first pass, by measurement (docs/accuracy.md): a fifth below the support that is asked for,
// prunings few and far between, the rare items of long baskets left to the second pass.
constexpr double kSlack = 0.8;
constexpr int kPrunings = 4;
constexpr int kBasketsBetweenPrunings = 500;  // within a limit
constexpr std::size_t kLongestBasket = 24;
constexpr std::size_t kShortestBasket = 8;  // below which baskets are not shortened whatever the work
constexpr double kExtensionBudget = 1000;   // stored subsets of a basket, on average
constexpr int kUsualSets = 2000000;         // itemsets, where no limit is given

// The preview of an exact run: a small part of its work.
constexpr int kPreviewBaskets = 500;
constexpr std::size_t kPreviewLongest = 8;
constexpr int kPreviewSets = 4000;
constexpr long kFailedInside = 40001;
constexpr long kEmptyLattice = 40002;  // not an item is frequent enough: there is nothing to make rules of

class ConstantSupport : public SupportSource {
 public:
  explicit ConstantSupport(double fraction) : fraction_(fraction) {}
  double GetSupport(int) override { return fraction_; }

 private:
  double fraction_;
};

void check(const KorAssoc::KorStatus& status, std::string_view what) {
  if (status.IsOK() || (status.IsWarning() && status.GetCode() == kEmptyLattice)) return;
  if (status.GetCode() == kMemoryFull) {
    throw CliError(ExitCode::kRunFailed,
                   fmt::format("{} stopped: too many itemsets for the memory; try a higher support", what));
  }
  if (status.GetCode() == kFailedInside) {
    throw CliError(ExitCode::kRunFailed,
                   fmt::format("{} stopped: memory ran out, or the engine failed (status {}); try a higher "
                               "support",
                               what, status.GetCode()));
  }
  throw CliError(ExitCode::kRunFailed, fmt::format("{} stopped with status {}", what, status.GetCode()));
}

ItemSet setOf(const std::vector<int>& items) { return ItemSet(items.data(), static_cast<int>(items.size())); }

// The item set that an engine's argument points to; null where nothing is asked.
class Argument {
 public:
  explicit Argument(const std::vector<int>& required) {
    if (!required.empty()) set_ = setOf(required);
  }
  explicit Argument(const std::optional<std::vector<int>>& allowed) {
    if (allowed) set_ = setOf(*allowed);
  }
  ItemSet* get() { return set_ ? &*set_ : nullptr; }

 private:
  std::optional<ItemSet> set_;
};

}  // namespace

Mining::Mining(const Baskets& baskets, const SupportOption& support, const MiningPlan& plan)
    : plan_(plan), room_(plan.maxSets ? *plan.maxSets + 1 : kNoLimit), source_(baskets) {
  figures_.transactions = static_cast<int>(baskets.size());
  figures_.leastCount = support.leastCount(figures_.transactions);
  double threshold = support.fractionOf(figures_.transactions);
  if (plan_.mode != MiningMode::kExact) {
    if (!plan_.maxSets) room_ = kUsualSets + 1;
    threshold *= kSlack;
  }
  limitMemory();
  settings_.SetSupportSource(new ConstantSupport(threshold));
  const StandardOutputGuard guard;
  engine_ = std::make_unique<CarmaAssociationAlgorithm>(&settings_, &source_);
  check(engine_->GetStatus(), "starting the engine");
}

// Itemsets make room for others in a run of two passes alone: an exact run does not need what the first pass
// has found, and without a second one nothing would tell what a lost count comes to.
void Mining::limitMemory() {
  DictionarySettings& dictionary = settings_.GetDictionarySettings();
  dictionary.SetMaxInStoreSets(room_);
  if (plan_.mode == MiningMode::kExact) dictionary.SetMaxInStoreSets(std::min(room_, kPreviewSets));
  if (plan_.mode != MiningMode::kApproximate || !plan_.maxSets) return;
  dictionary.SetLeaveInMainStoreCount(1);
  if (!plan_.spillFolder) return;
  dictionary.SetDiskSpill(true);
  removeLeftovers(*plan_.spillFolder);
  spillFile_ = std::make_unique<RemovedBySignal>(
      (std::filesystem::path(*plan_.spillFolder) / newSpillName()).string());
  dictionary.SetSpillFileName(spillFile_->path().c_str());
}

void Mining::run() {
  const StandardOutputGuard guard;
  Stopwatch watch;
  source_.setListener([this](int number) { beforeBasket(number); });
  runPhaseI();
  figures_.setsInPhaseI = engine_->NumberOfSets() - 1;  // the empty set is stored too
  figures_.secondsPhaseI = watch.lap();
  runSecondPass();
  figures_.setsInLattice = engine_->NumberOfSets() - 1;
  figures_.longestSet = engine_->LongestSet();
  figures_.secondsPhaseII = watch.lap();
}

void Mining::runPhaseI() {
  int baskets = figures_.transactions;
  // Prunings only where the baskets may be read again: an item that is pruned and met again has lost count.
  settings_.SetRemoveSmallFreq(0);
  if (plan_.mode == MiningMode::kExact) {
    baskets = std::min(baskets, kPreviewBaskets);
    source_.shorten(kPreviewLongest, 0, static_cast<std::size_t>(baskets));
  } else if (plan_.mode == MiningMode::kApproximate) {
    settings_.SetRemoveSmallFreq(plan_.maxSets ? kBasketsBetweenPrunings : baskets / kPrunings + 1);
    source_.shorten(kLongestBasket, figures_.leastCount, static_cast<std::size_t>(baskets));
  }
  const KorAssoc::KorStatus status = engine_->RunPhaseI(baskets);
  figures_.transactionsInPhaseI = engine_->NumberOfTransactions();
  const bool full = status.GetCode() == kMemoryFull;
  if (!full) return check(status, "the first pass");
  if (plan_.mode == MiningMode::kExact) return;  // no more of a preview than that
  throwFull();
}

// An itemset found no room in memory, nor on the disk where there is one.
void Mining::throwFull() const {
  std::error_code ignored;
  if (plan_.spillFolder && !std::filesystem::is_directory(*plan_.spillFolder, ignored)) {
    throw CliError(
        ExitCode::kRunFailed,
        fmt::format("--spill {}: is no folder any more, so that in transaction {} of {} an itemset was "
                    "refused, and there is no result; name a folder that stays",
                    printable(*plan_.spillFolder), figures_.transactionsInPhaseI, figures_.transactions));
  }
  throw CliError(
      ExitCode::kLimit,
      fmt::format("the limit of {} itemsets was reached in transaction {} of {}: an itemset was refused, "
                  "and there is no result; raise --max-sets or the support",
                  room_ - 1, figures_.transactionsInPhaseI, figures_.transactions));
}

void Mining::runSecondPass() {
  switch (plan_.mode) {
    case MiningMode::kExact: {
      settings_.GetDictionarySettings().SetMaxInStoreSets(room_);
      const KorAssoc::KorStatus status = countCompletely();
      if (plan_.maxSets && status.GetCode() == kMemoryFull) {
        throw CliError(
            ExitCode::kLimit,
            fmt::format("more than {} itemsets are in {} of {} transactions: 1 itemset was refused, at which "
                        "the run ended without a result; raise --max-sets or the support",
                        *plan_.maxSets, figures_.leastCount, figures_.transactions));
      }
      return check(status, "counting");
    }
    case MiningMode::kApproximate:
      check(engine_->RunPhaseIIrandom(), "the second pass");
      break;
    case MiningMode::kOnePass:
      check(engine_->RunNullPhaseII(0), "closing the pass");
      break;
  }
  const auto& dictionary = dynamic_cast<const SetDictionary&>(lattice());
  figures_.setsGivenUp = dictionary.setsGivenUp();
  figures_.setsSpilled = dictionary.setsSpilled();
}

// More transactions than there are is no support: nothing reaches it, and nothing is looked for.
KorAssoc::KorStatus Mining::countCompletely() {
  if (figures_.leastCount <= figures_.transactions) {
    return engine_->RunPhaseIIcomplete(figures_.leastCount / static_cast<double>(figures_.transactions));
  }
  const int longest = settings_.GetMaxLengthSet();
  settings_.SetMaxLengthSet(0);
  const KorAssoc::KorStatus status = engine_->RunPhaseIIcomplete(1);
  settings_.SetMaxLengthSet(longest);
  return status;
}

void Mining::beforeBasket(int number) {
  if (plan_.mode != MiningMode::kApproximate) return;
  boundWork(number - 1);
  if (!plan_.spillFolder) return;
  // What is on the disk comes back at a pruning, and must find room then.
  const bool prunesNext = number % settings_.GetRemoveSmallFreq() == 0 || number == figures_.transactions;
  engine_->SetMaxInStoreSets(prunesNext ? kNoLimit : room_);
}

// Shows less of the baskets when they hold more stored itemsets than can be counted in good time: each item
// less halves what a basket can hold.
void Mining::boundWork(int basketsDone) {
  constexpr int kBasketsBetweenLooks = 8;
  if (basketsDone == 0 || basketsDone % kBasketsBetweenLooks != 0) return;
  const double before =
      std::exchange(extensions_, PhaseIReporter(*engine_).GetDoubleValue("aveExt") * basketsDone);
  double excess = (extensions_ - before) / (kExtensionBudget * kBasketsBetweenLooks);
  std::size_t longest = source_.longestShown();
  for (; excess > 1 && longest > kShortestBasket; excess /= 2) --longest;
  source_.shorten(longest);
}

std::string Mining::describe() const {
  switch (plan_.mode) {
    case MiningMode::kApproximate:
      return "approximate (itemsets may be missing; figures are exact)";
    case MiningMode::kOnePass:
      return "one pass (itemsets may be missing; figures are bounds)";
    case MiningMode::kExact:
      break;
  }
  return "exact and complete";
}

void Mining::report() const {
  note("threshold     {} of {} transactions\n", figures_.leastCount, figures_.transactions);
  if (plan_.mode == MiningMode::kExact) {
    note("preview       {} itemsets after the first {} transactions\n", figures_.setsInPhaseI,
         figures_.transactionsInPhaseI);
    note("itemsets      {}, the longest of {} items\n", figures_.setsInLattice, figures_.longestSet);
    if (plan_.spillFolder) {
      note("spilled       nothing: an exact run keeps its result alone, and that in memory\n");
    }
  } else {
    note("itemsets      {} after the first pass, {} at the end, the longest of {} items\n",
         figures_.setsInPhaseI, figures_.setsInLattice, figures_.longestSet);
  }
  if (figures_.longestSet == settings_.GetMaxLengthSet()) {
    note("length        itemsets of more than {} items are not looked for\n", figures_.longestSet);
  }
  if (figures_.setsSpilled > 0) {
    note("spilled       {} itemsets were on the disk for a time\n", figures_.setsSpilled);
  }
}

std::string Mining::limitReached() const {
  if (figures_.setsGivenUp == 0) return {};
  return fmt::format(
      "the limit of {} itemsets decided this result: {} itemsets were lost with their counts to make "
      "room for others, so some may be missing; raise --max-sets or the support",
      room_ - 1, figures_.setsGivenUp);
}

std::vector<AssociationRule> Mining::rules(const RuleQuery& query) {
  const StandardOutputGuard guard;
  const double transactions = query.transactions;
  const double minSupport = query.minCount / transactions;
  std::vector<AssociationRule> rules;
  if (query.nonRedundant) {
    check(engine_->CreateNgetRules(minSupport, query.minConfidence, rules), "making rules");
    std::erase_if(rules, [&query](const AssociationRule& rule) { return !query.accepts(rule); });
    query.arrange(rules);
    return rules;
  }
  // Half a transaction above the count: the engine cuts the bound off, and support within it stays within.
  const double maxSupport = (query.maxCount + 0.5) / transactions;
  Argument lhsRequired(query.lhs.required);
  Argument lhsAllowed(query.lhs.allowed);
  Argument rhsRequired(query.rhs.required);
  Argument rhsAllowed(query.rhs.allowed);
  check(engine_->GetRulesSpecial(query.minConfidence, query.maxConfidence, minSupport, maxSupport,
                                 query.minLift, static_cast<char>(query.order), lhsRequired.get(),
                                 lhsAllowed.get(), query.lhs.length.shortest, query.lhs.length.longest,
                                 rhsRequired.get(), rhsAllowed.get(), query.rhs.length.shortest,
                                 query.rhs.length.longest, query.top, query.minimal, rules),
        "making rules");
  return rules;
}

RuleBounds Mining::bounds(const AssociationRule& rule) const {
  auto& dictionary = dynamic_cast<SetDictionary&>(lattice());
  const std::unique_ptr<ItemSet> both(rule.getAntecedent().setUnion(&rule.getConsequent()));
  const SetCounter* whole = dictionary.getDescriptor(both.get());
  const SetCounter* part = dictionary.getDescriptor(&rule.getAntecedent());
  if (whole == nullptr || part == nullptr) throw CliError(ExitCode::kRunFailed, "a rule of unknown itemsets");
  const int transactions = figures_.transactions;
  const auto largest = [transactions](const SetCounter& counter) {
    return static_cast<int>(std::min<long long>(transactions, 0LL + counter.count + counter.getMaxMissed()));
  };
  RuleBounds bounds{whole->count, std::min(largest(*whole), largest(*part)), 0, 1};
  bounds.leastConfidence = static_cast<double>(bounds.leastCount) / largest(*part);
  bounds.largestConfidence = std::min(1.0, static_cast<double>(bounds.largestCount) / part->count);
  return bounds;
}

bool Mining::exportRules(const RuleQuery& query, std::ostream& out) {
  const StandardOutputGuard guard;
  const double minSupport = query.minCount / static_cast<double>(query.transactions);
  const KorAssoc::KorStatus status =
      engine_->ExportRulesXML(out, minSupport, query.minConfidence, query.nonRedundant);
  check(status, "exporting the rules");
  return status.IsOK();
}

void Mining::exportLattice(std::ostream& out) {
  const StandardOutputGuard guard;
  check(engine_->ExportLatticeXML(out), "exporting the lattice");
}

std::vector<ConsequentDescriptor> Mining::consequents(const std::vector<int>& items) {
  const StandardOutputGuard guard;
  ItemSet antecedent = setOf(items);
  std::vector<ConsequentDescriptor> consequents;
  check(engine_->GetItems(&antecedent, -1, consequents), "looking for consequents");
  std::erase_if(consequents, [this](const ConsequentDescriptor& consequent) {
    return std::lround(consequent.getSupport() * figures_.transactions) < figures_.leastCount;
  });
  return consequents;
}

}  // namespace korassoc::cli
