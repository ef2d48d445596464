#include "korassoc/base/PlatformFile.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "tests/support/TemporaryFile.h"
#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
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

TEST(PlatformFile, MakesTheNamedFileAndRemovesItAtTheEnd) {
  const TemporaryFile temporary;
  auto file = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->name(), temporary.name());
  EXPECT_EQ(std::filesystem::file_size(temporary.name()), 0U);
  EXPECT_EQ(file->size(), 0U);
  EXPECT_TRUE(file->resize(12));
  EXPECT_EQ(file->size(), 12U);
  file.reset();
  EXPECT_FALSE(std::filesystem::exists(temporary.name()));
}

TEST(PlatformFile, DoesNotMakeAFileThatExists) {
  for (const char* contents : {"", "old contents"}) {
    const TemporaryFile temporary(contents);
    EXPECT_EQ(PlatformFile::createNamed(temporary.name()), nullptr);
    EXPECT_EQ(temporary.contents(), contents);
  }
}

TEST(PlatformFile, IsNullWhereNoFileCanBeOpened) {
  const TemporaryFile temporary;
  for (const std::string& name : {temporary.name() + "/below/nothing",
                                  std::filesystem::temp_directory_path().string(), std::string()}) {
    EXPECT_EQ(PlatformFile::createNamed(name), nullptr) << name;
    EXPECT_EQ(PlatformFile::openLeftover(name), nullptr) << name;
  }
  EXPECT_EQ(PlatformFile::openLeftover(temporary.name()), nullptr);
  EXPECT_FALSE(std::filesystem::exists(temporary.name()));
}

TEST(PlatformFile, OpensALeftoverAsItIsAndLetsItStayUnlessItTakesItOver) {
  const TemporaryFile temporary("old contents");
  {
    const auto file = PlatformFile::openLeftover(temporary.name());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size(), 12U);
    std::array<char, 3> bytes{};
    EXPECT_EQ(file->read(4, bytes.data(), bytes.size()), 3U);
    EXPECT_EQ(std::string(bytes.data(), 3), "con");
  }
  EXPECT_EQ(temporary.contents(), "old contents");
  {
    const auto file = PlatformFile::openLeftover(temporary.name());
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->takeOver());
    EXPECT_EQ(file->size(), 0U);
    EXPECT_EQ(std::filesystem::file_size(temporary.name()), 0U);
  }
  EXPECT_FALSE(std::filesystem::exists(temporary.name()));
}

TEST(PlatformFile, IsOpenedByOneAtATime) {
  const TemporaryFile temporary;
  auto made = PlatformFile::createNamed(temporary.name());
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(PlatformFile::openLeftover(temporary.name()), nullptr);
  EXPECT_TRUE(std::filesystem::exists(temporary.name()));
  made.reset();
  temporary.write("left");
  auto found = PlatformFile::openLeftover(temporary.name());
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(PlatformFile::openLeftover(temporary.name()), nullptr);
  found.reset();
  EXPECT_NE(PlatformFile::openLeftover(temporary.name()), nullptr);
}

TEST(PlatformFile, FollowsNoLink) {
  const TemporaryFile target("mine");
  const TemporaryFile link;
  std::error_code failed;
  std::filesystem::create_symlink(target.name(), link.name(), failed);
  if (failed || !std::filesystem::is_symlink(link.name())) GTEST_SKIP() << "no links here";
  EXPECT_EQ(PlatformFile::createNamed(link.name()), nullptr);
  EXPECT_EQ(PlatformFile::openLeftover(link.name()), nullptr);
  EXPECT_EQ(target.contents(), "mine");
  std::filesystem::remove(target.name());
  EXPECT_EQ(PlatformFile::createNamed(link.name()), nullptr) << "a link to nowhere";
  EXPECT_FALSE(std::filesystem::exists(target.name()));
  EXPECT_TRUE(std::filesystem::is_symlink(link.name()));
}

TEST(PlatformFile, IsNoLeftoverUnderTwoNames) {
  const TemporaryFile first("mine");
  const TemporaryFile second;
  std::filesystem::create_hard_link(first.name(), second.name());
  EXPECT_EQ(PlatformFile::openLeftover(first.name()), nullptr);
  EXPECT_EQ(PlatformFile::openLeftover(second.name()), nullptr);
  std::filesystem::remove(first.name());
  EXPECT_NE(PlatformFile::openLeftover(second.name()), nullptr);
}

TEST(PlatformFile, MakesADifferentTemporaryFileEachTime) {
  const auto first = PlatformFile::createTemporary("korassoc-test-");
  const auto second = PlatformFile::createTemporary("korassoc-test-");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first->name(), second->name());
  EXPECT_TRUE(first->write(0, "1", 1));
  EXPECT_EQ(first->size(), 1U);
  EXPECT_EQ(second->size(), 0U);
}

#if !defined(_WIN32)

// The open file of this process that has that name, or had it.
std::string openPath(const std::string& name) {
  for (const auto& entry : std::filesystem::directory_iterator("/dev/fd")) {
    std::error_code ignored;
    if (std::filesystem::read_symlink(entry.path(), ignored).string().starts_with(name)) {
      return entry.path().string();
    }
  }
  return "";
}

TEST(PlatformFile, IsTheCurrentUsersAlone) {
  const TemporaryFile temporary;
  const mode_t before = umask(0);
  const auto made = PlatformFile::createTemporary("korassoc-test-");
  const auto named = PlatformFile::createNamed(temporary.name());
  umask(before);
  ASSERT_NE(made, nullptr);
  ASSERT_NE(named, nullptr);
  for (const std::string& path : {openPath(made->name()), named->name()}) {
    if (path.empty()) GTEST_SKIP() << "open files cannot be looked at here";
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U) << path;
  }
}

TEST(PlatformFile, IsOutOfReachOnceItIsOpenWithoutAName) {
  const auto file = PlatformFile::createTemporary("korassoc-test-");
  ASSERT_NE(file, nullptr);
  EXPECT_FALSE(std::filesystem::exists(file->name()));
  EXPECT_TRUE(file->write(0, "abc", 3));
  std::array<char, 3> bytes{};
  EXPECT_EQ(file->read(0, bytes.data(), bytes.size()), 3U);
}

TEST(PlatformFile, OpensNoPipeAndNoDevice) {
  const TemporaryFile pipe;
  ASSERT_EQ(mkfifo(pipe.name().c_str(), 0600), 0);
  for (const std::string& name : {pipe.name(), std::string("/dev/null")}) {
    EXPECT_EQ(PlatformFile::createNamed(name), nullptr) << name;
    EXPECT_EQ(PlatformFile::openLeftover(name), nullptr) << name;
    EXPECT_TRUE(std::filesystem::exists(name)) << name;
  }
}

TEST(PlatformFile, OpensNoLeftoverOfAnotherUser) {
  const TemporaryFile temporary;
  temporary.write("");
  if (chown(temporary.name().c_str(), 12345, static_cast<gid_t>(-1)) != 0) {
    GTEST_SKIP() << "only root gives files away";
  }
  EXPECT_EQ(PlatformFile::openLeftover(temporary.name()), nullptr);
}

// What the program prints must not go into the file.
TEST(PlatformFile, IsNoStandardStreamOfAProgramWithoutThem) {
  const TemporaryFile temporary;
  const int saved = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  const auto file = PlatformFile::createNamed(temporary.name());
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
  if (saved >= 0) {
    dup2(saved, STDIN_FILENO);
    close(saved);
  }
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(file->write(0, "abc", 3));
  EXPECT_EQ(temporary.contents(), "abc");
}

TEST(PlatformFile, LeavesNothingWhereOnlyTheStandardStreamsWouldDo) {
  const TemporaryFile temporary;
  const TemporaryFile found("found");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const int saved = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  rlimit three = before;
  three.rlim_cur = 3;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &three), 0);
  const auto file = PlatformFile::createNamed(temporary.name());
  const auto leftover = PlatformFile::openLeftover(found.name());
  const auto unnamed = PlatformFile::createTemporary("korassoc-test-");
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "closed again";
  if (saved >= 0) {
    dup2(saved, STDIN_FILENO);
    close(saved);
  }
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(leftover, nullptr);
  EXPECT_EQ(unnamed, nullptr);
  EXPECT_FALSE(std::filesystem::exists(temporary.name()));
  EXPECT_EQ(found.contents(), "found");
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
