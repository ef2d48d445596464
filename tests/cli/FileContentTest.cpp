#include "cli/input/FileContent.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "tests/support/MemorySource.h"
#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {
namespace {

FileContent contentOf(const std::string& path) {
  Input input = Input::open(path);
  return FileContent(input);
}

TEST(FileContent, HoldsTheBytesOfAFile) {
  const TemporaryFile file(std::string_view("a\0b\n", 4));
  const FileContent content = contentOf(file.name());
  EXPECT_EQ(content.bytes(), std::string_view("a\0b\n", 4));
  EXPECT_EQ(content.name(), file.name());
}

TEST(FileContent, IsEmptyForAnEmptyFile) {
  const TemporaryFile file("");
  EXPECT_EQ(contentOf(file.name()).bytes().size(), 0U);
}

TEST(FileContent, KeepsItsBytesWhenItIsMoved) {
  const TemporaryFile file("bread\n");
  FileContent first = contentOf(file.name());
  FileContent second = std::move(first);
  EXPECT_EQ(second.bytes(), "bread\n");
  second = contentOf(file.name());
  EXPECT_EQ(second.bytes(), "bread\n");
}

TEST(FileContent, TakesWhatComesInShortBlocks) {
  std::string text;
  while (text.size() < 300000) text += std::to_string(text.size()) + "\n";
  for (const std::size_t block : {std::size_t{7}, std::size_t{65536}, std::size_t{1} << 20}) {
    Input input(std::make_unique<MemorySource>(text, block), "FILE");
    EXPECT_EQ(FileContent(input).bytes(), text);
  }
}

#if defined(__linux__)
TEST(FileContent, EndsAtTheFirstNulOfAnEndlessDevice) {
  const FileContent content = contentOf("/dev/zero");
  ASSERT_GE(content.bytes().size(), 1U);
  EXPECT_EQ(content.bytes()[0], '\0');
}
#endif

}  // namespace
}  // namespace korassoc::cli
