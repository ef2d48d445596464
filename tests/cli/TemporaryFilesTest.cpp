// Names that a run gives its own files, and the removal of those that a run has left.

#include "cli/process/TemporaryFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "tests/cli/TemporaryFolder.h"

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;
using std::chrono::hours;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kDocument = ".korassoc-0123456789abcdef0123456789abcdef.tmp";
constexpr const char* kSpill = "korassoc-0123456789abcdef.spill";

TEST(TemporaryNames, AreKnownAgain) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(isTemporaryName(newDocumentName()));
    EXPECT_TRUE(isTemporaryName(newSpillName()));
  }
  EXPECT_TRUE(isTemporaryName(kDocument));  // as versions before had them
  EXPECT_TRUE(isTemporaryName(kSpill));
  EXPECT_NE(newDocumentName(), newDocumentName());
  EXPECT_NE(newSpillName(), newSpillName());
}

TEST(TemporaryNames, AreNoOthers) {
  for (const char* name :
       {"", ".", "korassoc", "korassoc-.spill", ".korassoc-.tmp", "korassoc-0123456789abcde.spill",
        "korassoc-0123456789abcdef0.spill", "korassoc-0123456789abcdeF.spill",
        "korassoc-0123456789abcdeg.spill", "korassoc-0123456789abcdef.spill~",
        "xkorassoc-0123456789abcdef.spill", "korassoc-0123456789abcdef_spill",
        "korassoc-0123456789abcdef.tmp", ".korassoc-0123456789abcdef.tmp",
        "korassoc-0123456789abcdef0123456789abcdef.tmp", ".korassoc-0123456789abcdef0123456789abcde/.tmp",
        ".korassoc-0123456789abcdef0123456789abcdef.xml", ".Korassoc-0123456789abcdef0123456789abcdef.tmp"}) {
    EXPECT_FALSE(isTemporaryName(name)) << name;
  }
}

class Leftovers : public testing::Test {
 protected:
  void store(const std::string& name, hours age) const {
    folder_.store(name, "text");
    makeOlder(name, age);
  }
  void makeOlder(const std::string& name, hours age) const {
    fs::last_write_time(folder_.path(name), fs::file_time_type::clock::now() - age);
  }
  // What is said about them.
  std::string remove() const {
    testing::internal::CaptureStderr();
    removeLeftovers(folder_.path());
    return testing::internal::GetCapturedStderr();
  }

  TemporaryFolder folder_;
};

TEST_F(Leftovers, AreRemovedAfterADay) {
  store(kDocument, hours(25));
  store(kSpill, hours(24 * 365));
  const std::string said = remove();
  EXPECT_THAT(folder_.names(), IsEmpty());
  EXPECT_THAT(said, HasSubstr("removed       " + folder_.path(kDocument) + ": "));
  EXPECT_THAT(said, HasSubstr("removed       " + folder_.path(kSpill) + ": "));
}

TEST_F(Leftovers, AreNotWhatARunMayStillUse) {
  store(kDocument, hours(0));
  store(kSpill, hours(23));
  store(".korassoc-00000000000000000000000000000000.tmp", -hours(48));  // clocks differ
  EXPECT_EQ(remove(), "");
  EXPECT_EQ(folder_.names().size(), 3U);
}

TEST_F(Leftovers, AreNotFilesOfOtherNames) {
  store("korassoc-0123456789abcdef.spill.bak", hours(48));
  store("rules.xml.tmp", hours(48));
  store(".korassoc-.tmp", hours(48));
  EXPECT_EQ(remove(), "");
  EXPECT_EQ(folder_.names().size(), 3U);
}

TEST_F(Leftovers, AreRegularFiles) {
  fs::create_directory(folder_.path(kDocument));
  makeOlder(kDocument, hours(48));
  store("old", hours(48));
  fs::create_symlink("old", folder_.path(kSpill));
  EXPECT_EQ(remove(), "");
  EXPECT_THAT(folder_.names(), ElementsAre(kDocument, kSpill, "old"));
}

TEST_F(Leftovers, AreOurOwn) {
  if (::geteuid() != 0) GTEST_SKIP() << "the superuser alone gives files away";
  store(kSpill, hours(48));
  ASSERT_EQ(::chown(folder_.path(kSpill).c_str(), 65534, 65534), 0);
  EXPECT_EQ(remove(), "");
  EXPECT_THAT(folder_.names(), ElementsAre(kSpill));
}

TEST_F(Leftovers, MayBeSoughtInVain) {
  testing::internal::CaptureStderr();
  removeLeftovers(folder_.path("absent"));
  folder_.store("file", "");
  removeLeftovers(folder_.path("file"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace korassoc::cli
