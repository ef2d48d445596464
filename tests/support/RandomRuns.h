// Seeded random runs for the tests that hold the library against the plain engine.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/oracle/PlainMiner.h"
#include "tests/support/Dice.h"

struct RandomRun {
  oracle::PlainSettings settings;
  oracle::Transactions transactions;
  std::vector<double> supports;  // one a transaction
  std::vector<int> calls;        // transactions asked of each call of RunPhaseI
  bool repeats = false;          // transactions may hold an item twice

  double support(int transaction) const { return supports[static_cast<std::size_t>(transaction) - 1]; }
};

// Item identifiers of several kinds, negative and huge ones among them.
inline std::vector<int> randomUniverse(Dice& dice, int size) {
  std::vector<int> items;
  const int kind = dice.below(4);
  const int start = dice.between(-size, 3);
  for (int i = 0; i < size; ++i) {
    switch (kind) {
      case 0:
        items.push_back(i + 1);
        break;
      case 1:
        items.push_back(start + i);  // around 0
        break;
      case 2:
        items.push_back(i % 2 == 0 ? std::numeric_limits<int>::max() - i
                                   : std::numeric_limits<int>::min() + i);
        break;
      default:
        items.push_back(i * 368639 + 7);  // the same item bit for all
        break;
    }
  }
  dice.shuffle(items);
  return items;
}

// Transactions in which the first items of the universe are frequent and neighbours come together.
inline oracle::Transactions randomTransactions(Dice& dice, const std::vector<int>& universe, int count,
                                               int longest, bool repeats) {
  oracle::Transactions transactions;
  const int size = static_cast<int>(universe.size());
  for (int t = 0; t < count; ++t) {
    oracle::Items items;
    if (t > 0 && dice.chance(25)) {
      items = dice.oneOf(transactions);  // an earlier one again
    } else {
      const int length = dice.below(longest + 1);
      int at = dice.below(1 + dice.below(size));
      for (int i = 0; i < length; ++i) {
        at = dice.chance(60) ? (at + 1) % size : dice.below(1 + dice.below(size));
        const int item = universe[static_cast<std::size_t>(at)];
        if (repeats || std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
      }
    }
    dice.shuffle(items);
    transactions.push_back(items);
  }
  return transactions;
}

// Constant, falling, rising, jittering or with values that no host should ask for.
inline std::vector<double> randomSupports(Dice& dice, int count) {
  const double base = dice.oneOf<double>({0.02, 0.05, 0.1, 0.2, 0.3, 0.5, 1.0 / 3});
  const int kind = dice.below(7);
  std::vector<double> supports;
  double support = base;
  for (int t = 0; t < count; ++t) {
    switch (kind) {
      case 0:
      case 1:
        break;
      case 2:
        support *= 0.97;
        break;
      case 3:
        support = base * (1.0 + t * 0.02);
        break;
      case 4:
        if (dice.chance(10)) support = base * (0.5 + dice.fraction());
        break;
      case 5:
        support = base * (0.5 + dice.fraction());
        break;
      default:
        if (dice.chance(5)) support = dice.oneOf<double>({0.0, 1e-9, 1.0, 1.5, 1e10, base, base, base});
        break;
    }
    supports.push_back(support);
  }
  return supports;
}

inline RandomRun randomRun(std::uint64_t seed) {
  Dice dice(seed);
  RandomRun run;
  oracle::PlainSettings& settings = run.settings;
  settings.maxLengthSet = dice.between(1, 6);
  settings.removeSmallFreq = dice.oneOf<int>({0, 1, 7, 25, 500});
  settings.reportFreqPhaseI = dice.oneOf<int>({0, 1, 10, 25, 10000});
  settings.reportFreqPhaseII = dice.oneOf<int>({0, 1, 10, 10000});
  if (dice.chance(75)) {  // small tables: long chains, many rehashes
    settings.initialBoundarySearchSize = dice.between(9, 40);
    settings.initialHashtableSet23Size = dice.between(1, 40);
    settings.initialSetSize = dice.between(1, 20);
    settings.initialRulesSize = dice.between(1, 60);
  }
  run.repeats = dice.chance(20);
  const int universe = dice.between(3, 14);
  const int longest = run.repeats ? 5 : dice.between(3, std::min(universe, 8));
  const int count = dice.between(1, 160);
  run.transactions = randomTransactions(dice, randomUniverse(dice, universe), count, longest, run.repeats);
  run.supports = randomSupports(dice, count);
  for (int asked = 0; asked < count && run.calls.size() < 12;) {
    run.calls.push_back(dice.chance(50) ? dice.between(1, 9) : dice.between(1, count + 10));
    asked += run.calls.back();
  }
  if (dice.chance(30)) run.calls.push_back(3);  // with little or nothing left to read
  return run;
}

// A data set in which every itemset of every transaction ends up in the store: at a support that one
// transaction reaches, a transaction adds the sets all of whose subsets came before, so each set is there
// after as many rounds as it has items.
inline RandomRun everythingStored(std::uint64_t seed) {
  Dice dice(seed);
  RandomRun run;
  run.settings.removeSmallFreq = 0;
  run.settings.maxLengthSet = 6;
  const oracle::Transactions block =
      randomTransactions(dice, randomUniverse(dice, dice.between(4, 9)), dice.between(5, 25), 6, false);
  for (int round = 0; round < 7; ++round) {
    oracle::Transactions shuffled = block;
    dice.shuffle(shuffled);
    run.transactions.insert(run.transactions.end(), shuffled.begin(), shuffled.end());
  }
  run.supports.assign(run.transactions.size(), 1e-6);
  run.calls = {static_cast<int>(run.transactions.size())};
  return run;
}
