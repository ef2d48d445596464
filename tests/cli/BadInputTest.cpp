// What the tool says to input and usage that it cannot work with, as a user sees it: one line on standard
// error, nothing on standard output, and an exit code that tells which kind of trouble it is.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/cli/RunKorassoc.h"
#include "tests/support/TemporaryFile.h"

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr int kUsage = 2;
constexpr int kInput = 3;

// Checks that the run was refused in the one way all refusals have, and returns the line without "korassoc:
// ".
std::string refusal(const ToolRun& run, int exitCode) {
  EXPECT_EQ(run.exitCode, exitCode) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
  EXPECT_THAT(run.err, StartsWith("korassoc: "));
  std::string line = run.err.substr(std::min<std::size_t>(run.err.size(), 10));
  while (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

std::string refusedFile(const std::string& path) {
  return refusal(runKorassoc({"mine", path, "-s", "25%", "-c", "50%"}), kInput);
}

// The refusal of a content, the file's name replaced by "FILE".
std::string refusedContent(std::string_view content) {
  const TemporaryFile file(content);
  std::string line = refusedFile(file.name());
  EXPECT_THAT(line, StartsWith(file.name() + ":"));
  return line.replace(0, file.name().size(), "FILE");
}

std::string refusedUsage(const std::vector<std::string>& arguments) {
  return refusal(runKorassoc(arguments), kUsage);
}

TEST(BadInput, MissingFile) {
  EXPECT_EQ(
      refusedFile("/no/such/file.csv"),
      "/no/such/file.csv: cannot be read: No such file or directory; check the path and its permissions");
}

TEST(BadInput, Directory) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(refusedFile(folder), folder + ": is a directory; give the basket file in it");
}

TEST(BadInput, FileWithoutPermission) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is forbidden to root";
  const TemporaryFile file("a,b\n");
  ASSERT_EQ(::chmod(file.name().c_str(), 0), 0);
  EXPECT_THAT(refusedFile(file.name()), HasSubstr("cannot be read: Permission denied"));
}

TEST(BadInput, EmptyFile) {
  EXPECT_THAT(refusedContent(""), StartsWith("FILE:1:1: the input is empty; give "));
}

TEST(BadInput, OnlyBlankLines) {
  EXPECT_THAT(refusedContent("\n   \n\t\n"), StartsWith("FILE:1:1: no line holds an item (lines: 3); give "));
}

TEST(BadInput, BinaryGarbage) {
  EXPECT_THAT(refusedContent(std::string_view("a,b\n\x7F"
                                              "ELF\x02\x01\0\0",
                                              12)),
              StartsWith("FILE:2:1: control character 0x7F; "));
  EXPECT_THAT(refusedContent(std::string_view("a\0b", 3)), StartsWith("FILE:1:2: control character 0x00; "));
}

TEST(BadInput, UnbalancedQuote) {
  EXPECT_THAT(refusedContent("a,b\n\"c,d\ne,f\n"),
              StartsWith("FILE:2:1: this quote is not closed on its line; "));
  EXPECT_THAT(refusedContent("a,b\nc\",d\n"), StartsWith("FILE:2:2: a quote inside an item; "));
}

TEST(BadInput, InvalidUtf8) {
  EXPECT_THAT(refusedContent("tea,caf\xE9\n"), StartsWith("FILE:1:8: byte 0xE9 is not UTF-8; convert "));
}

TEST(BadInput, ItemOfTenMegabytes) {
  EXPECT_THAT(refusedContent("a b\n" + std::string(10'000'000, 'x') + "\n"),
              StartsWith("FILE:2:1: an item of 10000000 bytes, more than 4096; "));
}

// Whatever the moment: the run ends with a result or with a refusal.
TEST(BadInput, FileThatAnotherProgramWritesToMeanwhile) {
  std::string text;
  while (text.size() < 1'000'000) text += "1 20 300 4000 50000\n";
  const TemporaryFile file(text);
  std::atomic<bool> done = false;
  std::thread writer([&] {
    while (!done) {
      std::filesystem::resize_file(file.name(), 100'000);
      std::filesystem::resize_file(file.name(), 0);
      file.write(text);
    }
  });
  for (int run = 0; run < 15; ++run) {
    const ToolRun result = runKorassoc({"mine", file.name(), "-s", "50%", "-c", "50%"});
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == kInput) << result.exitCode << ": " << result.err;
  }
  done = true;
  writer.join();
}

TEST(BadInput, OnStandardInput) {
  const ToolRun run = runKorassoc({"mine", "-", "-s", "25%", "-c", "50%"}, {.input = "a,\"b\n"});
  EXPECT_THAT(refusal(run, kInput), StartsWith("standard input:1:3: this quote is not closed"));
}

TEST(BadUsage, NoVerbOrAnUnknownOne) {
  EXPECT_THAT(refusedUsage({}), HasSubstr("mine or recommend"));
  EXPECT_EQ(refusedUsage({"mien", "x"}),
            "'mien' is given where mine or recommend should stand; try 'korassoc --help'");
}

TEST(BadUsage, MissingArguments) {
  EXPECT_EQ(refusedUsage({"mine"}), "FILE is required; try 'korassoc mine --help'");
  EXPECT_EQ(refusedUsage({"mine", "x", "-c", "1"}), "--support is required; try 'korassoc mine --help'");
  EXPECT_EQ(refusedUsage({"mine", "x", "-s", "1"}), "--confidence is required; try 'korassoc mine --help'");
  EXPECT_EQ(refusedUsage({"recommend", "x"}), "--for is required; try 'korassoc recommend --help'");
  EXPECT_THAT(refusedUsage({"mine", "x", "-s"}), StartsWith("--support: "));
}

TEST(BadUsage, UnknownOptionsAndTooManyFiles) {
  EXPECT_THAT(refusedUsage({"mine", "x", "-s", "1", "-c", "1", "--fast"}), HasSubstr("--fast"));
  EXPECT_THAT(refusedUsage({"mine", "x", "y", "-s", "1", "-c", "1"}), HasSubstr("not expected: y"));
}

TEST(BadUsage, SupportOutOfRangeOrNoNumber) {
  for (const std::string text : {"25", "1.5", "101%", "-0.1", "-1%", "-3n", "nan", "inf", "-inf", "1e999", "",
                                 "1x", "1%x", "2.5n", "0,1"}) {
    const std::string line = refusedUsage({"mine", "x", "-s", text, "-c", "1"});
    EXPECT_THAT(line, StartsWith("--support " + (text.empty() ? "\"\"" : text) + ": "));
    EXPECT_THAT(line, HasSubstr("a fraction (0.01), a percentage (1%) or a number of transactions (25n)"));
  }
}

TEST(BadUsage, ConfidenceOutOfRangeOrNoNumber) {
  for (const std::string text : {"50", "1.01", "101%", "-0.1", "nan", "inf", "1e999", "", "1x", "5n"}) {
    const std::string line = refusedUsage({"mine", "x", "-s", "1%", "--confidence", text});
    EXPECT_THAT(line, StartsWith("--confidence " + (text.empty() ? "\"\"" : text) + ": "));
    EXPECT_THAT(line, HasSubstr("a fraction from 0 to 1 (0.5) or a percentage (50%)"));
  }
}

TEST(BadUsage, OtherValuesOutOfRange) {
  struct Case {
    const char *option, *value;
  };
  const Case cases[] = {{"--lift", "-1"},
                        {"--lift", "high"},
                        {"--lhs-len", "3:1"},
                        {"--rhs-len", "0:1"},
                        {"--lhs-len", "x"},
                        {"--top", "0"},
                        {"--top", "-1"},
                        {"--top", "1.5"},
                        {"--by", "luck"},
                        {"--max-support", "30"},
                        {"--max-support", ""},
                        {"--max-confidence", "2"},
                        {"--max-confidence", "0.1"},
                        {"--separator", "x"}};
  for (const Case& c : cases) {
    EXPECT_THAT(refusedUsage({"mine", "x", "-s", "1%", "-c", "50%", c.option, c.value}),
                StartsWith(std::string(c.option) + " "))
        << c.value;
  }
}

TEST(BadUsage, LabelsThatTheInputDoesNotHave) {
  const TemporaryFile file("bread,milk\nbutter,beer\n");
  for (const std::string option : {"--require-lhs", "--allow-lhs", "--require-rhs", "--allow-rhs"}) {
    EXPECT_EQ(refusedUsage({"mine", file.name(), "-s", "1%", "-c", "1%", option, "bread,buter"}),
              option + " buter: no basket holds this label; the nearest are butter, beer, bread");
  }
  EXPECT_EQ(refusedUsage({"recommend", file.name(), "--for", "mlik"}),
            "--for mlik: no basket holds this label; the nearest are milk, beer, bread");
}

TEST(BadUsage, BoundsThatLeaveNothing) {
  const TemporaryFile file("bread,milk\nbutter,beer\n");
  EXPECT_EQ(refusedUsage({"mine", file.name(), "-s", "2n", "-c", "1%", "--max-support", "50%"}),
            "--max-support 50%: allows 1 of 2 transactions at most, but --support 2n asks for 2");
  EXPECT_THAT(refusedUsage({"mine", file.name(), "-s", "1%", "-c", "1%", "--require-lhs", "milk",
                            "--require-rhs", "bread,milk"}),
              StartsWith("--require-rhs milk: is required in the antecedent already"));
}

}  // namespace
}  // namespace korassoc::cli
