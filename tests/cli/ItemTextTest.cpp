#include "cli/output/ItemText.h"

#include <gtest/gtest.h>

#include <vector>

namespace korassoc::cli {
namespace {

TEST(LabelText, QuotesWhatWouldNotBeToldApart) {
  struct Case {
    const char *label, *shown;
  };
  const Case cases[] = {{"bread", "bread"},
                        {"whole milk", "whole milk"},
                        {"milk, whole", "\"milk, whole\""},
                        {"5\" pipe", "\"5\"\" pipe\""},
                        {"{set}", "\"{set}\""},
                        {" milk", "\" milk\""},
                        {"milk ", "\"milk \""},
                        {"a\tb", "a\\tb"},
                        {"", "\"\""}};
  for (const Case& c : cases) EXPECT_EQ(labelText(c.label), c.shown);
}

TEST(SetText, ListsItemsInBraces) {
  const ItemNames names = ItemNames::numbers({1, 5, 12});
  EXPECT_EQ(setText({}, names), "{}");
  EXPECT_EQ(setText(std::vector<int>{5}, names), "{5}");
  EXPECT_EQ(setText(std::vector<int>{1, 12}, names), "{1, 12}");
}

}  // namespace
}  // namespace korassoc::cli
