// The dictionary as text.

#include <iostream>
#include <string>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"

namespace {

void displayTable(const HashTable& table) {
  int bucket = -1;
  table.forEach([&](const HashTable::Entry& entry) {
    if (const int next = table.bucketOf(*entry.key); next != bucket) {
      if (bucket >= 0) std::cout << "\n";
      bucket = next;
      std::cout << "Bucket " << std::to_string(bucket) << " : ";
    }
    const int count = entry.descriptor != nullptr ? entry.descriptor->count : 0;
    std::cout << "ISCPair: count=" << std::to_string(count) << ", ItemSet: ";
    entry.key->display();
  });
  if (bucket >= 0) std::cout << "\n";
  std::cout << "End of Hashtable.\n";
}

}  // namespace

void SetDictionary::display() const {
  const Hold hold(*this);
  std::cout << "\nThe DICTIONARY:   total sets: " << std::to_string(inStoreCount_) << "\n";
  for (int level = 0; level <= getHighestLevel(); ++level) {
    const HashTable& table = levelTable(level);
    std::cout << " ---- LEVEL  " << std::to_string(level) << " --------- " << std::to_string(table.count())
              << " sets -----------\n";
    displayTable(table);
  }
}
