// Ends a run that another process began:
//
//   EndInterruptedRun binary|xml STATE SEEN SUPPORT RULES
//
// restores the engine from the file STATE, goes on behind the first SEEN transactions, and writes the final
// rules that are as frequent as SUPPORT to the file RULES.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "tests/engine/InterruptedRun.h"
#include "tests/support/Hosts.h"

int main(int count, char** arguments) {
  if (count != 6) {
    std::fprintf(stderr, "usage: %s binary|xml STATE SEEN SUPPORT RULES\n", arguments[0]);
    return 2;
  }
  VectorTransactions source(interrupted_run::transactions());
  const int seen = std::atoi(arguments[3]);
  for (int i = 0; i < seen; ++i) source.Next();

  std::unique_ptr<CarmaAssociationAlgorithm> engine;
  if (std::string(arguments[1]) == "binary") {
    std::fstream state(arguments[2], std::ios::in | std::ios::binary);
    engine = std::make_unique<CarmaAssociationAlgorithm>(state, &source);
  } else {
    std::ifstream state(arguments[2], std::ios::binary);
    engine = std::make_unique<CarmaAssociationAlgorithm>(state, &source);
  }
  if (!engine->GetStatus().IsOK() || engine->NumberOfTransactions() != seen) return 3;
  engine->SetSupportSource(new TestSupport(interrupted_run::support));
  if (!engine->RunPhaseI(interrupted_run::kTransactions).IsOK()) return 4;
  if (engine->NumberOfTransactions() != interrupted_run::kTransactions) return 5;
  std::ofstream rules(arguments[5], std::ios::binary);
  rules << interrupted_run::finalRules(*engine, std::atof(arguments[4]));
  return rules.flush() ? 0 : 6;
}
