// How exact the tool's answers are, and what a limit on memory makes of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/cli/RunKorassoc.h"
#include "tests/cli/TemporaryFolder.h"
#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::string times(int n, const std::string& baskets) {
  std::string all;
  for (int i = 0; i < n; ++i) all += baskets;
  return all;
}

// Of every eight baskets bread is in 5, milk in 4, beer in 3, butter and crisps in 2; bread and milk are
// together in 3, bread and butter and beer and crisps in 2, every other pair in one or none.
const std::string kBaskets = times(10,
                                   "bread,milk\n"
                                   "bread,milk,butter\n"
                                   "beer,crisps\n"
                                   "bread,butter\n"
                                   "milk,bread\n"
                                   "beer\n"
                                   "crisps,beer,bread\n"
                                   "milk\n");

ToolRun mine(const std::string& baskets, std::vector<std::string> options, const ToolSetting& setting = {}) {
  const TemporaryFile file(baskets);
  options.insert(options.begin(), {"mine", file.name()});
  return runKorassoc(options, setting);
}

std::size_t rulesIn(const ToolRun& run) {
  std::size_t rules = 0;
  for (std::size_t at = 0; (at = run.out.find("=>  {", at)) != std::string::npos; ++at) ++rules;
  return rules;
}

TEST(ExactMining, IsWhatTheToolDoesUnlessAskedOtherwise) {
  const ToolRun run = mine(kBaskets, {"-s", "25%", "-c", "60%"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.out, StartsWith("# exact and complete; all rules: "));
  EXPECT_EQ(rulesIn(run), 5U);
}

TEST(ExactMining, RoundsTheThresholdUp) {
  // A quarter of ten baskets is two and a half, so three are needed: bread and milk are in three, beer and
  // crisps in two.
  const ToolRun run = mine(times(3, "bread,milk\n") + times(2, "beer,crisps\n") + times(5, "tea\n"),
                           {"-s", "25%", "-c", "10%"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("threshold     3 of 10 transactions\n"));
  EXPECT_EQ(rulesIn(run), 2U);
  EXPECT_THAT(run.out, Not(HasSubstr("crisps")));
}

TEST(ExactMining, FindsWhatTheFirstHalfNeverShowed) {
  const ToolRun run = mine(times(1000, "a,b\n") + times(1000, "c,d\n"), {"-s", "50%", "-c", "100%"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.out, HasSubstr("{c}         =>  {d}          1000  50.000%    100.000%  2.000\n"));
  EXPECT_EQ(rulesIn(run), 4U);
}

TEST(ExactMining, TakesALongBasketInItsStride) {
  std::string longest = "0";
  for (int item = 1; item < 300; ++item) longest += " " + std::to_string(item);
  const ToolRun run = mine(longest + "\n" + times(300, "1 2\n3 4\n"), {"-s", "2n", "-c", "90%"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(rulesIn(run), 4U);  // each of the two pairs both ways: 301 of 301
}

TEST(ExactMining, SaysThatLongerItemsetsAreNotLookedFor) {
  const std::string twelve = "1 2 3 4 5 6 7 8 9 10 11 12\n";
  const ToolRun run = mine(times(3, twelve), {"-s", "3n", "-c", "100%", "--top", "1"});
  EXPECT_THAT(run.err, HasSubstr("length        itemsets of more than 10 items are not looked for\n"));
  EXPECT_THAT(mine(kBaskets, {"-s", "25%", "-c", "60%"}).err, Not(HasSubstr("length  ")));
}

TEST(ApproximateMining, SaysSoAndCountsExactly) {
  const ToolRun run = mine(kBaskets, {"-s", "22%", "-c", "60%", "--approximate"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.out,
              StartsWith("# approximate (itemsets may be missing; figures are exact); all rules: support"));
  EXPECT_THAT(run.out, HasSubstr("{bread}     =>  {milk}         30  37.500%     60.000%  1.200\n"));
}

TEST(ApproximateMining, EndsOnDenseBasketsInGoodTime) {
  // Each basket holds 1,048,575 itemsets of twenty items, every one of them frequent: too many to count one
  // by one for each basket.
  std::string basket = "1";
  for (int item = 2; item <= 20; ++item) basket += " " + std::to_string(item);
  const ToolRun run =
      mine(times(1000, basket + "\n"), {"-s", "50%", "-c", "50%", "--approximate", "--top", "1"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(rulesIn(run), 1U);
}

TEST(OnePassMining, GivesBoundsThatHoldTheExactFigures) {
  const ToolRun run = mine(kBaskets, {"-s", "22%", "-c", "50%", "--one-pass", "--require-lhs", "bread"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.out, StartsWith("# one pass (itemsets may be missing; figures are bounds); all rules: "));
  EXPECT_THAT(run.out,
              HasSubstr("count >=  count <=  support >=  support <=  confidence >=  confidence <=\n"));
  const std::size_t row = run.out.find("{bread}  ");
  ASSERT_NE(row, std::string::npos) << run.out;
  int least = 0;
  int largest = 0;
  double figures[4] = {};
  ASSERT_EQ(std::sscanf(run.out.c_str() + row, "{bread} => {milk} %d %d %lf%% %lf%% %lf%% %lf%%", &least,
                        &largest, &figures[0], &figures[1], &figures[2], &figures[3]),
            6)
      << run.out;
  EXPECT_LE(least, 30);
  EXPECT_GE(largest, 30);
  EXPECT_DOUBLE_EQ(figures[0], least / 80.0 * 100);
  EXPECT_DOUBLE_EQ(figures[1], largest / 80.0 * 100);
  EXPECT_LE(figures[2], 60.0);
  EXPECT_GE(figures[3], 60.0);
  EXPECT_GT(figures[2], 40.0);
}

// Five items and three pairs are in a quarter of the baskets.
TEST(MemoryLimit, ThatSufficesChangesNothing) {
  const std::vector<std::string> options = {"-s", "25%", "-c", "60%"};
  const ToolRun limited = mine(kBaskets, {"-s", "25%", "-c", "60%", "--max-sets", "8"});
  EXPECT_EQ(limited.exitCode, 0);
  EXPECT_EQ(limited.out, mine(kBaskets, options).out);
}

TEST(MemoryLimit, ThatDoesNotLeavesNoExactResult) {
  const ToolRun run = mine(kBaskets, {"-s", "25%", "-c", "60%", "--max-sets", "7"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(
      run.err,
      HasSubstr(
          "korassoc: more than 7 itemsets are in 20 of 80 transactions: 1 itemset was refused, at which "
          "the run ended without a result; raise --max-sets or the support\n"));
}

TEST(MemoryLimit, OfAnExactRunHasNoUseForADisk) {
  const TemporaryFolder folder;
  const std::string disk = folder.path().string();
  const ToolRun fits = mine(kBaskets, {"-s", "25%", "-c", "60%", "--max-sets", "8", "--spill", disk});
  EXPECT_EQ(fits.exitCode, 0) << fits.err;
  EXPECT_EQ(fits.out, mine(kBaskets, {"-s", "25%", "-c", "60%"}).out);
  EXPECT_THAT(fits.err, HasSubstr("spilled       nothing: an exact run keeps its result alone"));
  const ToolRun full = mine(kBaskets, {"-s", "25%", "-c", "60%", "--max-sets", "7", "--spill", disk});
  EXPECT_EQ(full.exitCode, 4);
  EXPECT_THAT(full.err, HasSubstr("more than 7 itemsets"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

// Room for two of three items that come by turns: from the third basket on, every one drives out the item
// that was stored longest.
TEST(MemoryLimit, CountsWhatAnApproximateRunHasLost) {
  const ToolRun run =
      mine(times(3, "a\nb\nc\n"), {"-s", "1n", "-c", "50%", "--approximate", "--max-sets", "2"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.out, StartsWith("# approximate "));
  EXPECT_THAT(
      run.err,
      HasSubstr("korassoc: the limit of 2 itemsets decided this result: 7 itemsets were lost with their "
                "counts to make room for others, so some may be missing; raise --max-sets or the support\n"));
}

TEST(MemoryLimit, LosesNothingToADisk) {
  const TemporaryFolder folder;
  const ToolRun run = mine(times(3, "a\nb\nc\n"), {"-s", "1n", "-c", "50%", "--approximate", "--max-sets",
                                                   "2", "--spill", folder.path().string()});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_THAT(run.err, HasSubstr("itemsets      3 after the first pass, 3 at the end"));
  EXPECT_THAT(run.err, HasSubstr("itemsets were on the disk for a time\n"));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

// The third pair finds a memory full of items that were counted more than once, none of which can leave.
TEST(MemoryLimit, SaysWhereARunEndedThatCouldNotGoOn) {
  const ToolRun run =
      mine("a\nb\na\nb\nc\nc\n", {"-s", "1n", "-c", "50%", "--approximate", "--max-sets", "2"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err,
              HasSubstr("korassoc: the limit of 2 itemsets was reached in transaction 5 of 6: an itemset "
                        "was refused, and there is no result; raise --max-sets or the support\n"));
}

TEST(MemoryLimit, NamesTheSpillFolderThatWasRemovedInTheRun) {
  const TemporaryFolder folder;
  const std::string baskets = folder.path("baskets");
  const std::string spill = folder.path("spill");
  ASSERT_EQ(::mkfifo(baskets.c_str(), 0600), 0);
  for (const bool isFileThen : {false, true}) {
    std::filesystem::create_directory(spill);
    StartedTool tool(
        {"mine", baskets, "-s", "1n", "-c", "50%", "--approximate", "--max-sets", "2", "--spill", spill});
    {
      std::ofstream input(baskets);  // opens when the tool reads, which has looked at the folder by then
      std::filesystem::remove(spill);
      if (isFileThen) std::ofstream{spill};
      input << times(3, "a\nb\nc\n");
    }
    const ToolRun run = tool.wait();
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("korassoc: --spill " + spill +
                                   ": is no folder any more, so that in transaction 3 of 9 an itemset was "
                                   "refused, and there is no result; name a folder that stays\n"));
    std::filesystem::remove(spill);
  }
}

TEST(MiningOptions, ThatContradictEachOtherAreRefused) {
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{"--approximate", "--one-pass"},
                                             {"--approximate", "--spill", "."},
                                             {"--spill", "."},
                                             {"--one-pass", "--max-sets", "5", "--spill", "."},
                                             {"--max-sets", "0"},
                                             {"--max-sets", "-3"},
                                             {"--max-sets", "many"},
                                             {"--max-sets", "2147483647"},
                                             {"--max-sets", "99999999999"}}) {
    std::vector<std::string> all = {"-s", "25%", "-c", "60%"};
    all.insert(all.end(), options.begin(), options.end());
    const ToolRun run = mine(kBaskets, all);
    EXPECT_EQ(run.exitCode, 2) << options.front();
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, StartsWith("korassoc: "));
  }
}

TEST(MiningOptions, NameTheSpillFolderThatIsNotThere) {
  const ToolRun run = mine(
      kBaskets, {"-s", "25%", "-c", "60%", "--approximate", "--max-sets", "5", "--spill", "/no/such/folder"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_EQ(run.err, "korassoc: --spill /no/such/folder: is not a folder; name one that may be written to\n");
}

}  // namespace
}  // namespace korassoc::cli
