// Phase I by the library or by the plain engine of the tests.
//
//   PhaseIRun FILE SUPPORT PRUNING [plain | both]
//
// SUPPORT is a fraction; pruning every so many transactions, 0: at the end alone. Prints the seconds of
// processor time of phase I and the itemsets in store after it; with both also the seconds of phase II, by
// the library.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/BenchData.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "tests/oracle/PlainMiner.h"

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "PhaseIRun FILE SUPPORT PRUNING [plain | both]\n");
    return 2;
  }
  const bench::Transactions transactions = bench::readBaskets(argv[1]);
  const double support = std::atof(argv[2]);
  const int pruning = std::atoi(argv[3]);
  const int n = static_cast<int>(transactions.size());
  double seconds = 0;
  double secondsII = 0;
  int sets = 0;
  if (argc > 4 && std::strcmp(argv[4], "plain") == 0) {
    oracle::PlainSettings settings;
    settings.removeSmallFreq = pruning;
    oracle::PlainMiner miner(settings, transactions, [support](int) { return support; });
    const double start = bench::processorSeconds();
    miner.runPhaseI(n);
    seconds = bench::processorSeconds() - start;
    sets = miner.dictionary.totalSetCount();
  } else {
    CarmaSettings settings;
    settings.SetSupportSource(new bench::ConstantSupport(support));
    settings.SetRemoveSmallFreq(pruning);
    bench::MemoryTransactions source(transactions);
    CarmaAssociationAlgorithm engine(&settings, &source);
    const double start = bench::processorSeconds();
    engine.RunPhaseI(n);
    seconds = bench::processorSeconds() - start;
    sets = engine.NumberOfSets();
    if (argc > 4 && std::strcmp(argv[4], "both") == 0) {
      const double startII = bench::processorSeconds();
      engine.RunPhaseII();
      secondsII = bench::processorSeconds() - startII;
    }
  }
  std::printf("%.4f %d %.4f\n", seconds, sets, secondsII);
}
