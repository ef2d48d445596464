#include "cli/input/FileContent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/ExpectError.h"
#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;

TEST(FileContent, HoldsTheBytesOfAFile) {
  const TemporaryFile file(std::string_view("a\0b\n", 4));
  const FileContent content = FileContent::open(file.name());
  EXPECT_EQ(content.bytes(), std::string_view("a\0b\n", 4));
  EXPECT_EQ(content.name(), file.name());
}

TEST(FileContent, IsEmptyForAnEmptyFile) {
  const TemporaryFile file("");
  EXPECT_EQ(FileContent::open(file.name()).bytes().size(), 0U);
}

TEST(FileContent, KeepsItsBytesWhenItIsMoved) {
  const TemporaryFile file("bread\n");
  FileContent first = FileContent::open(file.name());
  FileContent second = std::move(first);
  EXPECT_EQ(second.bytes(), "bread\n");
  second = FileContent::open(file.name());
  EXPECT_EQ(second.bytes(), "bread\n");
}

TEST(FileContent, RefusesAMissingFile) {
  EXPECT_EQ(
      errorOf(ExitCode::kInput, [] { FileContent::open("/no/such/baskets.csv"); }),
      "/no/such/baskets.csv: cannot be read: No such file or directory; check the path and its permissions");
}

TEST(FileContent, RefusesADirectory) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(errorOf(ExitCode::kInput, [&] { FileContent::open(folder); }),
            folder + ": is a directory; give the basket file in it");
}

TEST(FileContent, RefusesAnEmptyName) {
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { FileContent::open(""); }), HasSubstr("file name is empty"));
}

TEST(FileContent, NamesAFileInOneLineWhateverItIsCalled) {
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { FileContent::open("/no/such\nfile"); }),
              HasSubstr("/no/such\\nfile: cannot be read"));
}

#if defined(__linux__)
TEST(FileContent, ReportsAReadThatFails) {
  // The first page of a process is never mapped: opening succeeds, reading does not.
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { FileContent::open("/proc/self/mem"); }),
              HasSubstr("/proc/self/mem: cannot be read: "));
}

TEST(FileContent, ReadsFilesThatTellNoSize) {
  EXPECT_THAT(std::string(FileContent::open("/proc/self/status").bytes()), HasSubstr("Pid:"));
}

TEST(FileContent, EndsAtTheFirstNulOfAnEndlessDevice) {
  const FileContent content = FileContent::open("/dev/zero");
  ASSERT_GE(content.bytes().size(), 1U);
  EXPECT_EQ(content.bytes()[0], '\0');
}
#endif

}  // namespace
}  // namespace korassoc::cli
