// Files that are there as a whole or not at all.

#include "cli/output/DocumentFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
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
#include "tests/support/FullDisk.h"

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
  struct stat statusOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(path(name).c_str(), &status), 0) << name;
    return status;
  }
  static void write(const std::string& file, const std::string& text) {
    DocumentFile(file).write([&](std::ostream& out) { out << text; });
  }

  TemporaryFolder folder_;
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

TEST_F(DocumentFileTest, IsNeverMadeToRunAsItsOwner) {
  store("rules.xml", "before");
  ASSERT_EQ(::chmod(path("rules.xml").c_str(), 07755), 0);
  write(path("rules.xml"), "after");
  EXPECT_EQ(contents("rules.xml"), "after");
  EXPECT_EQ(fs::status(path("rules.xml")).permissions(), static_cast<fs::perms>(0755));
}

// What somebody else allowed all the world to do with a file is no reason to allow it with one's own.
TEST_F(DocumentFileTest, IsOpenToNobodyMoreThanANewFileWhenItReplacesSomebodyElsesFile) {
  if (::geteuid() != 0) GTEST_SKIP() << "the superuser alone gives files away";
  struct Case {
    unsigned int before, after;
  };
  for (const Case& c : {Case{06777, 0644}, Case{0666, 0644}, Case{0640, 0640}, Case{0600, 0600},
                        Case{0444, 0644}, Case{0044, 0644}}) {
    store("rules.xml", "before");
    ASSERT_EQ(::chown(path("rules.xml").c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod(path("rules.xml").c_str(), c.before), 0);
    const mode_t mask = ::umask(022);
    write(path("rules.xml"), "after");
    ::umask(mask);
    EXPECT_EQ(contents("rules.xml"), "after");
    const struct stat now = statusOf("rules.xml");
    EXPECT_EQ(now.st_mode & 07777U, c.after) << std::oct << c.before;
    EXPECT_EQ(now.st_uid, 0U);
    EXPECT_EQ(now.st_gid, ::getegid());
    fs::remove(path("rules.xml"));
  }
}

TEST_F(DocumentFileTest, KeepsTheGroupOfTheFileThatItReplaces) {
  if (::geteuid() != 0) GTEST_SKIP() << "the superuser alone is sure to have a second group";
  store("rules.xml", "before");
  ASSERT_EQ(::chown(path("rules.xml").c_str(), 0, 65534), 0);
  ASSERT_EQ(::chmod(path("rules.xml").c_str(), 0664), 0);
  write(path("rules.xml"), "after");
  EXPECT_EQ(statusOf("rules.xml").st_gid, 65534U);
  EXPECT_EQ(statusOf("rules.xml").st_mode & 07777U, 0664U);
}

TEST_F(DocumentFileTest, GivesAGroupThatItCannotKeepNothingOfItsRights) {
  if (::geteuid() != 0) GTEST_SKIP() << "the superuser alone makes files of groups that it then is not in";
  store("rules.xml", "before");
  ASSERT_EQ(::chown(path("rules.xml").c_str(), 65534, 65533), 0);
  ASSERT_EQ(::chmod(path("rules.xml").c_str(), 0674), 0);
  fs::permissions(folder_.path(), static_cast<fs::perms>(0777));
  {
    const NoSuperuser somebody;
    write(path("rules.xml"), "after");
  }
  EXPECT_EQ(contents("rules.xml"), "after");
  EXPECT_NE(statusOf("rules.xml").st_gid, 65533U);
  EXPECT_EQ(statusOf("rules.xml").st_mode & 07777U, 0644U);  // what all the world may, and no more
}

// An open file stays open whatever permissions it is given later.
TEST_F(DocumentFileTest, IsNeverMoreOpenThanTheFileThatItReplaces) {
  store("rules.xml", "before");
  fs::permissions(path("rules.xml"), static_cast<fs::perms>(0600));
  DocumentFile(path("rules.xml")).write([&](std::ostream& out) {
    out << std::string(kSeveralBlocks, 'n') << std::flush;
    for (const std::string& name : names()) EXPECT_EQ(statusOf(name).st_mode & 07777U, 0600U) << name;
  });
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

TEST_F(DocumentFileTest, IsWrittenWhereManyLinksLead) {
  store("0", "before");
  for (int i = 1; i <= 39; ++i) fs::create_symlink(std::to_string(i - 1), path(std::to_string(i)));
  write(path("39"), "after");
  EXPECT_EQ(contents("0"), "after");
  EXPECT_TRUE(fs::is_symlink(path("1")));
}

TEST_F(DocumentFileTest, IsRefusedWhereLinksLeadRoundInACircle) {
  fs::create_symlink("b.xml", path("a.xml"));
  fs::create_symlink("a.xml", path("b.xml"));
  fs::create_symlink("self", path("self"));
  for (const char* name : {"a.xml", "self", "self/a.xml"}) {
    expectError(ExitCode::kRunFailed,
                AllOf(HasSubstr(path(name)), HasSubstr("Too many levels of symbolic links"),
                      HasSubstr("nothing was changed")),
                [&] { const DocumentFile file(path(name)); });
  }
  EXPECT_EQ(fs::read_symlink(path("a.xml")), "b.xml");
  EXPECT_THAT(names(), ElementsAre("a.xml", "b.xml", "self"));
}

TEST_F(DocumentFileTest, IsRefusedWhereSomebodyElseHasPutALinkAmongEverybodysFiles) {
  if (::geteuid() != 0) GTEST_SKIP() << "the superuser alone gives links away";
  store("ours.xml", "before");
  fs::create_directory(path("everybodys"));
  fs::create_symlink("../ours.xml", path("everybodys/link.xml"));
  ASSERT_EQ(::lchown(path("everybodys/link.xml").c_str(), 65534, 65534), 0);
  const auto refused = [&] {
    expectError(ExitCode::kRunFailed,
                AllOf(HasSubstr(path("everybodys/link.xml")), HasSubstr("Permission denied")),
                [&] { const DocumentFile file(path("everybodys/link.xml")); });
  };
  ASSERT_EQ(::chmod(path("everybodys").c_str(), 01777), 0);
  refused();
  fs::remove(path("ours.xml"));  // nor is it followed to where nothing is yet
  refused();
  ASSERT_EQ(::chmod(path("everybodys").c_str(), 0777), 0);  // who may take away any file needs no link
  write(path("everybodys/link.xml"), "after");
  ASSERT_EQ(::chmod(path("everybodys").c_str(), 01777), 0);
  ASSERT_EQ(::lchown(path("everybodys/link.xml").c_str(), 0, 0), 0);
  write(path("everybodys/link.xml"), "ours");
  EXPECT_EQ(contents("ours.xml"), "ours");
}

TEST_F(DocumentFileTest, StaysAsItWasWhenTheDiskRunsFull) {
  store("rules.xml", "before");
  const DocumentFile file(path("rules.xml"));
  for (const std::size_t limit : {std::size_t{0}, std::size_t{1}, std::size_t{65535}, std::size_t{65536},
                                  std::size_t{65537}, kSeveralBlocks - 1}) {
    const FullDisk full(limit);
    expectError(
        ExitCode::kRunFailed,
        AllOf(HasSubstr(path("rules.xml")), HasSubstr("File too large"), HasSubstr("nothing was changed")),
        [&] { file.write([](std::ostream& out) { out << std::string(kSeveralBlocks, 'n'); }); });
    EXPECT_EQ(contents("rules.xml"), "before") << limit;
    EXPECT_THAT(names(), ElementsAre("rules.xml")) << limit;
  }
  const FullDisk enough(kSeveralBlocks);
  file.write([](std::ostream& out) { out << std::string(kSeveralBlocks, 'n'); });
  EXPECT_EQ(contents("rules.xml"), std::string(kSeveralBlocks, 'n'));
}

TEST_F(DocumentFileTest, LeavesNothingWhereThereWasNothingWhenTheDiskRunsFull) {
  const FullDisk full(10);
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
