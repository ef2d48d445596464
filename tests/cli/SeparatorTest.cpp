#include "cli/input/Separator.h"

#include <gtest/gtest.h>

namespace korassoc::cli {
namespace {

TEST(RecogniseSeparator, TakesTheOneThatMostLinesHold) {
  struct Case {
    const char* what;
    std::string_view text;
    Separator separator;
  };
  const Case cases[] = {
      {"commas", "bread,milk\nmilk,beer\n", Separator::kComma},
      {"semicolons", "bread;milk\n", Separator::kSemicolon},
      {"tabs", "bread\tmilk\n", Separator::kTab},
      {"blanks", "bread milk\n1 2\n", Separator::kBlanks},
      {"nothing at all", "bread\nmilk\n", Separator::kBlanks},
      {"an empty text", "", Separator::kBlanks},
      {"one line with a comma among names with blanks", "whole milk\nrolls\nrye bread, whole milk\n",
       Separator::kComma},
      {"semicolons between decimal commas", "1,5 l milk;bread\ncheese;bread\n", Separator::kSemicolon},
      {"a comma in fewer lines than tabs", "a\tb, c\nd\te\n", Separator::kTab},
      {"commas inside quotes", "\"a,b\" \"c,d\"\n", Separator::kBlanks},
      {"commas inside and semicolons outside quotes", "\"a,b\";\"c\"\n", Separator::kSemicolon},
      {"a doubled quote inside quotes", "\"a\"\",b\" c\n", Separator::kBlanks},
      {"a quote left open ends with its line", "\"a\nb,c\n", Separator::kComma},
      {"numbers with tabs and spaces", "1 2\t3\n", Separator::kBlanks},
      {"numbers with tabs alone", "1\t2\r\n", Separator::kTab},
      {"numbers with commas and spaces", "1, 2\n3, 4\n", Separator::kComma},
      {"names with tabs and spaces", "rye bread\tmilk\n", Separator::kTab}};
  for (const Case& c : cases) EXPECT_EQ(recogniseSeparator(c.text), c.separator) << c.what;
}

TEST(SeparatorNames, LeadBackToTheSeparator) {
  for (const auto separator :
       {Separator::kComma, Separator::kSemicolon, Separator::kTab, Separator::kBlanks}) {
    EXPECT_EQ(separatorFromName(separatorName(separator)), separator);
  }
  EXPECT_FALSE(separatorFromName("pipe"));
  EXPECT_FALSE(separatorFromName(""));
}

}  // namespace
}  // namespace korassoc::cli
