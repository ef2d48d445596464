// The stored sets as text, for tests that compare states worked out by hand.

#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tests/oracle/Items.h"

namespace oracle {

struct StateEntry {
  Items set;
  int count;
  int tid;
  int maxMissed;
};

// "a 2@1+0, ab 1@2+1": items as letters (a = 1), count@TID+maxMissed, smaller sets first.
inline std::string stateText(std::vector<StateEntry> entries) {
  std::sort(entries.begin(), entries.end(),
            [](const StateEntry& a, const StateEntry& b) { return comesBefore(a.set, b.set); });
  std::string text;
  for (const StateEntry& entry : entries) {
    if (!text.empty()) text += ", ";
    for (int item : entry.set) text += static_cast<char>('a' + item - 1);
    text += " " + std::to_string(entry.count) + "@" + std::to_string(entry.tid) + "+" +
            std::to_string(entry.maxMissed);
  }
  return text;
}

}  // namespace oracle
