// The tool's exact run up to the itemsets, as a process of its own: reading, counting, the lattice.
//
//   FrequentItemsets FILE COUNT         prints the number of itemsets of at least COUNT transactions
//   FrequentItemsets FILE COUNT sets    prints each: its items, a tab, its count

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "cli/Mining.h"
#include "cli/input/Input.h"
#include "cli/input/LineReader.h"
#include "korassoc/korassoc.h"

int main(int argc, char** argv) {
  using namespace korassoc::cli;
  if (argc < 3) {
    std::fprintf(stderr, "FrequentItemsets FILE COUNT [sets]\n");
    return 2;
  }
  const BasketInput input = LineReader(std::nullopt).read(Input::open(argv[1]));
  Mining mining(input.baskets, SupportOption::parse("COUNT", std::string(argv[2]) + "n"), MiningPlan());
  mining.run();
  if (argc < 4 || std::strcmp(argv[3], "sets") != 0) {
    std::printf("%d\n", mining.figures().setsInLattice);
    return 0;
  }
  std::set<ItemSet> found;
  mining.lattice().findItemSets(ItemSet(), 0, 1, 1 << 20, found);
  auto& dictionary = dynamic_cast<SetDictionary&>(mining.lattice());
  for (const ItemSet& set : found) {
    for (int i = 0; i < set.length(); ++i) {
      std::printf(i > 0 ? " %s" : "%s", std::string(input.names.name(set.getItemAt(i))).c_str());
    }
    std::printf("\t%d\n", dictionary.getCount(&set));
  }
}
