// Runs of the first pass worked out by hand, transaction by transaction, for the plain engine and the library
// alike.
//
// Items are written as letters (a = 1, b = 2, ...). A state lists the stored sets, smaller sets first, each
// as items count@TID+maxMissed. Letters of the arithmetic:
//   t  the transaction's number          T  what a new set must be able to reach: t * support, raised
//   q  (t - 1) * support before, cut     u  an extended set's upper bound before t: count + maxMissed - 1

#pragma once

#include <string>
#include <vector>

namespace oracle {

struct HandTransaction {
  std::string items;
  double support;
  std::string state;  // after the transaction, and after the pruning when one falls on it
};

struct HandRun {
  int removeSmallFreq;
  std::vector<HandTransaction> transactions;
  // After the call, which prunes once more when its end is off the pruning frequency:
  std::string finalState;
  double supportCount;
  int setsRemoved;
  int peakSets;
  double aveExt;
  int maxExt;
  int longestCandidate;
  int longAdded;
};

// Support 1/2 throughout, pruning every 6 transactions.
inline HandRun constantSupport() {
  HandRun run;
  run.removeSmallFreq = 6;
  run.transactions = {
      // t 1. Nothing is stored: three single sets, no work list.
      {"abc", 0.5, "a 1@1+0, b 1@1+0, c 1@1+0"},
      // t 2, T 1, q 0. ab: u = 2 - 1 = 1, maxMissed = min(b 2 - 1, u 1, q + 1 = 1) = 1, 1 + 1 >= T. Work list
      // a b.
      {"ab", 0.5, "a 2@1+0, b 2@1+0, c 1@1+0, ab 1@2+1"},
      // t 3, T 2, q 1. ac: u = 3 - 1 = 2, min(c 2 - 1, 2, 2) = 1, 1 + 1 >= 2; bc alike.
      // abc by ab: u = 2 + 1 - 1 = 2, 3 >= T; but its subset bc has TID 3, this very transaction: refused.
      // Work list a b ab c.
      {"abc", 0.5, "a 3@1+0, b 3@1+0, c 2@1+0, ab 2@2+1, ac 1@3+1, bc 1@3+1"},
      // t 4, T 2, q 1. abc by ab: u = 3 + 1 - 1 = 3; start at min(t - 1 = 3, u 3, 3 - 1 + q = 3) = 3; bc: TID
      // 3 < 4,
      // 1/2 <= (2 + 1) / 4, min(3, 2 + 1 - 1) = 2; ac the same: passes with 2. Work list a b ab c ac bc.
      {"abc", 0.5, "a 4@1+0, b 4@1+0, c 3@1+0, ab 3@2+1, ac 2@3+1, bc 2@3+1, abc 1@4+2"},
      // t 5. d is new; a has nothing before it to extend. Work list a.
      {"ad", 0.5, "a 5@1+0, b 4@1+0, c 3@1+0, d 1@5+0, ab 3@2+1, ac 2@3+1, bc 2@3+1, abc 1@4+2"},
      // t 6, T 3, q 2. ad: u = 6 - 1 = 5, 6 >= 3; min(d 2 - 1, 5, 3) = 1, 1 + 1 < 3: refused. Work list a d.
      // Nine sets with the empty one. Pruning at 6 * 1/2 = 3: d 2, ac 2, bc 2, abc 1 go; 4 removed.
      {"da", 0.5, "a 6@1+0, b 4@1+0, c 3@1+0, ab 3@2+1"},
      // t 7, T 4, q 3; from here single sets are extended from a count of 3 on. ac, met again: u = 7 - 1 = 6,
      // min(c 4 - 1, 6, 4) = 3, 3 + 1 >= 4. d, met again, starts anew. Work list a c.
      {"acd", 0.5, "a 7@1+0, b 4@1+0, c 4@1+0, d 1@7+0, ab 3@2+1, ac 1@7+3"},
      // t 8, T 4, q 3. bc: u = 5 - 1 = 4, min(c 5 - 1, 4, 4) = 4, 4 + 1 >= 4. Work list b c.
      {"cb", 0.5, "a 7@1+0, b 5@1+0, c 5@1+0, d 1@7+0, ab 3@2+1, ac 1@7+3, bc 1@8+4"},
      // t 9, T 5, q 4. abc by ab: u = 4 + 1 - 1 = 4, 5 >= 5; start at min(8, 4, 2 + 4) = 4; bc: 2 + 4 = 6,
      // 1/2 <= 6/9, min(4, 5) = 4; ac: 2 + 3 = 5, 1/2 <= 5/9, min(4, 4) = 4. Work list a b ab c ac bc.
      {"abc", 0.5, "a 8@1+0, b 6@1+0, c 6@1+0, d 1@7+0, ab 4@2+1, ac 2@7+3, bc 2@8+4, abc 1@9+4"},
      // t 10. d has 2 < 3: not extended. Work list a b ab.
      {"abd", 0.5, "a 9@1+0, b 7@1+0, c 6@1+0, d 2@7+0, ab 5@2+1, ac 2@7+3, bc 2@8+4, abc 1@9+4"},
      // t 11, T 6, q 5. ad: u = 10 - 1 = 9, min(d 3 - 1, 9, 6) = 2, 3 < 6: refused; bd: u = 7, 2, refused.
      // abd by ab: u = 6 + 1 - 1 = 6, 7 >= 6; but its subset bd is absent: refused. Work list a b ab d.
      {"abd", 0.5, "a 10@1+0, b 8@1+0, c 6@1+0, d 3@7+0, ab 6@2+1, ac 2@7+3, bc 2@8+4, abc 1@9+4"},
      // t 12. bc counted. Work list b c bc. Nine sets again. Pruning at 6: d 3, ac 2, bc 3, abc 1 go; 8
      // removed.
      {"bc", 0.5, "a 10@1+0, b 9@1+0, c 7@1+0, ab 6@2+1"},
      // t 13, T 7, q 6. ac: u = 11 - 1 = 10, min(c 8 - 1, 10, 7) = 7, 7 + 1 >= 7. Work list a c.
      {"ac", 0.5, "a 11@1+0, b 9@1+0, c 8@1+0, ab 6@2+1, ac 1@13+7"},
      // t 14, T 7, q 6. ac counted. bc: u = 10 - 1 = 9, min(c 9 - 1, 9, 7) = 7, 7 + 1 >= 7. abc by ab:
      // u = 7 + 1 - 1 = 7, 8 >= 7; bc has TID 14: refused. d starts anew. Work list a b ab c ac.
      {"abcd", 0.5, "a 12@1+0, b 10@1+0, c 9@1+0, d 1@14+0, ab 7@2+1, ac 2@13+7, bc 1@14+7"},
  };
  // 14 is no multiple of 6: pruning at 14 * 1/2 = 7 takes d, ac and bc; 11 removed.
  run.finalState = "a 12@1+0, b 10@1+0, c 9@1+0, ab 7@2+1";
  run.supportCount = 7;
  run.setsRemoved = 11;
  run.peakSets = 9;
  // Work lists 0 2 4 6 1 2 2 2 6 3 4 3 2 5: 42 / 14.
  run.aveExt = 3.0;
  run.maxExt = 6;
  run.longestCandidate = 3;
  run.longAdded = 3;
  return run;
}

// Support 1/4, then 3/4: the rise lifts the earlier ceilings, so the average jumps from 1/4 to 3/4. No
// pruning before the end.
inline HandRun risingSupport() {
  HandRun run;
  run.removeSmallFreq = 100;
  run.transactions = {
      {"abc", 0.25, "a 1@1+0, b 1@1+0, c 1@1+0"},
      // t 2, T 1 (0.5 raised), q 0. ab: u 1, min(1, 1, 1) = 1. Work list a b.
      {"ab", 0.25, "a 2@1+0, b 2@1+0, c 1@1+0, ab 1@2+1"},
      // t 3, T 1 (0.75), q 0 (0.5 cut). ac, bc: u 2, min(1, 2, 1) = 1. abc: bc has TID 3. Work list a b ab c.
      {"abc", 0.25, "a 3@1+0, b 3@1+0, c 2@1+0, ab 2@2+1, ac 1@3+1, bc 1@3+1"},
      // Work lists a b ab.
      {"ab", 0.25, "a 4@1+0, b 4@1+0, c 2@1+0, ab 3@2+1, ac 1@3+1, bc 1@3+1"},
      {"ab", 0.25, "a 5@1+0, b 5@1+0, c 2@1+0, ab 4@2+1, ac 1@3+1, bc 1@3+1"},
      {"ab", 0.25, "a 6@1+0, b 6@1+0, c 2@1+0, ab 5@2+1, ac 1@3+1, bc 1@3+1"},
      // t 7, T 6 (5.25), q 1 (6 * 0.25 = 1.5). abc by ab: u = 6 + 1 - 1 = 6, 7 >= 6; start at min(6, 6, 3) =
      // 3; bc: TID 3, but 3/4 > (2 + 1) / 7: refused. Work list a b ab c ac bc.
      {"abc", 0.75, "a 7@1+0, b 7@1+0, c 3@1+0, ab 6@2+1, ac 2@3+1, bc 2@3+1"},
      // t 8, T 6, q 5 (7 * 0.75 = 5.25), sigma still 3/4. ac counted: 3 + 1 <  6, so acd is not tried; ad: d
      // is new. Work list a c ac.
      {"acd", 0.75, "a 8@1+0, b 7@1+0, c 4@1+0, d 1@8+0, ab 6@2+1, ac 3@3+1, bc 2@3+1"},
      // t 9, T 7 (6.75), q 6. ad: u = 9 - 1 = 8, min(d 2 - 1, 8, 7) = 1, 2 < 7: refused; cd: c 5, u = 4,
      // 5 < 7: refused. acd by ac: u = 4 + 1 - 1 = 4, 5 < 7: refused at once. Work list a c ac d.
      {"acd", 0.75, "a 9@1+0, b 7@1+0, c 5@1+0, d 2@8+0, ab 6@2+1, ac 4@3+1, bc 2@3+1"},
  };
  // Pruning at 9 * 0.75 = 6.75, cut to 6: c, d, ac, bc go.
  run.finalState = "a 9@1+0, b 7@1+0, ab 6@2+1";
  run.supportCount = 6;
  run.setsRemoved = 4;
  run.peakSets = 0;  // no pruning point was reached
  // Work lists 0 2 4 3 3 3 6 3 4: 28 / 9.
  run.aveExt = 28.0 / 9;
  run.maxExt = 6;
  run.longestCandidate = 3;
  run.longAdded = 2;
  return run;
}

// Repeated items: each occurrence is a position of its own. Support 1/10, pruning at the end only.
inline HandRun repeatedItems() {
  HandRun run;
  run.removeSmallFreq = 0;
  run.transactions = {
      // t 1. The first a is stored, the second counts it. Work list a.
      {"aab", 0.1, "a 2@1+0, b 1@1+0"},
      // t 2, T 1, q 0. a 3, then a 4: aa by the first a: u = 4 - 1 = 3, min(4 - 1, 3, q + 1) = 1. b 2: ab by
      // the first a: u 3, min(2 - 1, 3, 1) = 1; by the second a: stored by now, counted. Work list a a b ab.
      {"aba", 0.1, "a 4@1+0, b 2@1+0, aa 1@2+1, ab 2@2+1"},
      // t 3, T 1, q 0. aa 2. ab 3 and 4. aab by aa: u = 2 + 1 - 1 = 2; start at min(2, 2, 2 + 0) = 2; ab
      // twice: TID 2, 4 + 1 - 1 = 4: passes with 2. Work list a a aa b ab ab.
      {"baa", 0.1, "a 6@1+0, b 3@1+0, aa 2@2+1, ab 4@2+1, aab 1@3+2"},
  };
  // Pruning at 0.3, cut to 0: nothing goes.
  run.finalState = "a 6@1+0, b 3@1+0, aa 2@2+1, ab 4@2+1, aab 1@3+2";
  run.supportCount = 0;
  run.setsRemoved = 0;
  run.peakSets = 0;
  // Work lists 1 4 6: 11 / 3.
  run.aveExt = 11.0 / 3;
  run.maxExt = 6;
  run.longestCandidate = 3;
  run.longAdded = 3;
  return run;
}

// The letters of a transaction as item ids.
inline std::vector<int> itemsOf(const std::string& letters) {
  std::vector<int> items;
  for (char letter : letters) items.push_back(letter - 'a' + 1);
  return items;
}

inline std::vector<std::vector<int>> transactionsOf(const HandRun& run) {
  std::vector<std::vector<int>> transactions;
  for (const HandTransaction& transaction : run.transactions)
    transactions.push_back(itemsOf(transaction.items));
  return transactions;
}

}  // namespace oracle
