// Any bytes read as baskets are either understood as a reader understands them that goes the obvious way, or
// refused at the same place. Seeds lie in tests/corpus/BasketReaderFuzz; every test run replays them.
//
//   byte 0   the separator: comma, semicolon, tab, blanks; from 4 on it is recognised
//   byte 1   how the text comes: the low five bits tell how long its blocks are, the others how often it is
//            repeated, for what happens beyond the first 64 KiB alone
//   rest     the text

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "tests/support/PlainReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using korassoc::cli::Separator;
  if (size < 2) return 0;
  std::optional<Separator> separator;
  if (data[0] < 4) separator = static_cast<Separator>(data[0]);
  const std::size_t block = std::size_t{1} << (data[1] % 32 / 2);
  const std::string once(reinterpret_cast<const char*>(data) + 2, size - 2);
  std::string text;
  for (int times = data[1] / 32; times >= 0; --times) text += once;
  const std::string difference = differenceFromPlain(text, separator, block);
  if (difference.empty()) return 0;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}
