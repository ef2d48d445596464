// The documents that the tool writes, and what it leaves when it cannot.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "korassoc/korassoc.h"
#include "tests/cli/RunKorassoc.h"
#include "tests/cli/TemporaryFolder.h"
#include "tests/support/ExportedModel.h"
#include "tests/support/VectorTransactions.h"

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* kBaskets = "2 8\n5 8\n2 5\n2 5\n2 5 8\n2 5 8\n2\n5\n5\n5\n9\n9\n";
const Transactions kTransactions = {{2, 8}, {5, 8}, {2, 5}, {2, 5}, {2, 5, 8}, {2, 5, 8},
                                    {2},    {5},    {5},    {5},    {9},       {9}};

// What the library itself writes of those baskets.
class Library : public ExportedModel {
 public:
  explicit Library(double support) : ExportedModel(kTransactions, support) {}
};

class Documents : public testing::Test {
 protected:
  Documents() { folder_.store("baskets", kBaskets); }

  std::string path(const std::string& name) const { return folder_.path(name); }
  ToolRun mine(const std::vector<std::string>& options, const ToolSetting& setting = {}) const {
    std::vector<std::string> arguments = {"mine", path("baskets"), "-s", "1n", "-c", "50%"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runKorassoc(arguments, setting);
  }
  // The run ended with the code, said this in one line, printed no results and left these files.
  static void expectFailure(const ToolRun& run, int exitCode, const ::testing::Matcher<std::string>& error) {
    EXPECT_EQ(run.exitCode, exitCode);
    EXPECT_THAT(run.err, error);
    EXPECT_EQ(run.out, "");
  }

  TemporaryFolder folder_;
};

TEST_F(Documents, AreThoseOfTheLibrary) {
  const ToolRun run = mine({"--pmml", path("rules.xml"), "--lattice", path("lattice.xml")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  Library library(1.0 / 12);
  EXPECT_EQ(folder_.contents("rules.xml"), library.rules(1.0 / 12, 0.5, false));
  EXPECT_EQ(folder_.contents("lattice.xml"), library.lattice());
  EXPECT_THAT(folder_.contents("rules.xml"), HasSubstr("numberOfRules=\"11\""));
  EXPECT_THAT(folder_.names(), ElementsAre("baskets", "lattice.xml", "rules.xml"));
  EXPECT_THAT(run.err, AllOf(HasSubstr("document      " + path("rules.xml") + ": the rules as PMML"),
                             HasSubstr("document      " + path("lattice.xml") + ": the lattice")));
}

TEST_F(Documents, LeaveTheTableAsItIs) {
  const ToolRun run = mine({"--pmml", path("rules.xml"), "--lattice", path("lattice.xml")});
  EXPECT_THAT(run.out, HasSubstr("{8}"));
  EXPECT_EQ(run.out, mine({}).out);
}

TEST_F(Documents, HoldTheRulesThatAreNotRedundantWhenThoseAreAskedFor) {
  EXPECT_EQ(mine({"--pmml", path("rules.xml"), "--nonredundant"}).exitCode, 0);
  EXPECT_EQ(folder_.contents("rules.xml"), Library(1.0 / 12).rules(1.0 / 12, 0.5, true));
  EXPECT_THAT(folder_.contents("rules.xml"), HasSubstr("numberOfRules=\"7\""));
}

TEST_F(Documents, DoNotKnowTheFilters) {
  EXPECT_EQ(mine({"--pmml", path("rules.xml"), "--require-rhs", "8", "--top", "1"}).exitCode, 0);
  EXPECT_EQ(folder_.contents("rules.xml"), Library(1.0 / 12).rules(1.0 / 12, 0.5, false));
}

TEST_F(Documents, NumberLabelsInTheirOrder) {
  folder_.store("baskets", "milk,bread\nmilk,bread\nbread\n");
  const ToolRun run = mine({"--lattice", path("lattice.xml")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(folder_.contents("lattice.xml"), AllOf(HasSubstr("value=\"0\"\n\t\t\tcount=\"3\""),
                                                     HasSubstr("value=\"1\"\n\t\t\tcount=\"2\"")));
}

TEST_F(Documents, ReplaceWhatWasThere) {
  folder_.store("rules.xml", "before");
  EXPECT_EQ(mine({"--pmml", path("rules.xml")}).exitCode, 0);
  EXPECT_EQ(folder_.contents("rules.xml"), Library(1.0 / 12).rules(1.0 / 12, 0.5, false));
}

TEST_F(Documents, ThatHaveNoFolderEndTheRunBeforeItMines) {
  for (const char* option : {"--pmml", "--lattice"}) {
    const ToolRun run = mine({option, path("absent/out.xml")});
    expectFailure(run, 1, AllOf(HasSubstr(path("absent/out.xml")), HasSubstr("No such file or directory")));
    EXPECT_THAT(run.err, Not(HasSubstr("threshold")));
  }
  EXPECT_THAT(folder_.names(), ElementsAre("baskets"));
}

TEST_F(Documents, InAFolderThatCannotBeWrittenEndTheRun) {
  if (::geteuid() == 0) GTEST_SKIP() << "every folder can be written by the superuser";
  fs::permissions(folder_.path(), static_cast<fs::perms>(0555));
  expectFailure(mine({"--pmml", path("rules.xml")}), 1,
                AllOf(HasSubstr(path("rules.xml")), HasSubstr("Permission denied")));
}

TEST_F(Documents, OnADeviceThatIsFullEndTheRun) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
  for (const char* option : {"--pmml", "--lattice"}) {
    expectFailure(mine({option, "/dev/full"}), 1,
                  AllOf(HasSubstr("/dev/full"), HasSubstr("No space left on device")));
  }
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(Documents, StayAsTheyWereWhenTheDiskRunsFull) {
  folder_.store("rules.xml", "before");
  folder_.store("lattice.xml", "before");
  ToolSetting full;
  full.fileSizeBytes = 2000;
  for (const auto& [option, name] :
       {std::pair("--pmml", "rules.xml"), std::pair("--lattice", "lattice.xml")}) {
    expectFailure(mine({option, path(name)}, full), 1,
                  AllOf(HasSubstr(path(name)), HasSubstr("File too large")));
    EXPECT_EQ(folder_.contents(name), "before");
  }
  EXPECT_THAT(folder_.names(), ElementsAre("baskets", "lattice.xml", "rules.xml"));
}

TEST_F(Documents, OfNothingFrequentAreNoRulesButALattice) {
  folder_.store("rules.xml", "before");
  const std::vector<std::string> ask = {"mine", path("baskets"), "-s", "12n", "-c", "50%"};
  std::vector<std::string> arguments = ask;
  arguments.insert(arguments.end(), {"--pmml", path("rules.xml")});
  expectFailure(runKorassoc(arguments), 1,
                AllOf(HasSubstr(path("rules.xml")), HasSubstr("no item is in 12 transactions")));
  EXPECT_EQ(folder_.contents("rules.xml"), "before");
  arguments = ask;
  arguments.insert(arguments.end(), {"--lattice", path("lattice.xml")});
  EXPECT_EQ(runKorassoc(arguments).exitCode, 0);
  EXPECT_THAT(folder_.contents("lattice.xml"), HasSubstr("numberOfItemsets=\"1\""));
}

TEST_F(Documents, AreNotWrittenOverTheBaskets) {
  expectFailure(mine({"--pmml", path("./baskets")}), 2, HasSubstr("is the basket file"));
  expectFailure(mine({"--lattice", path("baskets")}), 2, HasSubstr("is the basket file"));
  EXPECT_EQ(folder_.contents("baskets"), kBaskets);
}

// Whatever it is called: standard input is the same file under any of its names.
TEST_F(Documents, AreNotWrittenOverTheBasketsOnStandardInput) {
  fs::create_symlink("baskets", path("link"));
  fs::create_hard_link(path("baskets"), path("hard"));
  const int baskets = ::open(path("baskets").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(baskets, 0);
  ToolSetting setting;
  setting.descriptors = {{STDIN_FILENO, baskets}};
  for (const char* option : {"--pmml", "--lattice"}) {
    for (const char* name : {"baskets", "link", "hard"}) {
      const ToolRun run = runKorassoc({"mine", "-", "-s", "1n", "-c", "50%", option, path(name)}, setting);
      expectFailure(run, 2, HasSubstr(path(name) + ": is the basket file"));
    }
  }
  EXPECT_EQ(runKorassoc({"mine", "-", "-s", "1n", "-c", "50%", "--pmml", path("rules")}, setting).exitCode,
            0);
  ::close(baskets);
  EXPECT_EQ(folder_.contents("baskets"), kBaskets);
  EXPECT_THAT(folder_.names(), ElementsAre("baskets", "hard", "link", "rules"));
}

// A device is written to and not replaced, so it may well be both.
TEST_F(Documents, MayGoToTheDeviceThatTheBasketsComeFrom) {
  const int device = ::open("/dev/zero", O_RDWR | O_CLOEXEC);
  ASSERT_GE(device, 0);
  ToolSetting setting;
  setting.descriptors = {{STDIN_FILENO, device}};
  const ToolRun run = runKorassoc({"mine", "-", "-s", "1n", "-c", "50%", "--pmml", "/dev/zero"}, setting);
  ::close(device);
  expectFailure(run, 3, HasSubstr("standard input"));  // it has no baskets, to be sure
}

TEST_F(Documents, AreNotWrittenOverEachOther) {
  expectFailure(mine({"--pmml", path("out.xml"), "--lattice", path("./out.xml")}), 2,
                HasSubstr("is the file of --pmml"));
  EXPECT_THAT(folder_.names(), ElementsAre("baskets"));
  EXPECT_EQ(mine({"--pmml", "/dev/null", "--lattice", "/dev/null"}).exitCode, 0);
}

TEST_F(Documents, AreNotWrittenOverStandardOutput) {
  folder_.store("out", "");
  const std::string out = path("out");
  ToolSetting setting;
  setting.outputPath = out.c_str();
  const ToolRun run = mine({"--pmml", out}, setting);
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_THAT(run.err, HasSubstr("is where standard output goes"));
  EXPECT_THAT(folder_.contents("out"), IsEmpty());
}

TEST_F(Documents, AreNotWrittenOverStandardError) {
  folder_.store("log", "");
  const int log = ::open(path("log").c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(log, 0);
  ToolSetting setting;
  setting.descriptors = {{STDERR_FILENO, log}};
  EXPECT_EQ(mine({"--pmml", path("log")}, setting).exitCode, 2);
  ::close(log);
  EXPECT_THAT(folder_.contents("log"), HasSubstr("is where standard error goes"));
}

TEST_F(Documents, TakeAwayWhatAKilledRunHasLeftADayAgo) {
  fs::create_directory(path("spill"));
  const std::string document = ".korassoc-0123456789abcdef0123456789abcdef.tmp";
  const std::string spill = "spill/korassoc-0123456789abcdef.spill";
  for (const std::string& name : {document, spill}) {
    folder_.store(name, "text");
    fs::last_write_time(path(name), fs::file_time_type::clock::now() - std::chrono::hours(25));
  }
  const ToolRun run =
      mine({"--pmml", path("rules.xml"), "--approximate", "--max-sets", "100", "--spill", path("spill")});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(folder_.names(), ElementsAre("baskets", "rules.xml", "spill"));
  EXPECT_TRUE(fs::is_empty(path("spill")));
  EXPECT_THAT(run.err,
              AllOf(HasSubstr("removed       " + path(document)), HasSubstr("removed       " + path(spill))));
}

}  // namespace
}  // namespace korassoc::cli
