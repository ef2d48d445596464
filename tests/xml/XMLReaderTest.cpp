// The record reader on well-formed, foreign, damaged and hostile lines.

#include "korassoc/xml/XMLReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>

#include "korassoc/itemsets/KorMV.h"
#include "korassoc/xml/XMLDocType.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLWriter.h"
#include "tests/support/InputText.h"

namespace KorAssocXML {
namespace {

template <class Value>
struct Read {
  bool ok;
  Value value;
};

// Reads one value from a file of this text into a target that held `before`.
template <class Value>
Read<Value> read(const std::string& text, Value before = Value()) {
  InputText file(text);
  Value value = before;
  const bool ok = ParseValue(file.stream(), value);
  return {ok, value};
}

// A value that was written as the one value of an object at this depth, read back.
template <class Value>
Read<Value> roundTrip(const Value& value) {
  std::ostringstream out;
  XMLObj("x", 3).WriteSubElement(out, value);
  return read<Value>(out.str().substr(1));
}

std::string line(const std::string& element, const std::string& value) {
  return "\t\t<" + element + " value=\"" + value + "\"/>\n";
}

TEST(ParseValue, ReadsBackWhatWasWritten) {
  for (const int value : {0, 1, -1, 42, INT_MAX, INT_MIN}) EXPECT_EQ(roundTrip(value).value, value);
  for (const unsigned int value : {0U, 1U, 2147483648U, UINT_MAX}) EXPECT_EQ(roundTrip(value).value, value);
  for (const long value : {0L, -5L, 2147483647L, -2147483647L - 1}) EXPECT_EQ(roundTrip(value).value, value);
  for (const double value : {0.0, 0.5, -0.125, 1e300, 5e-324, 123456789012345.0}) {
    EXPECT_EQ(roundTrip(value).value, value);
  }
  for (const bool value : {false, true}) EXPECT_EQ(roundTrip(value).value, value);
  for (const char* value : {"", "a", "plain text", "1", "/", "=/ 'x'"}) {
    const auto result = roundTrip(std::string(value));
    EXPECT_TRUE(result.ok) << value;
    EXPECT_EQ(result.value, value);
  }
}

TEST(ParseValue, ReadsTheWordMissingAsTheMissingValue) {
  const auto result = roundTrip(-1.7976931348623157e308);
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.value, -1.7976931348623157e308);
  EXPECT_TRUE(KorMV::IsMissing(result.value));
}

TEST(ParseValue, RefusesAFlagOtherThanZeroAndOne) {
  EXPECT_FALSE(read<bool>(line("Int", "2")).ok);
  EXPECT_FALSE(read<bool>(line("Int", "-1")).ok);
  EXPECT_TRUE(read<bool>(line("Int", "2"), true).value);
  EXPECT_FALSE(read<bool>(line("Int", "0"), true).value);
  EXPECT_TRUE(read<bool>(line("Int", "01")).value);
  const auto word = read<bool>(line("Int", "word"), true);  // atoi gives 0
  EXPECT_TRUE(word.ok);
  EXPECT_FALSE(word.value);
}

TEST(ParseValue, ReadsAnEmptyStringAsEmpty) {
  for (const char* end : {"", "\n", "\r\n"}) {
    const auto result = read<std::string>("\t<String value=\"\"/>" + std::string(end), "before");
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.value, "");
  }
  const auto nothing = read<std::string>("<String value=", "before");
  EXPECT_TRUE(nothing.ok);
  EXPECT_EQ(nothing.value, "");
}

TEST(ParseValue, KeepsEntitiesAsTheyStand) {
  EXPECT_EQ(roundTrip(std::string("a & <b> \"c\"\n")).value, "a &amp; &lt;b&gt; &quot;c&quot;&#10;");
  EXPECT_EQ(roundTrip(std::string(" a  b")).value, "&#32;a &#32;b");
}

TEST(ParseValue, RefusesTheElementOfAnotherType) {
  EXPECT_FALSE(read<int>(line("Long", "1")).ok);
  EXPECT_FALSE(read<unsigned int>(line("Double", "1")).ok);
  EXPECT_FALSE(read<long>(line("Int", "1")).ok);
  EXPECT_FALSE(read<double>(line("Int", "1")).ok);
  EXPECT_FALSE(read<std::string>(line("Int", "1")).ok);
  EXPECT_FALSE(read<bool>(line("String", "1")).ok);
  EXPECT_FALSE(read<int>("<Int size=\"1\"/>").ok);
  EXPECT_FALSE(read<int>("</Obj>").ok);
  EXPECT_FALSE(read<int>("").ok);
}

TEST(ParseValue, LeavesTheTargetAloneWhenItRefuses) {
  EXPECT_EQ(read<int>(line("Long", "1"), 77).value, 77);
  EXPECT_EQ(read<double>(line("Double", "x"), 7.5).value, 7.5);
  EXPECT_EQ(read<std::string>(line("Int", "1"), "before").value, "before");
}

TEST(ParseValue, ConvertsIntegersAsAtoiDoes) {
  struct Case {
    const char* text;
    int value;
  };
  const Case cases[] = {{"12abc", 12}, {"abc", 0},  {"+5", 5},  {"-5", -5},   {"+-5", 0}, {"--5", 0},
                        {"-", 0},      {"+", 0},    {"\v7", 7}, {"\f-7", -7}, {"007", 7}, {"0x10", 0},
                        {"1e3", 1},    {"3.99", 3}, {"5>", 5},  {"", 0}};
  for (const Case& c : cases) {
    const auto result = read<int>(line("Int", c.text), 99);
    EXPECT_TRUE(result.ok) << c.text;
    EXPECT_EQ(result.value, c.value) << c.text;
  }
}

TEST(ParseValue, SaturatesIntegersBeyondTheirRange) {
  EXPECT_EQ(read<int>(line("Int", "2147483648")).value, INT_MAX);
  EXPECT_EQ(read<int>(line("Int", "-2147483649")).value, INT_MIN);
  EXPECT_EQ(read<int>(line("Int", std::string(200, '9'))).value, INT_MAX);
  EXPECT_EQ(read<int>(line("Int", "-" + std::string(200, '9'))).value, INT_MIN);
  EXPECT_EQ(read<long>(line("Long", std::string(200, '9'))).value, LONG_MAX);
  EXPECT_EQ(read<long>(line("Long", "-" + std::string(200, '9'))).value, LONG_MIN);
  EXPECT_FALSE(read<bool>(line("Int", std::string(200, '9'))).ok);
}

TEST(ParseValue, TruncatesUnsignedValuesWithinTheirRange) {
  struct Case {
    const char* text;
    unsigned int value;
  };
  const Case cases[] = {{"0", 0},
                        {"3.99", 3},
                        {"4294967295", UINT_MAX},
                        {"4294967295.9", UINT_MAX},
                        {"4294967296", UINT_MAX},
                        {"1e999", UINT_MAX},
                        {"inf", UINT_MAX},
                        {"-1", 0},
                        {"-1e999", 0},
                        {"nan", 0},
                        {"-0.5", 0},
                        {"word", 0},
                        {"1e3", 1000},
                        {"0x10", 16}};
  for (const Case& c : cases) {
    const auto result = read<unsigned int>(line("Int", c.text), 99);
    EXPECT_TRUE(result.ok) << c.text;
    EXPECT_EQ(result.value, c.value) << c.text;
  }
}

TEST(ParseValue, RefusesADoubleThatIsNoNumberOrTooLarge) {
  for (const char* text : {"", "word", "nan", "-nan", "inf", "1e999", "-1e999", "1.79769313486232e+308", "1e",
                           "-", "missing", "Missing!"}) {
    const auto result = read<double>(line("Double", text), 7.5);
    EXPECT_FALSE(result.ok) << text;
    EXPECT_EQ(result.value, 7.5) << text;
  }
}

TEST(ParseValue, ReadsEveryFormOfADouble) {
  struct Case {
    const char* text;
    double value;
  };
  const Case cases[] = {{"5", 5},
                        {"+5", 5},
                        {"-5", -5},
                        {"5.", 5},
                        {".5", 0.5},
                        {"-.5", -0.5},
                        {"1e3", 1000},
                        {"1E-3", 1e-3},
                        {"1.5abc", 1.5},
                        {"1,5", 1},
                        {"0x10", 0},
                        {"1e-999", 0},
                        {"\v2", 2},
                        {"4.9e-324", 5e-324},
                        {"0.333333333333333", 0.333333333333333}};
  for (const Case& c : cases) {
    const auto result = read<double>(line("Double", c.text), 99);
    EXPECT_TRUE(result.ok) << c.text;
    EXPECT_EQ(result.value, c.value) << c.text;
  }
  EXPECT_TRUE(std::signbit(read<double>(line("Double", "-0"), 99).value));
}

TEST(ParseValue, TakesOneLineWhateverItHolds) {
  InputText file("<Obj name=\"x\">\nnonsense\n\n<Int value=\"5\"/>");
  int value = 0;
  EXPECT_FALSE(ParseValue(file.stream(), value));
  EXPECT_FALSE(ParseValue(file.stream(), value));
  EXPECT_FALSE(ParseValue(file.stream(), value));
  EXPECT_TRUE(ParseValue(file.stream(), value));
  EXPECT_EQ(value, 5);
  EXPECT_FALSE(ParseValue(file.stream(), value)) << "the file is at its end";
}

TEST(ParseValue, ReadsALineOf255CharactersAndRefusesALongerOne) {
  const std::string frame = "<String value=\"\"/>";
  for (const char* end : {"", "\n"}) {
    const std::string longest(255 - frame.size(), 'x');
    const auto fits = read<std::string>("<String value=\"" + longest + "\"/>" + end);
    EXPECT_TRUE(fits.ok);
    EXPECT_EQ(fits.value, longest);
    EXPECT_FALSE(read<std::string>("<String value=\"" + longest + "x\"/>" + end).ok);
  }
  const std::string indented = std::string(240, '\t') + "<Int value=\"1\"/>";  // 256 characters
  ASSERT_EQ(indented.size(), 256U);
  EXPECT_FALSE(read<int>(indented + "\n").ok);
  EXPECT_TRUE(read<int>(indented.substr(1) + "\n").ok);
}

TEST(ParseValue, FailsTheStreamOnALongLine) {
  InputText file(std::string(300, 'x') + "\n<Int value=\"5\"/>\n");
  int value = 0;
  EXPECT_FALSE(ParseValue(file.stream(), value));
  EXPECT_TRUE(file.stream().fail());
  EXPECT_FALSE(ParseValue(file.stream(), value));
}

// A line without an end: a gibibyte that exists only as far as it is asked for.
class EndlessLine : public std::streambuf {
 public:
  std::uint64_t delivered() const { return delivered_; }

 protected:
  int_type underflow() override {
    constexpr std::uint64_t kGibibyte = 1ULL << 30;
    if (delivered_ >= kGibibyte) return traits_type::eof();
    delivered_ += sizeof(chunk_);
    std::fill(std::begin(chunk_), std::end(chunk_), 'x');
    setg(chunk_, chunk_, chunk_ + sizeof(chunk_));
    return traits_type::to_int_type(chunk_[0]);
  }

 private:
  char chunk_[64];
  std::uint64_t delivered_ = 0;
};

TEST(ParseValue, NeverReadsTheRestOfALongLine) {
  EndlessLine endless;
  std::ifstream stream;
  static_cast<std::ios&>(stream).rdbuf(&endless);
  int value = 0;
  EXPECT_FALSE(ParseValue(stream, value));
  EXPECT_FALSE(ParseStartObj(stream, "x"));
  EXPECT_FALSE(ParseStartXML(stream));
  EXPECT_LE(endless.delivered(), 320U);
}

TEST(ParseValue, EndsALineAtAZeroByte) {
  using namespace std::string_literals;
  EXPECT_EQ(read<int>("<Int value=\"12\0"
                      "34\"/>\n"s)
                .value,
            12);
  EXPECT_EQ(read<std::string>("<String value=\"ab\0cd\"/>\n"s).value, "ab");
  EXPECT_FALSE(read<int>("\0<Int value=\"12\"/>\n"s).ok);
  EXPECT_FALSE(read<int>("<In\0t value=\"12\"/>\n"s).ok);
}

TEST(ParseValue, RefusesAStreamThatIsNotOpen) {
  std::ifstream stream;
  int value = 3;
  EXPECT_FALSE(ParseValue(stream, value));
  EXPECT_EQ(value, 3);
}

TEST(ParseStartObj, RefusesAnotherName) {
  InputText file("<Obj name=\"CeilArray\">\n<Obj name=\"ItemSet\">\n<Obj name=\"ItemSets\">\n");
  EXPECT_FALSE(ParseStartObj(file.stream(), "ItemSet"));
  EXPECT_TRUE(ParseStartObj(file.stream(), "ItemSet"));
  EXPECT_FALSE(ParseStartObj(file.stream(), "ItemSet"));
}

TEST(ParseStartObj, SkipsOneEmptyLineAndNoMore) {
  InputText one("\n\t<Obj name=\"ItemSet\">\n");
  EXPECT_TRUE(ParseStartObj(one.stream(), "ItemSet"));
  InputText two("\n\n\t<Obj name=\"ItemSet\">\n");
  EXPECT_FALSE(ParseStartObj(two.stream(), "ItemSet"));
  EXPECT_TRUE(ParseStartObj(two.stream(), "ItemSet"));
}

TEST(ParseStartObj, TakesTheNameUpToTheNextQuoteWithItsSpaces) {
  InputText file("  <Obj name=\"a = <b>\" x=\"y\">\r\n");
  EXPECT_TRUE(ParseStartObj(file.stream(), "a = <b>"));
}

TEST(ParseStartObj, RefusesAnEmptyName) {
  for (const char* text : {"<Obj name=\"\">", "<Obj name=", "<Obj name=\""}) {
    InputText file(text);
    EXPECT_FALSE(ParseStartObj(file.stream(), "")) << text;
  }
}

TEST(ParseEndObj, TakesOnlyAnEnd) {
  InputText file("</Obj>\n\t\t</Obj>\r\n</Object>\n<Obj name=\"x\">\n\n/Obj");
  EXPECT_TRUE(ParseEndObj(file.stream()));
  EXPECT_TRUE(ParseEndObj(file.stream()));
  EXPECT_FALSE(ParseEndObj(file.stream()));
  EXPECT_FALSE(ParseEndObj(file.stream()));
  EXPECT_FALSE(ParseEndObj(file.stream()));
  EXPECT_TRUE(ParseEndObj(file.stream()));
  EXPECT_FALSE(ParseEndObj(file.stream()));
}

TEST(ParseStartXML, TakesTheThreeLinesOfTheHead) {
  const std::string head =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<!DOCTYPE KorXMLRoot SYSTEM \"savexml.dtd\">\n";
  InputText file(head + "<KorXMLRoot copyright=\"anyone\">\n<Int value=\"5\"/>");
  EXPECT_TRUE(ParseStartXML(file.stream()));
  int value = 0;
  EXPECT_TRUE(ParseValue(file.stream(), value));

  InputText otherRoot(head + "<PMML version=\"3.2\">\n<Int value=\"5\"/>");
  EXPECT_FALSE(ParseStartXML(otherRoot.stream()));
  EXPECT_TRUE(ParseValue(otherRoot.stream(), value)) << "all three lines are taken";

  InputText noDocType("<?xml version=\"1.0\"?>\n<KorXMLRoot>\n<KorXMLRoot>\n");
  EXPECT_FALSE(ParseStartXML(noDocType.stream()));
  InputText cut(head);
  EXPECT_FALSE(ParseStartXML(cut.stream()));
  InputText empty("");
  EXPECT_FALSE(ParseStartXML(empty.stream()));
}

TEST(ParseTextOrFlag, TakesTheTextOfAStringAndOfAFlag) {
  InputText file("<Int value=\"1\"/>\n<String value=\"name\"/>\n<String value=\"\"/>\n<Long value=\"1\"/>\n");
  std::string value;
  EXPECT_TRUE(korassoc::detail::parseTextOrFlag(file.stream(), value));
  EXPECT_EQ(value, "1");
  EXPECT_TRUE(korassoc::detail::parseTextOrFlag(file.stream(), value));
  EXPECT_EQ(value, "name");
  EXPECT_TRUE(korassoc::detail::parseTextOrFlag(file.stream(), value));
  EXPECT_EQ(value, "");
  EXPECT_FALSE(korassoc::detail::parseTextOrFlag(file.stream(), value));
}

TEST(StateFile, CutAnywhereIsRefusedAtTheCut) {
  std::ostringstream out;
  ExportFormat format;
  const std::unique_ptr<XMLDocType> docType(XMLDocType::Create("KorXMLRoot", "savexml.dtd", 0));
  docType->ToStream(out, format, false);
  StartRoot(out, "me");
  const XMLObj object("ItemSet", 0);
  object.StartObj(out);
  object.WriteSubElement(out, std::string("text"));
  object.WriteSubElement(out, 0.25);
  object.EndObj(out);
  const std::string text = out.str();
  const auto readsWhole = [](const std::string& state) {
    InputText file(state);
    std::string word;
    double number = 0;
    return ParseStartXML(file.stream()) && ParseStartObj(file.stream(), "ItemSet") &&
           ParseValue(file.stream(), word) && ParseValue(file.stream(), number) && ParseEndObj(file.stream());
  };
  EXPECT_TRUE(readsWhole(text));
  EXPECT_TRUE(readsWhole(text.substr(0, text.size() - 1))) << "the last bracket is not looked at";
  for (std::size_t bytes = 0; bytes + 1 < text.size(); ++bytes) {
    EXPECT_FALSE(readsWhole(text.substr(0, bytes))) << bytes;
  }
}

}  // namespace
}  // namespace KorAssocXML
