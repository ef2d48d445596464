// Runs whole jobs, step by step, beside the plain engine of the tests, and prints a Markdown table.
//
//   WholeRun [oracle]      with the argument, the plain engine runs too (minutes on the larger data)
//
// Steps: reading the text, phase I, phase II (with its pruning and lattice), the lattice alone (built once
// more), rules at confidence 0.5; and the complete pass in place of phase II. Seconds of processor time.
// "ratio": the plain engine's phase I and II to the library's.

#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/oracle/PlainMiner.h"

namespace {

struct Job {
  std::string name;
  std::string path;
  double support;
};

std::size_t bytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

struct Timer {
  double start = bench::processorSeconds();
  double lap() {
    const double end = bench::processorSeconds();
    const double seconds = end - start;
    start = end;
    return seconds;
  }
};

void run(const Job& job, bool withOracle) {
  Timer timer;
  const bench::Transactions transactions = bench::readBaskets(job.path);
  const double reading = timer.lap();

  CarmaSettings settings;
  settings.SetSupportSource(new bench::ConstantSupport(job.support));
  bench::MemoryTransactions source(transactions);
  const int n = static_cast<int>(transactions.size());
  auto engine = std::make_unique<CarmaAssociationAlgorithm>(&settings, &source);
  const std::size_t bytesBefore = bytesInUse();
  timer.lap();
  engine->RunPhaseI(n);
  const double phaseI = timer.lap();
  const int setsAfterI = engine->NumberOfSets();
  const double bytesPerSet = static_cast<double>(bytesInUse() - bytesBefore) / setsAfterI;
  timer.lap();
  engine->RunPhaseII();
  const double phaseII = timer.lap();
  dynamic_cast<SetDictionary&>(*engine->GetLattice()).buildLattice();
  const double lattice = timer.lap();
  std::vector<AssociationRule> rules;
  engine->CreateNgetRules(job.support, 0.5, rules);
  const double ruleSeconds = timer.lap();
  const int sets = engine->NumberOfSets();
  engine->RunPhaseIIcomplete(job.support);
  const double complete = timer.lap();
  const int completeSets = engine->NumberOfSets();
  engine.reset();

  double plain = 0.0;
  if (withOracle) {
    oracle::PlainMiner miner({}, transactions, [&](int) { return job.support; });
    timer.lap();
    miner.runPhaseI(n);
    miner.runPhaseII();
    plain = timer.lap();
  }
  char ratio[32] = "-";
  if (withOracle) std::snprintf(ratio, sizeof ratio, "%.1f", plain / (phaseI + phaseII));
  std::printf(
      "| %s %g%% | %d | %.3f | %.3f | %.3f | %.3f | %.3f (%zu) | %d -> %d | %.0f | %.3f (%d) | %s |\n",
      job.name.c_str(), job.support * 100, n, reading, phaseI, phaseII, lattice, ruleSeconds, rules.size(),
      setsAfterI, sets, bytesPerSet, complete, completeSets, ratio);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const bool withOracle = argc > 1 && std::strcmp(argv[1], "oracle") == 0;
  std::vector<Job> jobs = {{"example", bench::exampleData(), 0.01}, {"example", bench::exampleData(), 0.002}};
  for (const auto& [name, support] : std::vector<std::pair<std::string, double>>{{"T10I4D100K.dat", 0.005},
                                                                                 {"T10I4D100K.dat", 0.001},
                                                                                 {"retail.dat", 0.001},
                                                                                 {"retail.dat", 0.0005}}) {
    const std::string path = bench::optionalData(name);
    if (path.empty()) {
      std::printf("%s is not there; left out\n", name.c_str());
    } else {
      jobs.push_back({name, path, support});
    }
  }
  std::printf(
      "| data, support | transactions | reading | phase I | phase II | lattice alone | rules at 0.5 | sets "
      "after I -> II "
      "| bytes a set | complete pass (sets) | ratio |\n|---|---|---|---|---|---|---|---|---|---|---|\n");
  for (const Job& job : jobs) run(job, withOracle);
}
