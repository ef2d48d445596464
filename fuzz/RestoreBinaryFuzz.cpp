// Any bytes given as a binary state either make an engine that works like any other, or one that says that it
// is unusable. Seeds lie in tests/corpus/RestoreBinaryFuzz; every test run replays them.

#include "fuzz/RestoredEngine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::tryState(fuzz::restoreBinary, data, size);
  return 0;
}
