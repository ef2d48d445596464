// The tool from end to end on baskets small enough to count by hand.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/cli/RunKorassoc.h"
#include "tests/support/TemporaryFile.h"

#if defined(__SANITIZE_ADDRESS__)
#define KORASSOC_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORASSOC_ADDRESS_SANITIZER
#endif
#endif

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// bread 5, milk 4, beer 3, butter 2, crisps 2; bread and milk 3, bread and butter 2, beer and crisps 2; every
// other pair once or never.
constexpr std::string_view kBaskets =
    "bread,milk\n"
    "bread,milk,butter\n"
    "beer,crisps\n"
    "bread,butter\n"
    "milk,bread\n"
    "beer\n"
    "crisps,beer,bread\n"
    "milk\n";

// The baskets ten times over.
std::string tenTimes(std::string_view baskets) {
  std::string all;
  for (int i = 0; i < 10; ++i) all += baskets;
  return all;
}

ToolRun mine(std::vector<std::string> options, const std::string& baskets = tenTimes(kBaskets)) {
  const TemporaryFile file(baskets);
  options.insert(options.begin(), {"mine", file.name()});
  ToolRun run = runKorassoc(options);
  EXPECT_EQ(run.exitCode, 0) << run.err;
  return run;
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> all;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    all.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return all;
}

// The rules of a table as "{a} => {b} count confidence lift", blanks squeezed, support left out.
std::vector<std::string> rules(const ToolRun& run) {
  std::vector<std::string> all;
  for (const std::string& line : lines(run.out)) {
    if (line.find("=>") == std::string::npos) continue;
    std::string squeezed;
    for (const char c : line) {
      if (c != ' ' || squeezed.empty() || squeezed.back() != ' ') squeezed += c;
    }
    all.push_back(squeezed);
  }
  return all;
}

TEST(Mine, PrintsTheRulesBestFirst) {
  const ToolRun run = mine({"-s", "22%", "-c", "60%"});
  EXPECT_EQ(run.out,
            "# exact and complete; all rules: support at least 18 of 80 transactions (22%), confidence at "
            "least 60%; by confidence\n"
            "antecedent      consequent  count  support  confidence   lift\n"
            "{butter}    =>  {bread}        20  25.000%    100.000%  1.600\n"
            "{crisps}    =>  {beer}         20  25.000%    100.000%  2.667\n"
            "{milk}      =>  {bread}        30  37.500%     75.000%  1.200\n"
            "{beer}      =>  {crisps}       20  25.000%     66.667%  2.667\n"
            "{bread}     =>  {milk}         30  37.500%     60.000%  1.200\n");
}

TEST(Mine, TellsTheFiguresOfTheRunOnStandardError) {
  const ToolRun run = mine({"-s", "0.2", "-c", "0.6"}, "a;b\n\na;b;a\n  \nc;;\n");
  EXPECT_THAT(run.err, HasSubstr(": labels separated by semicolon (recognised)\n"));
  EXPECT_THAT(run.err, HasSubstr("transactions  3\n"));
  EXPECT_THAT(run.err, HasSubstr("items         3 different, 5 in all\n"));
  EXPECT_THAT(run.err, HasSubstr("passed over   2 lines without an item\n"));
  EXPECT_THAT(run.err, HasSubstr("passed over   2 empty places between separators\n"));
  EXPECT_THAT(run.err, HasSubstr("repeats       1 baskets name an item more than once; it counts once\n"));
  EXPECT_THAT(run.err, HasSubstr("threshold     1 of 3 transactions\n"));
  EXPECT_THAT(run.err, HasSubstr("rules         2\n"));
  EXPECT_THAT(run.err, HasSubstr("seconds       reading "));
}

TEST(Mine, TakesTheThreeSpellingsOfASupport) {
  const std::vector<std::string> wanted = rules(mine({"-s", "22%", "-c", "60%"}));
  ASSERT_EQ(wanted.size(), 5U);
  EXPECT_EQ(rules(mine({"-s", "0.22", "-c", "0.6"})), wanted);
  EXPECT_EQ(rules(mine({"-s", "18n", "-c", "60%"})), wanted);
  EXPECT_EQ(rules(mine({"--support=0.22", "--confidence=0.6"})), wanted);
}

TEST(Mine, RefusesASupportOfNothing) {
  const TemporaryFile file(kBaskets);
  for (const char* support : {"0", "0%", "0n", "0.0", "1e-300"}) {
    const ToolRun run = runKorassoc({"mine", file.name(), "-s", support, "-c", "60%"});
    EXPECT_EQ(run.exitCode, 2) << support;
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr(std::string("korassoc: --support ") + support + ": is "));
  }
  EXPECT_THAT(rules(mine({"-s", "1n", "-c", "100%", "--require-rhs", "crisps"}, std::string(kBaskets))),
              ElementsAre("{beer, bread} => {crisps} 1 12.500% 100.000% 4.000"));
}

TEST(Mine, NeverShowsARuleBelowTheSupport) {
  // 26% of 80 transactions are 20.8: the pairs that 20 transactions hold are not enough.
  EXPECT_THAT(rules(mine({"-s", "26%", "-c", "1%"})),
              ElementsAre("{milk} => {bread} 30 37.500% 75.000% 1.200",
                          "{bread} => {milk} 30 37.500% 60.000% 1.200"));
}

TEST(Mine, CountsARepeatedItemOnce) {
  EXPECT_THAT(rules(mine({"-s", "45%", "-c", "1%"}, tenTimes("a b a\nb a b\nc c\nc\n"))),
              ElementsAre("{a} => {b} 20 50.000% 100.000% 2.000", "{b} => {a} 20 50.000% 100.000% 2.000"));
}

TEST(Mine, ReadsIntegersAndSortsThemAsNumbers) {
  EXPECT_THAT(rules(mine({"-s", "35%", "-c", "90%"}, tenTimes("10 9\n9 10\n9\n7 200\n200 7\n"))),
              ElementsAre("{7} => {200} 20 40.000% 100.000% 2.500", "{10} => {9} 20 40.000% 100.000% 1.667",
                          "{200} => {7} 20 40.000% 100.000% 2.500"));
}

TEST(Mine, ReadsStandardInput) {
  const std::string baskets = tenTimes(kBaskets);
  const ToolRun run = runKorassoc({"mine", "-", "-s", "22%", "-c", "60%"}, {.input = baskets});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.out, mine({"-s", "22%", "-c", "60%"}).out);
  EXPECT_THAT(run.err, HasSubstr("input         standard input: labels"));
}

TEST(Mine, KeepsLabelsInOneLine) {
  const ToolRun run =
      mine({"-s", "50%", "-c", "100%"}, tenTimes("\"a\tb\";\"c, d\"\n\"a\tb\";\"c, d\"\nx\n"));
  EXPECT_THAT(rules(run), ElementsAre("{a\\tb} => {\"c, d\"} 20 66.667% 100.000% 1.500",
                                      "{\"c, d\"} => {a\\tb} 20 66.667% 100.000% 1.500"));
}

TEST(Mine, ShowsPlainCreationWhenAskedForNonRedundantRules) {
  // bread is in 50 of 80 baskets: it follows from nothing at all.
  const ToolRun run = mine({"-s", "22%", "-c", "60%", "--nonredundant"});
  EXPECT_EQ(lines(run.out).front(),
            "# exact and complete; non-redundant rules: support at least 18 of 80 transactions (22%), "
            "confidence at least 60%; by "
            "confidence");
  EXPECT_THAT(
      rules(run),
      ElementsAre("{butter} => {bread} 20 25.000% 100.000% 1.600",
                  "{crisps} => {beer} 20 25.000% 100.000% 2.667",
                  "{milk} => {bread} 30 37.500% 75.000% 1.200", "{beer} => {crisps} 20 25.000% 66.667% 2.667",
                  "{} => {bread} 50 62.500% 62.500% 1.000", "{bread} => {milk} 30 37.500% 60.000% 1.200"));
}

// a, b and c are in the same 30 of 40 baskets.
TEST(Mine, LeavesOutWhatALargerConsequentSays) {
  const std::string triple = tenTimes("a b c\na b c\na b c\nd\n");
  EXPECT_THAT(
      rules(mine({"-s", "60%", "-c", "100%", "--nonredundant"}, triple)),
      ElementsAre("{a} => {b, c} 30 75.000% 100.000% 1.333", "{b} => {a, c} 30 75.000% 100.000% 1.333",
                  "{c} => {a, b} 30 75.000% 100.000% 1.333"));
  // One to one six times, one to two three times, two to one three times.
  EXPECT_EQ(rules(mine({"-s", "60%", "-c", "100%"}, triple)).size(), 12U);
}

// The same twelve rules with the lengths of their sides bounded.
TEST(Mine, BoundsTheLengthsOfBothSides) {
  const std::string triple = tenTimes("a b c\na b c\na b c\nd\n");
  struct Case {
    std::vector<std::string> options;
    std::size_t rules;
  };
  const Case cases[] = {{{"--lhs-len", "1"}, 9},
                        {{"--lhs-len", "2"}, 3},
                        {{"--lhs-len", "2:"}, 3},
                        {{"--lhs-len", "1:2"}, 12},
                        {{"--lhs-len", "3:9"}, 0},
                        {{"--lhs-len", "0"}, 7},  // {} => {a} to {} => {a, b, c}, with 75%
                        {{"--lhs-len", "0:1"}, 16},
                        {{"--rhs-len", "1"}, 9},
                        {{"--rhs-len", "2:"}, 3},
                        {{"--rhs-len", "3"}, 0},
                        {{"--lhs-len", "1", "--rhs-len", "1"}, 6},
                        {{"--lhs-len", "2", "--rhs-len", "2"}, 0},
                        {{"--minimal"}, 3}};
  for (const Case& c : cases) {
    std::vector<std::string> options = {"-s", "60%", "-c", "70%"};
    options.insert(options.end(), c.options.begin(), c.options.end());
    EXPECT_EQ(rules(mine(options, triple)).size(), c.rules) << c.options[0] << " " << c.options.back();
  }
}

TEST(Mine, FiltersBySidesAndFigures) {
  struct Case {
    std::vector<std::string> options;
    std::vector<std::string> antecedents;  // of the rules left, in order
  };
  const Case cases[] = {{{"--require-lhs", "milk"}, {"{milk}"}},
                        {{"--require-rhs", "bread"}, {"{butter}", "{milk}"}},
                        {{"--allow-lhs", "beer,crisps"}, {"{crisps}", "{beer}"}},
                        {{"--allow-lhs", "beer", "--allow-lhs", "crisps"}, {"{crisps}", "{beer}"}},
                        {{"--allow-rhs", "milk,beer"}, {"{crisps}", "{bread}"}},
                        {{"--allow-lhs", "beer", "--require-lhs", "milk"}, {"{milk}"}},
                        {{"--allow-lhs", "beer,bread", "--require-lhs", "crisps,beer"}, {}},
                        {{"--lift", "2"}, {"{crisps}", "{beer}"}},
                        {{"--max-support", "25%"}, {"{butter}", "{crisps}", "{beer}"}},
                        {{"--max-support", "20n"}, {"{butter}", "{crisps}", "{beer}"}},
                        {{"--max-confidence", "75%"}, {"{milk}", "{beer}", "{bread}"}},
                        {{"--lhs-len", "2:"}, {}},
                        {{"--rhs-len", "1"}, {"{butter}", "{crisps}", "{milk}", "{beer}", "{bread}"}},
                        {{"--top", "2"}, {"{butter}", "{crisps}"}},
                        {{"--by", "lift"}, {"{crisps}", "{beer}", "{butter}", "{milk}", "{bread}"}},
                        {{"--by", "support"}, {"{milk}", "{bread}", "{butter}", "{crisps}", "{beer}"}},
                        {{"--by", "support", "--top", "1"}, {"{milk}"}},
                        {{"--minimal"}, {"{butter}", "{crisps}", "{milk}", "{beer}", "{bread}"}}};
  for (const Case& c : cases) {
    std::vector<std::string> options = {"-s", "22%", "-c", "60%"};
    options.insert(options.end(), c.options.begin(), c.options.end());
    std::vector<std::string> antecedents;
    for (const std::string& rule : rules(mine(options)))
      antecedents.push_back(rule.substr(0, rule.find(' ')));
    EXPECT_EQ(antecedents, c.antecedents) << c.options[0] << (c.options.size() > 1 ? " " + c.options[1] : "");
    // The same filters hold for the rules of plain creation; here these are the same ones and {} => {bread}.
    if (c.options[0] == "--minimal" || c.options[0] == "--top" || c.options.back() == "1") continue;
    options.push_back("--nonredundant");
    antecedents.clear();
    for (const std::string& rule : rules(mine(options))) {
      if (rule[1] != '}') antecedents.push_back(rule.substr(0, rule.find(' ')));
    }
    EXPECT_EQ(antecedents, c.antecedents) << "non-redundant, " << c.options[0];
  }
}

TEST(Mine, SaysInItsHeaderWhatItWasAskedFor) {
  const ToolRun run =
      mine({"-s",     "18n",  "-c",        "50%", "--require-rhs", "bread", "--allow-lhs",      "milk,butter",
            "--lift", "1.1",  "--lhs-len", "1:2", "--max-support", "50%",   "--max-confidence", "99%",
            "--by",   "lift", "--top",     "3",   "--minimal"});
  EXPECT_EQ(
      lines(run.out).front(),
      "# exact and complete; rules with minimal antecedents: support at least 18 of 80 transactions (18n), "
      "confidence at least "
      "50%, "
      "support at most 40, confidence at most 99%, lift at least 1.1, antecedent within {butter, milk}, "
      "antecedent of 1 to 2 items, consequent with {bread}; the best 3; by lift");
}

TEST(Mine, SaysWhichThresholdLeftNoRules) {
  struct Case {
    std::vector<std::string> options;
    const char* said;
  };
  const Case cases[] = {
      {{"-s", "50%", "-c", "50%"}, "support: no two items are together in 40 of 80 transactions; "},
      {{"-s", "90n", "-c", "50%"}, "support: 90 transactions are asked for, and there are 80; "},
      {{"-s", "26%", "-c", "80%"}, "confidence: the best confidence seen is 75%, below 80%; "},
      {{"-s", "22%", "-c", "70%", "--require-lhs", "beer"},
       "confidence: the best confidence seen is 66.6667%, below 70%; "},
      {{"-s", "26%", "-c", "80%", "--nonredundant"},
       "confidence: the best confidence seen is 75%, below 80%; "},
      {{"-s", "22%", "-c", "60%", "--lift", "5"}, "the filters and bounds: "}};
  for (const Case& c : cases) {
    const ToolRun run = mine(c.options);
    EXPECT_THAT(rules(run), IsEmpty());
    EXPECT_EQ(lines(run.out).size(), 1U) << "the header alone";
    EXPECT_THAT(run.err, HasSubstr(std::string("no rules      ") + c.said));
  }
}

TEST(Mine, ReadsALineOfTenMegabytes) {
  std::string baskets = tenTimes("a b\n");
  for (int item = 0; baskets.size() < 10'000'000; ++item) baskets += std::to_string(item % 30) + "x ";
  const ToolRun run = mine({"-s", "70%", "-c", "50%"}, baskets + "\n");
  EXPECT_THAT(rules(run),
              ElementsAre("{a} => {b} 10 90.909% 100.000% 1.100", "{b} => {a} 10 90.909% 100.000% 1.100"));
  EXPECT_THAT(run.err, HasSubstr("repeats       1 baskets"));
}

TEST(Recommend, PrintsTheBestConsequents) {
  const TemporaryFile file(tenTimes(kBaskets));
  // bread: butter 20 of 50; milk: nothing but bread; bread and milk together: nothing that is frequent
  // enough.
  ToolRun run = runKorassoc({"recommend", file.name(), "--for", "bread,milk", "-s", "22%"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.out,
            "# exact and complete; what goes with {bread, milk}: support at least 18 of 80 transactions "
            "(22%), confidence at least 0%; "
            "the best 10; by confidence\n"
            "consequent  count  support  confidence   lift\n"
            "butter         20  25.000%     40.000%  1.600\n");
  run = runKorassoc({"recommend", file.name(), "--for", "bread", "--for", "beer", "-s", "22%", "--top", "2"});
  EXPECT_THAT(run.out, HasSubstr("crisps         20  25.000%     66.667%  2.667\n"
                                 "milk           30  37.500%     60.000%  1.200\n"));
  EXPECT_THAT(run.out, Not(HasSubstr("butter")));
}

TEST(Recommend, SaysWhyThereIsNothing) {
  const TemporaryFile file(tenTimes(kBaskets));
  ToolRun run = runKorassoc({"recommend", file.name(), "--for", "beer", "-s", "30n"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("nothing       support: "));
  run = runKorassoc({"recommend", file.name(), "--for", "beer", "-s", "81n"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err, HasSubstr("nothing       support: "));
  run = runKorassoc({"recommend", file.name(), "--for", "beer", "-s", "18n", "-c", "70%"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.err,
              HasSubstr("nothing       confidence: the best confidence seen is 66.6667%, below 70%; "));
}

TEST(Tool, TellsItsVersionAndHowToUseIt) {
  EXPECT_THAT(runKorassoc({"--version"}).out,
              HasSubstr("korassoc " KORASSOC_TOOL_VERSION "\nTalvane AssociationRule"));
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--help"}, {"mine", "--help"}, {"recommend", "-h"}}) {
    const ToolRun run = runKorassoc(arguments);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.out, HasSubstr("Example"));
    EXPECT_EQ(run.err, "");
  }
}

#if defined(__linux__)
TEST(Tool, FailsWhenItsResultsCannotBeWritten) {
  const TemporaryFile file(kBaskets);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"mine", file.name(), "-s", "25%", "-c", "60%"},
                                             {"recommend", file.name(), "--for", "bread"},
                                             {"--help"},
                                             {"--version"}}) {
    const ToolRun run = runKorassoc(arguments, {.outputPath = "/dev/full"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.err,
                HasSubstr("korassoc: standard output: cannot be written: No space left on device; "));
  }
}

#if !defined(KORASSOC_ADDRESS_SANITIZER)  // which reserves more address space than the test allows
TEST(Tool, SaysSoWhenMemoryRunsOut) {
  // 40 MB of baskets in 64 MiB of address space.
  std::string baskets;
  for (int i = 0; baskets.size() < 40'000'000; ++i)
    baskets += std::to_string(i % 97) + " " + std::to_string(i) + "\n";
  const TemporaryFile file(baskets);
  const ToolRun run =
      runKorassoc({"mine", file.name(), "-s", "25%", "-c", "60%"}, {.addressSpaceBytes = 64U << 20U});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "korassoc: memory ran out; try a higher support or confidence, or a smaller input\n");
}
#endif
#endif

}  // namespace
}  // namespace korassoc::cli
