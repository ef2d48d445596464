// korassoc mine: the rules of a basket file.

#pragma once

#include "cli/DocumentOptions.h"
#include "cli/InputOptions.h"
#include "cli/MiningOptions.h"
#include "cli/MiningPlan.h"
#include "cli/RuleOptions.h"
#include "cli/Verb.h"

namespace korassoc::cli {

class MineVerb : public Verb {
 public:
  std::string name() const override { return "mine"; }
  std::string summary() const override { return "Print the association rules of a basket file"; }
  void declare(CLI::App& command) override;
  void check() override;
  void run(ResultStream& out) override;

 private:
  InputOptions input_;
  RuleOptions rules_;
  MiningOptions mining_;
  DocumentOptions documents_;
  MiningPlan plan_;  // as understood by check()
};

}  // namespace korassoc::cli
