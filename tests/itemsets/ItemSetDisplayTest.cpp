// What an ItemSet writes of itself, to the letter.

#include <gtest/gtest.h>

#include <ios>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>

#include "korassoc/itemsets/ItemSet.h"
#include "tests/support/StreamCapture.h"

namespace {

const int kItems[] = {1, 2, 70000};

class Thousands : public std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// A buffer that counts how often it is flushed.
class FlushCounter : public std::stringbuf {
 public:
  int flushes = 0;

 protected:
  int sync() override {
    ++flushes;
    return 0;
  }
};

TEST(ItemSetDisplay, WritesTheItemsAndTheEnd) {
  std::ostringstream out;
  ItemSet(kItems, 3).Display(out);
  EXPECT_EQ(out.str(), " 1 2 70000 End of Set \n");
}

TEST(ItemSetDisplay, OfTheEmptySetIsTheEndAlone) {
  std::ostringstream out;
  ItemSet().Display(out);
  EXPECT_EQ(out.str(), " End of Set \n");
}

TEST(ItemSetDisplay, GoesToTheStandardOutput) {
  const StreamCapture out(std::cout);
  ItemSet(-5).display();
  EXPECT_EQ(out.text(), " -5 End of Set \n");
}

TEST(ItemSetDisplay, Flushes) {
  FlushCounter buffer;
  std::ostream out(&buffer);
  ItemSet(4).Display(out);
  EXPECT_EQ(buffer.flushes, 1);
}

TEST(ItemSetDisplay, IsDecimalWhateverTheStreamIsSetTo) {
  std::ostringstream out;
  out.imbue(std::locale(std::locale::classic(), new Thousands));
  out << std::hex << std::showpos;
  ItemSet(kItems, 3).Display(out);
  EXPECT_EQ(out.str(), " 1 2 70000 End of Set \n");
}

TEST(ItemSetDisplayAll, ShowsHashCodeItemsAndLinkedSets) {
  ItemSet set(kItems, 2);
  ItemSet previous(5);
  ItemSet next;
  set.setPrev(&previous);
  set.setNext(&next);
  const StreamCapture out(std::cout);
  set.displayAll();
  EXPECT_EQ(out.text(),
            "HashCode=17, Elements:  1 2 End of Set \n"
            "Previous:  5 End of Set \n"
            "Next:  End of Set \n");
}

TEST(ItemSetDisplayAll, ShowsMissingLinksAsNull) {
  const StreamCapture out(std::cout);
  ItemSet(-1).displayAll();
  EXPECT_EQ(out.text(),
            "HashCode=-7, Elements:  -1 End of Set \n"
            "Previous: NULL\n"
            "Next: NULL\n");
}

}  // namespace
