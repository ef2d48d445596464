// Handing the stored sets out as columns.

#include <algorithm>
#include <utility>

#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/ItemsetColumns.h"

korassoc::ItemsetColumns SetDictionary::columns() const {
  requireWhole();
  korassoc::ItemsetColumns columns;
  const auto add = [&columns](const ItemSet& set, const SetCounter& counter) {
    columns.add({set.getTheArray(), static_cast<std::size_t>(set.length())}, counter.count);
    columns.maxMissed.push_back(counter.getMaxMissed());
  };
  for (int level = 1; level <= storedLevels(); ++level) {
    if (isPacked()) {
      if (const korassoc::detail::PackedLevel* sets = packedLevel(level)) sets->forEach(add);
      continue;
    }
    levelTable(level).forEach([&add](const HashTable::Entry& entry) {
      if (entry.descriptor != nullptr) add(*entry.key, *entry.descriptor);
    });
  }
  const std::vector<int>& missed = columns.maxMissed;
  if (std::all_of(missed.begin(), missed.end(), [](int most) { return most == 0; }))
    columns.maxMissed.clear();
  return columns;
}
