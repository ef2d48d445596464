// korassoc recommend: what goes with some items.

#pragma once

#include <string>
#include <vector>

#include "cli/InputOptions.h"
#include "cli/ThresholdOptions.h"
#include "cli/Verb.h"

namespace korassoc::cli {

class RecommendVerb : public Verb {
 public:
  std::string name() const override { return "recommend"; }
  std::string summary() const override { return "Print what goes best with given items"; }
  void declare(CLI::App& command) override;
  void check() override;
  void run(ResultStream& out) override;

 private:
  InputOptions input_;
  std::vector<std::string> forTexts_;
  ThresholdOptions thresholds_{"1%", "0", "10"};
  std::vector<std::string> labels_;  // of all uses of --for; as understood by check()
};

}  // namespace korassoc::cli
