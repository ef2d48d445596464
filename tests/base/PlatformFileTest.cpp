#include "korassoc/base/PlatformFile.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/TemporaryFile.h"
#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace korassoc::detail {
namespace {

TEST(PlatformFile, ReadsBackWhatItWroteAndZerosBetween) {
  const TemporaryFile temporary;
  const auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(file->resize(100));
  EXPECT_TRUE(file->write(10, "abc", 3));
  EXPECT_TRUE(file->write(98, "xyz", 3));  // beyond the end makes it longer
  EXPECT_EQ(std::filesystem::file_size(temporary.name()), 101U);
  std::array<char, 8> bytes{};
  EXPECT_EQ(file->read(8, bytes.data(), bytes.size()), 8U);
  EXPECT_EQ(std::string(bytes.data(), 8), std::string("\0\0abc\0\0\0", 8));
}

TEST(PlatformFile, ReadsLessAtItsEnd) {
  const TemporaryFile temporary;
  const auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  file->write(0, "abc", 3);
  std::array<char, 8> bytes{};
  EXPECT_EQ(file->read(1, bytes.data(), bytes.size()), 2U);
  EXPECT_EQ(file->read(3, bytes.data(), bytes.size()), 0U);
  EXPECT_EQ(file->read(1000, bytes.data(), bytes.size()), 0U);
}

TEST(PlatformFile, RefusesOffsetsAndSizesThatNoFileHas) {
  const TemporaryFile temporary;
  const auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  const std::uint64_t far = ~std::uint64_t{0};
  char byte = 0;
  EXPECT_EQ(file->read(far, &byte, 1), 0U);
  EXPECT_FALSE(file->write(far, &byte, 1));
  EXPECT_FALSE(file->resize(far));
}

TEST(PlatformFile, EmptiesTheNamedFileAndRemovesItAtTheEnd) {
  const TemporaryFile temporary("old contents");
  auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->name(), temporary.name());
  EXPECT_EQ(std::filesystem::file_size(temporary.name()), 0U);
  file.reset();
  EXPECT_FALSE(std::filesystem::exists(temporary.name()));
}

TEST(PlatformFile, IsNullWhereNoFileCanBeOpened) {
  const TemporaryFile temporary;
  EXPECT_EQ(PlatformFile::createNamed(temporary.name() + "/below/nothing"), nullptr);
  EXPECT_EQ(PlatformFile::createNamed(std::filesystem::temp_directory_path().string()), nullptr);
  EXPECT_EQ(PlatformFile::createNamed(""), nullptr);
}

TEST(PlatformFile, MakesADifferentTemporaryFileEachTime) {
  const auto first = PlatformFile::createTemporary("korassoc-test-");
  const auto second = PlatformFile::createTemporary("korassoc-test-");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first->name(), second->name());
  EXPECT_TRUE(first->write(0, "1", 1));
  EXPECT_EQ(std::filesystem::file_size(second->name()), 0U);
}

#if !defined(_WIN32)

TEST(PlatformFile, IsTheCurrentUsersAlone) {
  const TemporaryFile temporary;
  const mode_t before = umask(0);
  const auto made = PlatformFile::createTemporary("korassoc-test-");
  const auto named = PlatformFile::createNamed(temporary.name());
  umask(before);
  for (const auto* file : {&made, &named}) {
    ASSERT_NE(*file, nullptr);
    struct stat status {};
    ASSERT_EQ(stat((*file)->name().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
  }
}

TEST(PlatformFile, LeavesAFileThatTookItsNameAlone) {
  const TemporaryFile temporary;
  auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  std::filesystem::remove(temporary.name());
  temporary.write("another");
  EXPECT_TRUE(file->write(0, "mine", 4));
  file.reset();
  EXPECT_EQ(temporary.contents(), "another");
}

TEST(PlatformFile, LeavesNoTemporaryFileWhereTheDirectoryIsMissing) {
  const TemporaryFile missing;
  const char* const before = std::getenv("TMPDIR");
  const std::string saved = before != nullptr ? before : "";
  setenv("TMPDIR", missing.name().c_str(), 1);
  const auto file = PlatformFile::createTemporary("korassoc-test-");
  if (before != nullptr) {
    setenv("TMPDIR", saved.c_str(), 1);
  } else {
    unsetenv("TMPDIR");
  }
  EXPECT_EQ(file, nullptr);
}

TEST(PlatformFile, TakesNoRoomForBytesNeverWritten) {
  const TemporaryFile temporary;
  const auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  ASSERT_TRUE(file->resize(64U << 20));
  struct stat status {};
  ASSERT_EQ(stat(temporary.name().c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 64 << 20);
  const auto allocated = static_cast<std::uint64_t>(status.st_blocks) * 512U;
  if (allocated >= 64U << 20) GTEST_SKIP() << "this file system keeps no sparse files";
  EXPECT_LT(allocated, 1U << 20);
}

#endif

}  // namespace
}  // namespace korassoc::detail
