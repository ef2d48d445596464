#include "cli/output/TextTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "cli/output/RuleTable.h"
#include "tests/cli/ExpectError.h"

namespace korassoc::cli {
namespace {

// A file that is nowhere but in the system's memory.
class Sink {
 public:
  Sink() : file_(std::tmpfile(), &std::fclose), out_(file_.get(), "sink") {}
  ResultStream& out() { return out_; }
  std::string text() {
    out_.finish();
    std::string all;
    std::rewind(file_.get());
    for (int c = std::fgetc(file_.get()); c != EOF; c = std::fgetc(file_.get())) all += static_cast<char>(c);
    return all;
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  ResultStream out_;
};

TEST(ResultStream, KeepsTheOrderOfWhatItIsGiven) {
  Sink sink;
  std::string wanted;
  for (int i = 0; i < 30000; ++i) {
    sink.out().write(std::to_string(i) + "\n");
    wanted += std::to_string(i) + "\n";
  }
  EXPECT_EQ(sink.text(), wanted);
}

#if defined(__linux__)
TEST(ResultStream, FailsWhenTheSystemDoes) {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> full(std::fopen("/dev/full", "w"), &std::fclose);
  ASSERT_NE(full, nullptr);
  ResultStream out(full.get(), "results");
  out.write("short");
  EXPECT_EQ(errorOf(ExitCode::kRunFailed, [&] { out.finish(); }),
            "results: cannot be written: No space left on device; the results are not complete");
  EXPECT_THAT(errorOf(ExitCode::kRunFailed, [&] { out.write(std::string(1 << 20, 'x')); }),
              ::testing::HasSubstr("results: cannot be written"));
}
#endif

TEST(TextTable, AlignsCellsUnderTheirHeadings) {
  Sink sink;
  TextTable table({{"name"}, {"n", TextTable::Align::kRight}});
  table.measure(0, 6);
  table.measure(1, 3);
  table.writeHeadings(sink.out());
  table.writeRow({"abcdef", "1"}, sink.out());
  table.writeRow({"gr\xC3\xBC\xC3\x9F", "123"}, sink.out());
  EXPECT_EQ(sink.text(),
            "name      n\n"
            "abcdef    1\n"
            "gr\xC3\xBC\xC3\x9F    123\n");
}

TEST(TextTable, LetsAGiantCellPushItsRowAlone) {
  Sink sink;
  TextTable table({{"a"}, {"b"}});
  table.measure(0, 5000);
  const std::string giant(120, 'x');
  table.writeRow({giant, "1"}, sink.out());
  table.writeRow({"x", "2"}, sink.out());
  EXPECT_EQ(sink.text(), giant + "  1\nx" + std::string(TextTable::kWidestColumn - 1, ' ') + "  2\n");
}

TEST(RuleTable, ShowsRulesInTheOrderGiven) {
  Sink sink;
  const ItemNames names = ItemNames::numbers({1, 2, 30});
  const std::vector<AssociationRule> rules = {
      {ItemSet(), ItemSet(30), 0.5, 0.5, 1.0},
      {ItemSet(ItemSet(1), 2), ItemSet(30), 1.0 / 3, 2.0 / 3, 1234.5}};
  writeRuleTable(rules, names, 6, sink.out());
  EXPECT_EQ(sink.text(),
            "antecedent      consequent  count  support  confidence      lift\n"
            "{}          =>  {30}            3  50.000%     50.000%     1.000\n"
            "{1, 2}      =>  {30}            2  33.333%     66.667%  1234.500\n");
}

TEST(RuleTable, IsNothingWithoutRules) {
  Sink sink;
  writeRuleTable({}, ItemNames(), 6, sink.out());
  writeConsequentTable({}, ItemNames(), 6, sink.out());
  EXPECT_EQ(sink.text(), "");
}

TEST(ConsequentTable, ShowsOneItemARow) {
  Sink sink;
  LabelTable labels;
  labels.intern("bread");
  labels.intern("milk, whole");
  const std::vector<ConsequentDescriptor> consequents = {{1, 0.25, 0.5, 2.0}, {0, 0.125, 0.25, 0.5}};
  writeConsequentTable(consequents, ItemNames::labels(std::move(labels)), 8, sink.out());
  EXPECT_EQ(sink.text(),
            "consequent     count  support  confidence   lift\n"
            "\"milk, whole\"      2  25.000%     50.000%  2.000\n"
            "bread              1  12.500%     25.000%  0.500\n");
}

}  // namespace
}  // namespace korassoc::cli
