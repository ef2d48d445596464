// The record writer, line by line, and what it leaves behind on a stream that fails.

#include "korassoc/xml/XMLObj.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

#include "korassoc/itemsets/KorMV.h"
#include "korassoc/xml/XMLDocType.h"
#include "korassoc/xml/XMLWriter.h"
#include "tests/support/FailingBuffer.h"

namespace KorAssocXML {
namespace {

template <class Value>
std::string valueLine(const Value& value, int tabs = 0) {
  std::ostringstream out;
  EXPECT_EQ(XMLObj("ItemSet", tabs).WriteSubElement(out, value), 0);
  return out.str();
}

void writeItemSet(std::ostream& out, int tabs) {
  const XMLObj object("ItemSet", tabs);
  object.StartObj(out);
  object.WriteSubElement(out, 2);
  object.WriteSubElement(out, 3);
  object.WriteSubElement(out, 8);
  object.EndObj(out);
}

TEST(XMLObj, WritesAnItemSetWithAFrameAndALineForEachValue) {
  std::ostringstream out;
  writeItemSet(out, 1);
  EXPECT_EQ(out.str(),
            "\n\t<Obj name=\"ItemSet\">"
            "\n\t\t<Int value=\"2\"/>"
            "\n\t\t<Int value=\"3\"/>"
            "\n\t\t<Int value=\"8\"/>"
            "\n\t</Obj>");
}

TEST(XMLObj, NamesTheElementAfterTheTypeOfTheValue) {
  EXPECT_EQ(valueLine(-7), "\n\t<Int value=\"-7\"/>");
  EXPECT_EQ(valueLine(7U), "\n\t<Int value=\"7\"/>");
  EXPECT_EQ(valueLine(7L), "\n\t<Long value=\"7\"/>");
  EXPECT_EQ(valueLine(7.0), "\n\t<Double value=\"7\"/>");
  EXPECT_EQ(valueLine(std::string("seven")), "\n\t<String value=\"seven\"/>");
}

TEST(XMLObj, WritesFlagsAsOneAndZero) {
  EXPECT_EQ(valueLine(true), "\n\t<Int value=\"1\"/>");
  EXPECT_EQ(valueLine(false), "\n\t<Int value=\"0\"/>");
}

TEST(XMLObj, WritesTheMissingValueAsAWord) {
  EXPECT_EQ(valueLine(-1.7976931348623157e308), "\n\t<Double value=\"Missing\"/>");
  EXPECT_EQ(valueLine(KorMV::Missing()), "\n\t<Double value=\"Missing\"/>");
  EXPECT_EQ(valueLine(1.7976931348623157e308), "\n\t<Double value=\"1.79769313486232e+308\"/>");
}

TEST(XMLObj, WritesTheEndsOfEachIntegerRange) {
  EXPECT_EQ(valueLine(std::numeric_limits<int>::min()), "\n\t<Int value=\"-2147483648\"/>");
  EXPECT_EQ(valueLine(std::numeric_limits<int>::max()), "\n\t<Int value=\"2147483647\"/>");
  EXPECT_EQ(valueLine(std::numeric_limits<unsigned int>::max()), "\n\t<Int value=\"4294967295\"/>");
}

TEST(XMLObj, WritesFractionsWithFifteenDigits) {
  EXPECT_EQ(valueLine(0.1), "\n\t<Double value=\"0.1\"/>");
  EXPECT_EQ(valueLine(1.0 / 3.0), "\n\t<Double value=\"0.333333333333333\"/>");
  EXPECT_EQ(valueLine(std::numeric_limits<double>::quiet_NaN()), "\n\t<Double value=\"nan\"/>");
  EXPECT_EQ(valueLine(std::numeric_limits<double>::infinity()), "\n\t<Double value=\"inf\"/>");
}

TEST(XMLObj, WritesAnEmptyString) { EXPECT_EQ(valueLine(std::string()), "\n\t<String value=\"\"/>"); }

TEST(XMLObj, EscapesStringsButNotItsOwnName) {
  EXPECT_EQ(valueLine(std::string("a & \"b\" <c>")),
            "\n\t<String value=\"a &amp; &quot;b&quot; &lt;c&gt;\"/>");
  std::ostringstream out;
  XMLObj("a & \"b\"", 0).StartObj(out);
  EXPECT_EQ(out.str(), "\n<Obj name=\"a & \"b\"\">");
}

TEST(XMLObj, EscapesDoubledLeadingAndTrailingSpaces) {
  EXPECT_EQ(valueLine(std::string("a  b")), "\n\t<String value=\"a &#32;b\"/>");
  EXPECT_EQ(valueLine(std::string(" a")), "\n\t<String value=\"&#32;a\"/>");
  EXPECT_EQ(valueLine(std::string("a ")), "\n\t<String value=\"a&#32;\"/>");
  EXPECT_EQ(valueLine(std::string("a b")), "\n\t<String value=\"a b\"/>");
}

TEST(XMLObj, IndentsByItsTabsAndItsValuesByOneMore) {
  EXPECT_EQ(XMLObj("x", 3).GetNTabs(), 3);
  EXPECT_EQ(valueLine(1, 3), "\n\t\t\t\t<Int value=\"1\"/>");
  const XMLObj copy = XMLObj("Copy", 2);
  std::ostringstream out;
  copy.StartObj(out);
  copy.EndObj(out);
  EXPECT_EQ(out.str(), "\n\t\t<Obj name=\"Copy\">\n\t\t</Obj>");
}

TEST(XMLObj, CountsNegativeTabsAsNone) {
  EXPECT_EQ(valueLine(1, -1), "\n<Int value=\"1\"/>");
  EXPECT_EQ(valueLine(1, std::numeric_limits<int>::min()), "\n<Int value=\"1\"/>");
  std::ostringstream out;
  XMLObj("x", -5).EndObj(out);
  EXPECT_EQ(out.str(), "\n</Obj>");
}

TEST(XMLObj, LeavesTheStreamsFieldWidthAndFlagsAlone) {
  std::ostringstream out;
  out.width(30);
  out << std::hex << std::showbase;
  XMLObj("x", -1).WriteSubElement(out, 255);
  EXPECT_EQ(out.str(), "\n<Int value=\"255\"/>");
  EXPECT_EQ(out.width(), 30);
}

// Whatever the byte at which the disk is full: what came before it is there, the rest is dropped, and no
// later character slips in behind the gap.
TEST(XMLObj, DropsEverythingFromTheByteAtWhichTheStreamFails) {
  std::ostringstream whole;
  writeItemSet(whole, 1);
  const std::string text = whole.str();
  for (std::size_t bytes = 0; bytes < text.size(); ++bytes) {
    FailingBuffer disk(bytes);
    std::ostream out(&disk);
    writeItemSet(out, 1);
    EXPECT_EQ(disk.text(), text.substr(0, bytes));
    EXPECT_TRUE(out.bad()) << bytes;
  }
  FailingBuffer disk(text.size());
  std::ostream out(&disk);
  writeItemSet(out, 1);
  EXPECT_EQ(disk.text(), text);
  EXPECT_TRUE(out.good());
}

TEST(StartRoot, WritesTheCopyrightEscapedAndNoLineFeed) {
  std::ostringstream out;
  EXPECT_EQ(StartRoot(out, "(C) A & B  \"C\""), 0);
  EXPECT_EQ(out.str(), "<KorXMLRoot copyright=\"(C) A &amp; B &#32;&quot;C&quot;\">");
}

TEST(WriteHeader, IsStartRootUnderAnotherName) {
  std::ostringstream out;
  EXPECT_EQ(WriteHeader(out, "me"), 0);
  EXPECT_EQ(out.str(), "<KorXMLRoot copyright=\"me\">");
}

TEST(EndRoot, WritesItsLineFeedInFront) {
  std::ostringstream out;
  EXPECT_EQ(EndRoot(out), 0);
  EXPECT_EQ(EndHeader(out), 0);
  EXPECT_EQ(out.str(), "\n</KorXMLRoot>\n</KorXMLRoot>");
}

TEST(StateFile, StandsAsAWholeAsItsReaderExpectsIt) {
  std::ostringstream out;
  ExportFormat format;
  const std::unique_ptr<XMLDocType> docType(XMLDocType::Create("KorXMLRoot", "savexml.dtd", 0));
  docType->ToStream(out, format, false);
  StartRoot(out, "me");
  const XMLObj object("CeilArray", 0);
  object.StartObj(out);
  object.WriteSubElement(out, 0.5);
  writeItemSet(out, 1);
  object.WriteSubElement(out, 12L);
  object.EndObj(out);
  EndRoot(out);
  EXPECT_EQ(out.str(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
            "<!DOCTYPE KorXMLRoot SYSTEM \"savexml.dtd\">\n"
            "<KorXMLRoot copyright=\"me\">\n"
            "<Obj name=\"CeilArray\">\n"
            "\t<Double value=\"0.5\"/>\n"
            "\t<Obj name=\"ItemSet\">\n"
            "\t\t<Int value=\"2\"/>\n"
            "\t\t<Int value=\"3\"/>\n"
            "\t\t<Int value=\"8\"/>\n"
            "\t</Obj>\n"
            "\t<Long value=\"12\"/>\n"
            "</Obj>\n"
            "</KorXMLRoot>");
}

}  // namespace
}  // namespace KorAssocXML
