// Any bytes given as an XML state either make an engine that works like any other, or one that says that it
// is unusable. Seeds lie in tests/corpus/RestoreXmlFuzz; every test run replays them.

#include "fuzz/RestoredEngine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::tryState(fuzz::restoreXml, data, size);
  return 0;
}
