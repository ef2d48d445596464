// Files that are there as a whole or not at all.

#include "cli/output/DocumentFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "cli/CliError.h"
#include "tests/cli/ExpectError.h"
#include "tests/cli/TemporaryFolder.h"

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::size_t kSeveralBlocks = 300'000;

template <typename Run>
void expectError(ExitCode code, const ::testing::Matcher<std::string>& message, const Run& run) {
  EXPECT_THAT(errorOf(code, run), message);
}

class DocumentFileTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return folder_.path(name); }
  std::vector<std::string> names() const { return folder_.names(); }
  std::string contents(const std::string& name) const { return folder_.contents(name); }
  void store(const std::string& name, const std::string& text) const { folder_.store(name, text); }
  static void write(const std::string& file, const std::string& text) {
    DocumentFile(file).write([&](std::ostream& out) { out << text; });
  }

  TemporaryFolder folder_;
};

// No file of this process grows beyond so many bytes while one lives: a disk that runs full.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(std::size_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
};

// For the superuser every folder is writable; while one lives the process is somebody else.
class NoSuperuser {
 public:
  NoSuperuser() : before_(::geteuid()) {
    if (before_ == 0) changed_ = ::seteuid(65534) == 0;
  }
  ~NoSuperuser() {
    if (changed_ && ::seteuid(before_) != 0) std::abort();
  }
  NoSuperuser(const NoSuperuser&) = delete;
  NoSuperuser& operator=(const NoSuperuser&) = delete;

 private:
  uid_t before_;
  bool changed_ = false;
};

TEST_F(DocumentFileTest, HoldsWhatWasWrittenAndNothingElseIsLeft) {
  std::string text;
  while (text.size() < kSeveralBlocks) text += std::to_string(text.size()) + '\n';
  write(path("rules.xml"), text);
  EXPECT_EQ(contents("rules.xml"), text);
  EXPECT_THAT(names(), ElementsAre("rules.xml"));
}

TEST_F(DocumentFileTest, TakesTextInPiecesOfAnySize) {
  std::string text;
  DocumentFile(path("rules.xml")).write([&](std::ostream& out) {
    for (std::size_t size = 1; text.size() < kSeveralBlocks; size = size * 3 + 1) {
      const std::string piece(size, static_cast<char>('a' + size % 26));
      out << piece << 'x' << std::flush;
      text += piece + 'x';
    }
  });
  EXPECT_EQ(contents("rules.xml"), text);
}

TEST_F(DocumentFileTest, MayBeEmpty) {
  store("rules.xml", "before");
  write(path("rules.xml"), "");
  EXPECT_EQ(contents("rules.xml"), "");
}

TEST_F(DocumentFileTest, IsNotTouchedBeforeItIsWritten) {
  store("old.xml", "before");
  const DocumentFile existing(path("old.xml"));
  const DocumentFile coming(path("new.xml"));
  EXPECT_THAT(names(), ElementsAre("old.xml"));
  EXPECT_EQ(contents("old.xml"), "before");
}

TEST_F(DocumentFileTest, HoldsTheOldDocumentUntilTheNewOneIsComplete) {
  store("rules.xml", "before");
  DocumentFile(path("rules.xml")).write([&](std::ostream& out) {
    out << std::string(kSeveralBlocks, 'n') << std::flush;
    EXPECT_EQ(contents("rules.xml"), "before");
  });
  EXPECT_EQ(contents("rules.xml"), std::string(kSeveralBlocks, 'n'));
}

TEST_F(DocumentFileTest, GetsTheUsualPermissionsOfANewFile) {
  const mode_t mask = ::umask(027);
  write(path("rules.xml"), "text");
  ::umask(mask);
  EXPECT_EQ(fs::status(path("rules.xml")).permissions(), static_cast<fs::perms>(0640));
}

TEST_F(DocumentFileTest, KeepsThePermissionsOfTheFileThatItReplaces) {
  store("rules.xml", "before");
  fs::permissions(path("rules.xml"), static_cast<fs::perms>(0604));
  write(path("rules.xml"), "after");
  EXPECT_EQ(contents("rules.xml"), "after");
  EXPECT_EQ(fs::status(path("rules.xml")).permissions(), static_cast<fs::perms>(0604));
}

TEST_F(DocumentFileTest, IsWrittenWhereALinkLeads) {
  store("target.xml", "before");
  fs::create_symlink("target.xml", path("link.xml"));
  write(path("link.xml"), "after");
  EXPECT_TRUE(fs::is_symlink(path("link.xml")));
  EXPECT_EQ(contents("target.xml"), "after");
  EXPECT_THAT(names(), ElementsAre("link.xml", "target.xml"));
}

TEST_F(DocumentFileTest, IsMadeWhereALinkLeadsToNothingYet) {
  fs::create_directory(path("sub"));
  fs::create_symlink("sub/target.xml", path("link.xml"));
  write(path("link.xml"), "text");
  EXPECT_TRUE(fs::is_symlink(path("link.xml")));
  EXPECT_EQ(contents("sub/target.xml"), "text");
}

TEST_F(DocumentFileTest, StaysAsItWasWhenTheDiskRunsFull) {
  store("rules.xml", "before");
  const DocumentFile file(path("rules.xml"));
  for (const std::size_t limit : {std::size_t{0}, std::size_t{1}, std::size_t{65535}, std::size_t{65536},
                                  std::size_t{65537}, kSeveralBlocks - 1}) {
    const FileSizeLimit full(limit);
    expectError(
        ExitCode::kRunFailed,
        AllOf(HasSubstr(path("rules.xml")), HasSubstr("File too large"), HasSubstr("nothing was changed")),
        [&] { file.write([](std::ostream& out) { out << std::string(kSeveralBlocks, 'n'); }); });
    EXPECT_EQ(contents("rules.xml"), "before") << limit;
    EXPECT_THAT(names(), ElementsAre("rules.xml")) << limit;
  }
  const FileSizeLimit enough(kSeveralBlocks);
  file.write([](std::ostream& out) { out << std::string(kSeveralBlocks, 'n'); });
  EXPECT_EQ(contents("rules.xml"), std::string(kSeveralBlocks, 'n'));
}

TEST_F(DocumentFileTest, LeavesNothingWhereThereWasNothingWhenTheDiskRunsFull) {
  const FileSizeLimit full(10);
  expectError(ExitCode::kRunFailed, HasSubstr("File too large"),
              [&] { write(path("rules.xml"), "more than ten bytes"); });
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(DocumentFileTest, StaysAsItWasWhenTheWriterGivesUp) {
  store("rules.xml", "before");
  expectError(ExitCode::kRunFailed, HasSubstr("no rules today"), [&] {
    DocumentFile(path("rules.xml")).write([](std::ostream& out) {
      out << std::string(kSeveralBlocks, 'n');
      throw CliError(ExitCode::kRunFailed, "no rules today");
    });
  });
  EXPECT_EQ(contents("rules.xml"), "before");
  EXPECT_THAT(names(), ElementsAre("rules.xml"));
}

TEST_F(DocumentFileTest, IsRefusedWhenTheWriterLeavesABadStream) {
  store("rules.xml", "before");
  expectError(ExitCode::kRunFailed, HasSubstr(path("rules.xml")), [&] {
    DocumentFile(path("rules.xml")).write([](std::ostream& out) { out.setstate(std::ios::badbit); });
  });
  EXPECT_EQ(contents("rules.xml"), "before");
  EXPECT_THAT(names(), ElementsAre("rules.xml"));
}

TEST_F(DocumentFileTest, IsRefusedAtOnceInAFolderThatCannotBeWritten) {
  store("rules.xml", "before");
  fs::permissions(folder_.path(), static_cast<fs::perms>(0555));
  const NoSuperuser somebody;
  for (const char* name : {"rules.xml", "new.xml"}) {
    expectError(ExitCode::kRunFailed, AllOf(HasSubstr(path(name)), HasSubstr("Permission denied")),
                [&] { const DocumentFile file(path(name)); });
  }
  EXPECT_EQ(contents("rules.xml"), "before");
}

TEST_F(DocumentFileTest, IsRefusedAtOnceInPlaceOfAFileThatIsProtected) {
  store("rules.xml", "before");
  fs::permissions(path("rules.xml"), static_cast<fs::perms>(0444));
  fs::permissions(folder_.path(), static_cast<fs::perms>(0777));
  const NoSuperuser somebody;
  expectError(ExitCode::kRunFailed, AllOf(HasSubstr(path("rules.xml")), HasSubstr("Permission denied")),
              [&] { const DocumentFile file(path("rules.xml")); });
  EXPECT_EQ(contents("rules.xml"), "before");
}

TEST_F(DocumentFileTest, IsRefusedAtOnceWhereThereIsNoFolder) {
  store("file", "");
  expectError(ExitCode::kRunFailed,
              AllOf(HasSubstr("absent/rules.xml"), HasSubstr("No such file or directory")),
              [&] { const DocumentFile file(path("absent/rules.xml")); });
  expectError(ExitCode::kRunFailed, AllOf(HasSubstr("file/rules.xml"), HasSubstr("Not a directory")),
              [&] { const DocumentFile file(path("file/rules.xml")); });
  expectError(ExitCode::kRunFailed, HasSubstr("Is a directory"),
              [&] { const DocumentFile file(folder_.path().string()); });
  expectError(ExitCode::kUsage, HasSubstr("empty"), [] { const DocumentFile file(""); });
}

TEST_F(DocumentFileTest, FailsWhenTheFolderGoesAwayMeanwhile) {
  fs::create_directory(path("sub"));
  const DocumentFile file(path("sub/rules.xml"));
  expectError(ExitCode::kRunFailed, HasSubstr("No such file or directory"), [&] {
    file.write([&](std::ostream& out) {
      out << "text";
      fs::remove_all(path("sub"));
    });
  });
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(DocumentFileTest, FailsOnADeviceThatIsFullAndLeavesTheDeviceAlone) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
  const DocumentFile file("/dev/full");
  expectError(ExitCode::kRunFailed, AllOf(HasSubstr("/dev/full"), HasSubstr("No space left on device")),
              [&] { file.write([](std::ostream& out) { out << std::string(kSeveralBlocks, 'n'); }); });
  expectError(ExitCode::kRunFailed, HasSubstr("No space left on device"),
              [&] { file.write([](std::ostream& out) { out << "a little"; }); });
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(DocumentFileTest, WritesToADeviceWithoutReplacingIt) {
  write("/dev/null", "text");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(DocumentFileTest, KnowsItselfUnderAnotherName) {
  store("a.xml", "");
  fs::create_symlink("a.xml", path("link.xml"));
  fs::create_hard_link(path("a.xml"), path("hard.xml"));
  const DocumentFile a(path("a.xml"));
  EXPECT_TRUE(a.isSameAs(DocumentFile(path("./a.xml"))));
  EXPECT_TRUE(a.isSameAs(path("link.xml")));
  EXPECT_TRUE(a.isSameAs(path("hard.xml")));
  EXPECT_FALSE(a.isSameAs(path("b.xml")));
  const DocumentFile absent(path("b.xml"));
  EXPECT_TRUE(absent.isSameAs(path("./b.xml")));
  EXPECT_FALSE(absent.isSameAs(a));
}

}  // namespace
}  // namespace korassoc::cli
