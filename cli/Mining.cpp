#include "cli/Mining.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <optional>

#include "cli/CliError.h"
#include "cli/StandardOutputGuard.h"
#include "cli/Stopwatch.h"

namespace korassoc::cli {
namespace {

constexpr long kMemoryFull = 3;
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

Mining::Mining(const Baskets& baskets, const SupportOption& support) : iterator_(baskets) {
  figures_.transactions = static_cast<int>(baskets.size());
  figures_.leastCount = support.leastCount(figures_.transactions);
  settings_.SetSupportSource(new ConstantSupport(support.fractionOf(figures_.transactions)));
  const StandardOutputGuard guard;
  engine_ = std::make_unique<CarmaAssociationAlgorithm>(&settings_, &iterator_);
  check(engine_->GetStatus(), "starting the engine");
}

void Mining::run() {
  const StandardOutputGuard guard;
  Stopwatch watch;
  check(engine_->RunPhaseI(figures_.transactions), "the first pass");
  figures_.setsInPhaseI = engine_->NumberOfSets() - 1;  // the empty set is stored too
  figures_.secondsPhaseI = watch.lap();
  check(engine_->RunPhaseII(), "the second pass");
  figures_.setsInLattice = engine_->NumberOfSets() - 1;
  figures_.longestSet = engine_->LongestSet();
  figures_.secondsPhaseII = watch.lap();
}

void Mining::report() const {
  fmt::print(stderr, "threshold     {} of {} transactions\n", figures_.leastCount, figures_.transactions);
  fmt::print(stderr, "itemsets      {} after the first pass, {} after the second, the longest of {} items\n",
             figures_.setsInPhaseI, figures_.setsInLattice, figures_.longestSet);
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
