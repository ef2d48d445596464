// A host whose locale writes 0,5 and 1.000.000 still gets 0.5 and 1000000 in its files, and reads them back.

#include <gtest/gtest.h>

#include <clocale>
#include <fstream>
#include <locale>
#include <memory>
#include <sstream>
#include <string>

#include "korassoc/xml/NumberFormat.h"
#include "korassoc/xml/XMLAttribute.h"
#include "korassoc/xml/XMLElement.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"
#include "tests/support/InputText.h"

namespace KorAssocXML {
namespace {

class CommaDecimals : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Makes a comma the decimal separator of new streams for the time of a test, and of the C library too where
// the system has a locale for that.
class CommaLocale : public testing::Test {
 protected:
  CommaLocale() : before_(std::locale::global(std::locale(std::locale::classic(), new CommaDecimals))) {
    const char* current = std::setlocale(LC_NUMERIC, nullptr);
    cBefore_ = current != nullptr ? current : "C";
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German_Germany.1252"}) {
      if (std::setlocale(LC_NUMERIC, name) == nullptr) continue;
      cHasComma_ = std::string(std::localeconv()->decimal_point) == ",";
      if (cHasComma_) return;
    }
  }
  ~CommaLocale() override {
    std::setlocale(LC_NUMERIC, cBefore_.c_str());
    std::locale::global(before_);
  }

  bool cHasComma_ = false;

 private:
  std::locale before_;
  std::string cBefore_;
};

TEST_F(CommaLocale, IsInForceInTheseTests) {
  std::ostringstream out;
  out << 1234.5;
  EXPECT_EQ(out.str(), "1.234,5");
}

TEST_F(CommaLocale, DoesNotReachTheFile) {
  std::ostringstream out;
  const XMLObj object("x", -1);
  object.WriteSubElement(out, 0.5);
  object.WriteSubElement(out, 1e-7);
  object.WriteSubElement(out, 1234567);
  object.WriteSubElement(out, 4294967295U);
  object.WriteSubElement(out, 1234567L);
  EXPECT_EQ(out.str(),
            "\n<Double value=\"0.5\"/>"
            "\n<Double value=\"1e-07\"/>"
            "\n<Int value=\"1234567\"/>"
            "\n<Int value=\"4294967295\"/>"
            "\n<Long value=\"1234567\"/>");
}

TEST_F(CommaLocale, DoesNotReachTheElementTree) {
  const std::unique_ptr<XMLElement> element(XMLElement::Create("Item"));
  element->AddAttribute("support", 0.5);
  element->AddAttribute("count", 1234567);
  ExportFormat format;
  format.SetFormat(false);
  std::ostringstream out;
  element->ToStream(out, format, false);
  EXPECT_EQ(out.str(), "<Item support=\"0.5\" count=\"1234567\"/>");
}

TEST_F(CommaLocale, DoesNotReachTheReader) {
  InputText file(
      "<Double value=\"0.5\"/>\n<Double value=\"+0.5\"/>\n<Double value=\"0,5\"/>\n"
      "<Double value=\"1.234,5\"/>\n<Double value=\"1,234.5\"/>\n<Int value=\"1234567\"/>\n");
  for (const double expected : {0.5, 0.5, 0.0, 1.234, 1.0}) {
    double value = -1;
    EXPECT_TRUE(ParseValue(file.stream(), value));
    EXPECT_EQ(value, expected);
  }
  unsigned int count = 0;
  EXPECT_TRUE(ParseValue(file.stream(), count));
  EXPECT_EQ(count, 1234567U);
}

TEST_F(CommaLocale, ReachesOnlyWhatAsksForIt) {
  EXPECT_EQ(Format(0.5, false, nullptr), "0.5");
  EXPECT_EQ(ReplaceSep(0.5, nullptr), "0.5");
  EXPECT_EQ(Format(0.5, true, nullptr), cHasComma_ ? "0,5" : "0.5");
  EXPECT_EQ(GetDecimalCharacter(), cHasComma_ ? "," : ".");
}

}  // namespace
}  // namespace KorAssocXML
