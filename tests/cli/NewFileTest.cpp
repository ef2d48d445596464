// Files that take the place of another, at each step of their way.

#include "cli/output/NewFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>

#include "tests/cli/TemporaryFolder.h"

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::KilledBySignal;
using ::testing::MatchesRegex;
using Naming = NewFile::Naming;

constexpr const char* kOwnName = "[.]korassoc-[0-9a-f]{32}[.]tmp";

class NewFileTest : public testing::TestWithParam<Naming> {
 protected:
  void SetUp() override {
    if (!NewFile(target(), GetParam()).giveName()) GTEST_SKIP() << "this system has no files without a name";
  }
  std::string target() const { return folder_.path("target"); }
  static void write(NewFile& file, const std::string& text) { std::ostream(&file.sink()) << text; }

  TemporaryFolder folder_;
};
using NewFileDeathTest = NewFileTest;

TEST_P(NewFileTest, TakesThePlaceOfItsTarget) {
  folder_.store("target", "before");
  {
    NewFile file(target(), GetParam());
    write(file, "after");
    EXPECT_TRUE(file.complete());
    EXPECT_EQ(folder_.contents("target"), "before");
    EXPECT_THAT(folder_.names(), ElementsAre(MatchesRegex(kOwnName), "target"));
    EXPECT_TRUE(file.replaceTarget());
    EXPECT_THAT(folder_.names(), ElementsAre("target"));
  }
  EXPECT_EQ(folder_.contents("target"), "after");
}

TEST_P(NewFileTest, IsNotSeenBeforeItIsCompleteWhenItIsNamedLate) {
  NewFile file(target(), GetParam());
  write(file, std::string(1 << 20, 'x'));
  EXPECT_EQ(folder_.names().size(), GetParam() == Naming::kLate ? 0U : 1U);
}

TEST_P(NewFileTest, LeavesNothingAtAnyStep) {
  { const NewFile file(target(), GetParam()); }
  EXPECT_THAT(folder_.names(), IsEmpty());
  {
    NewFile file(target(), GetParam());
    EXPECT_TRUE(file.giveName());
  }
  EXPECT_THAT(folder_.names(), IsEmpty());
  {
    NewFile file(target(), GetParam());
    write(file, "text");
    EXPECT_TRUE(file.complete());
  }
  EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_P(NewFileDeathTest, LeavesNothingWhenASignalEndsTheProcess) {
  EXPECT_EXIT(
      {
        arrangeSignals();
        NewFile file(target(), GetParam());
        write(file, "text");
        std::raise(SIGTERM);
      },
      KilledBySignal(SIGTERM), "");
  EXPECT_THAT(folder_.names(), IsEmpty());
  EXPECT_EXIT(
      {
        arrangeSignals();
        NewFile file(target(), GetParam());
        file.complete();
        std::raise(SIGINT);
      },
      KilledBySignal(SIGINT), "");
  EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_P(NewFileDeathTest, IsLeftAloneByASignalOnceItIsInItsPlace) {
  EXPECT_EXIT(
      {
        arrangeSignals();
        NewFile file(target(), GetParam());
        write(file, "text");
        file.complete();
        file.replaceTarget();
        std::raise(SIGHUP);
      },
      KilledBySignal(SIGHUP), "");
  EXPECT_EQ(folder_.contents("target"), "text");
  EXPECT_THAT(folder_.names(), ElementsAre("target"));
}

TEST_P(NewFileDeathTest, LeavesNothingWhenTheProcessIsKilledBeforeAFileThatIsNamedLateIsComplete) {
  if (GetParam() == Naming::kEarly) GTEST_SKIP() << "a file that is named early is left";
  EXPECT_EXIT(
      {
        NewFile file(target(), GetParam());
        write(file, std::string(1 << 20, 'x'));
        std::raise(SIGKILL);
      },
      KilledBySignal(SIGKILL), "");
  EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_P(NewFileTest, TellsWhatWentWrong) {
  NewFile file(folder_.path("absent/target"), GetParam());
  EXPECT_EQ(file.error(), ENOENT);
  EXPECT_FALSE(file.giveName());
  EXPECT_FALSE(file.complete());
  EXPECT_FALSE(file.replaceTarget());
  EXPECT_EQ(file.error(), ENOENT);
}

INSTANTIATE_TEST_SUITE_P(Naming, NewFileTest, testing::Values(Naming::kLate, Naming::kEarly));
INSTANTIATE_TEST_SUITE_P(Naming, NewFileDeathTest, testing::Values(Naming::kLate, Naming::kEarly));

}  // namespace
}  // namespace korassoc::cli
