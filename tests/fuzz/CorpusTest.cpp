// Replays a fuzz target's corpus: its seeds, and every input that once found a fault.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> corpus() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(KORASSOC_CORPUS))
    files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::uint8_t> contents(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(KORASSOC_TARGET, SurvivesEveryFileOfItsCorpus) {
  int files = 0;
  for (const std::filesystem::path& path : corpus()) {
    SCOPED_TRACE(path.filename().string());
    const std::vector<std::uint8_t> bytes = contents(path);
    EXPECT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
    ++files;
  }
  EXPECT_GE(files, 80);
}

TEST(KORASSOC_TARGET, SurvivesTheShortestInputs) {
  const std::uint8_t byte = 0;
  EXPECT_EQ(LLVMFuzzerTestOneInput(&byte, 0), 0);
  EXPECT_EQ(LLVMFuzzerTestOneInput(&byte, 1), 0);
}

}  // namespace
