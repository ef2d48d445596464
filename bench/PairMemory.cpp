// What stored pairs take, everything included.
//
//   PairMemory [PAIRS]     default 10,000,000
//
// The pairs are stored the way phase I stores them. Prints a line of Markdown table:
//
//   pairs | bytes a pair at the end | peak of the process in GiB
//
// The bytes are those asked of the heap (blocks, chains' heads, index); the peak has the growing of the last
// two in it.

#include <sys/resource.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "bench/HeapBytes.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/ItemSetView.h"

int main(int argc, char** argv) {
  const int pairs = argc > 1 ? std::atoi(argv[1]) : 10000000;
  DictionarySettings settings;
  settings.SetMaxInStoreSets(2147483647);
  const std::size_t before = bench::heapBytes();
  SetDictionary dictionary(10, &settings, true);
  int stored = 0;
  for (int second = 1; stored < pairs; ++second) {
    for (int first = 0; first < second && stored < pairs; ++first, ++stored) {
      const std::array<int, 2> items{first, second};
      dictionary.add(ItemSetView(items.data(), 2), CarmaSetDescriptor(1, 1, 0));
    }
  }
  const double bytes = static_cast<double>(bench::heapBytes() - before);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("| %d | %.1f | %.3f |\n", pairs, bytes / pairs,
              static_cast<double>(usage.ru_maxrss) / (1 << 20));
  return 0;
}
