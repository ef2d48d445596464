#include "cli/RecommendVerb.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "cli/LabelList.h"
#include "cli/Mining.h"
#include "cli/Notes.h"
#include "cli/Stopwatch.h"
#include "cli/output/ItemText.h"
#include "cli/output/RuleTable.h"

namespace korassoc::cli {

void RecommendVerb::declare(CLI::App& command) {
  input_.addTo(command);
  command
      .add_option("--for", forTexts_, "The items to go with, separated by commas; the option may be repeated")
      ->required()
      ->allow_extra_args(false)
      ->type_name("LABELS");
  thresholds_.addTo(command, "items");
  command.footer(
      "Each item is shown with the figures of its most confident rule whose antecedent lies within the given "
      "items.\n"
      "Example:\n"
      "  korassoc recommend baskets.csv --for \"bread,whole milk\" -s 0.5% --top 5");
}

void RecommendVerb::check() {
  input_.check();
  thresholds_.check();
  labels_.clear();
  for (const std::string& text : forTexts_) {
    for (std::string& label : parseLabels("--for", text)) labels_.push_back(std::move(label));
  }
}

void RecommendVerb::run(ResultStream& out) {
  Stopwatch watch;
  const BasketInput input = input_.read();
  const std::vector<int> items = itemsOf("--for", labels_, input.names);
  input_.report(input);
  Mining mining(input.baskets, thresholds_.support(), MiningPlan{});
  mining.run();
  mining.report();

  const MiningFigures& figures = mining.figures();
  const std::vector<ConsequentDescriptor> found = mining.consequents(items);
  std::vector<ConsequentDescriptor> shown;
  for (const ConsequentDescriptor& consequent : found) {
    if (shown.size() == static_cast<std::size_t>(thresholds_.top())) break;
    if (consequent.getConfidence() >= thresholds_.minConfidence()) shown.push_back(consequent);
  }
  if (found.empty()) {
    note(
        "nothing       support: none of these items is together with another one in {} of {} "
        "transactions; try a lower support\n",
        figures.leastCount, figures.transactions);
  } else if (shown.empty()) {
    note("nothing       confidence: the best confidence seen is {}, below {}; try a lower confidence\n",
         percentText(found.front().getConfidence()), percentText(thresholds_.minConfidence()));
  }
  out.write(fmt::format("# {}; what goes with {}: {}; the best {}; by confidence\n", mining.describe(),
                        setText(items, input.names), thresholds_.describe(figures.transactions),
                        thresholds_.top()));
  writeConsequentTable(shown, input.names, figures.transactions, out);
  out.finish();
  note("seconds       {:.3f} in all\n", watch.lap());
}

}  // namespace korassoc::cli
