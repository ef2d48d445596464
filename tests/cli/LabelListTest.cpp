#include "cli/LabelList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/ExpectError.h"

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(ParseLabels, SplitsAtCommasOutsideQuotes) {
  EXPECT_THAT(parseLabels("--for", "bread"), ElementsAre("bread"));
  EXPECT_THAT(parseLabels("--for", "bread,whole milk"), ElementsAre("bread", "whole milk"));
  EXPECT_THAT(parseLabels("--for", " bread , milk "), ElementsAre("bread", "milk"));
  EXPECT_THAT(parseLabels("--for", "\"milk, whole\",bread"), ElementsAre("milk, whole", "bread"));
  EXPECT_THAT(parseLabels("--for", "bread, \"5\"\" pipe\" "), ElementsAre("bread", "5\" pipe"));
  EXPECT_THAT(parseLabels("--for", "\" padded \""), ElementsAre(" padded "));
  EXPECT_THAT(parseLabels("--for", "a,,b,"), ElementsAre("a", "b"));
  EXPECT_THAT(parseLabels("--for", "\"\"\"\""), ElementsAre("\""));
}

TEST(ParseLabels, RefusesWhatItCannotSplit) {
  EXPECT_THAT(errorOf(ExitCode::kUsage, [] { parseLabels("--for", "\"bread"); }), HasSubstr("not closed"));
  EXPECT_THAT(errorOf(ExitCode::kUsage, [] { parseLabels("--for", "bread,\""); }), HasSubstr("not closed"));
  EXPECT_THAT(errorOf(ExitCode::kUsage, [] { parseLabels("--for", "\"bread\"s,milk"); }),
              HasSubstr("follows a closing quote"));
  for (const char* none : {"", " ", ",", "\"\""}) {
    EXPECT_THAT(errorOf(ExitCode::kUsage, [&] { parseLabels("--for", none); }), HasSubstr("names no label"));
  }
}

TEST(ItemsOf, GivesAscendingItemsOnce) {
  const ItemNames names = ItemNames::numbers({1, 5, 12});
  EXPECT_THAT(itemsOf("--for", {"12", "1", "12"}, names), ElementsAre(1, 12));
}

TEST(ItemsOf, NamesTheThreeNearestLabelsForAnUnknownOne) {
  LabelTable table;
  for (const char* label : {"milk", "bread", "beer", "butter", "milk, whole"}) table.intern(label);
  table.sort();
  const ItemNames names = ItemNames::labels(std::move(table));
  EXPECT_EQ(errorOf(ExitCode::kUsage,
                    [&] {
                      itemsOf("--for", {"milk", "buter"}, names);
                    }),
            "--for buter: no basket holds this label; the nearest are butter, beer, bread");
  EXPECT_EQ(errorOf(ExitCode::kUsage, [&] { itemsOf("--for", {"milk,whole"}, names); }),
            "--for milk,whole: no basket holds this label; the nearest are \"milk, whole\", milk, beer");
}

}  // namespace
}  // namespace korassoc::cli
