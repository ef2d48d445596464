#include "cli/MineVerb.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "cli/CliError.h"
#include "cli/Mining.h"
#include "cli/NoRules.h"
#include "cli/Notes.h"
#include "cli/Stopwatch.h"
#include "cli/output/RuleTable.h"

namespace korassoc::cli {

void MineVerb::declare(CLI::App& command) {
  input_.addTo(command);
  rules_.addTo(command);
  mining_.addTo(command);
  documents_.addTo(command);
  command.footer(
      "Example: the rules that hold in at least half of the cases, of items that are together in 1% of the "
      "baskets\n"
      "  korassoc mine baskets.csv -s 1% -c 50%\n"
      "and of these the ten with the highest lift that lead to whole milk\n"
      "  korassoc mine baskets.csv -s 1% -c 50% --require-rhs \"whole milk\" --by lift --top 10");
}

void MineVerb::check() {
  input_.check();
  rules_.check();
  plan_ = mining_.plan();
}

void MineVerb::run(ResultStream& out) {
  documents_.check(input_.file());
  Stopwatch total;
  Stopwatch watch;
  const BasketInput input = input_.read();
  const double secondsReading = watch.lap();
  const auto transactions = static_cast<int>(input.baskets.size());
  const RuleQuery query = rules_.query(input.names, transactions);
  input_.report(input);

  Mining mining(input.baskets, rules_.thresholds().support(), plan_);
  mining.run();
  mining.report();
  documents_.write(mining, query);
  const MiningFigures& figures = mining.figures();

  watch.lap();
  const std::vector<AssociationRule> rules = mining.rules(query);
  const double secondsRules = watch.lap();
  note("rules         {}\n", rules.size());
  if (rules.empty()) note("no rules      {}\n", whyNoRules(mining, query));

  watch.lap();
  out.write(fmt::format("# {}; {}\n", mining.describe(), rules_.describe(query, input.names)));
  if (plan_.mode == MiningMode::kOnePass) {
    const auto boundsOf = [&mining](const AssociationRule& rule) { return mining.bounds(rule); };
    writeBoundedRuleTable(rules, boundsOf, input.names, transactions, out);
  } else {
    writeRuleTable(rules, input.names, transactions, out);
  }
  out.finish();
  note(
      "seconds       reading {:.3f}, first pass {:.3f}, second pass {:.3f}, rules {:.3f}, writing {:.3f}, "
      "in all {:.3f}\n",
      secondsReading, figures.secondsPhaseI, figures.secondsPhaseII, secondsRules, watch.lap(), total.lap());
  const std::string limit = mining.limitReached();
  if (!limit.empty()) throw CliError(ExitCode::kLimit, limit);
}

}  // namespace korassoc::cli
