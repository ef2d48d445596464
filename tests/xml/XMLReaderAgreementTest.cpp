// On lines that went wrong in every way, the reader answers as the same reader told with strtok does, and
// leaves the stream where that one leaves it.

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/xml/XMLReader.h"
#include "tests/support/InputText.h"
#include "tests/xml/StrtokReader.h"

namespace {

const std::vector<std::string>& seeds() {
  using namespace std::string_literals;
  static const std::vector<std::string> lines = {"\t\t<Int value=\"12\"/>\n"s,
                                                 "<Int value=\"2147483648\"/>\r\n"s,
                                                 "<Int value=\"1\"/>"s,
                                                 "\t<Long value=\"-99999999999999999999\"/>\n"s,
                                                 "<Double value=\"0.333333333333333\"/>\n"s,
                                                 "<Double value=\"Missing\"/>\n"s,
                                                 "<Double value=\"-1e-308\"/>\n"s,
                                                 "<Double value=\"1e999\"/>\n"s,
                                                 "<Double value=\"nan\"/>\n"s,
                                                 "<String value=\"\"/>\n"s,
                                                 "<String value=\"\"/>\r\n"s,
                                                 "<String value=\"a &#32;b\"/>\n"s,
                                                 "<String value=\"/>\n"s,
                                                 "\t<Obj name=\"ItemSet\">\n"s,
                                                 "\n\t<Obj name=\"ItemSet\">\n"s,
                                                 "\t</Obj>\n"s,
                                                 "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                                                 "<!DOCTYPE KorXMLRoot SYSTEM \"savexml.dtd\">\n"
                                                 "<KorXMLRoot copyright=\"me\">\n"s,
                                                 "\n"s,
                                                 ""s,
                                                 std::string(300, ' ') + "<Int value=\"1\"/>\n",
                                                 std::string(238, '\t') + "<Int value=\"1\"/>\n",
                                                 std::string(239, '\t') + "<Int value=\"1\"/>",
                                                 std::string(240, '\t') + "<Int value=\"1\"/>\n"};
  return lines;
}

// A seed, or two of them, with a few characters changed, put in, taken out or doubled.
std::string mutated(std::mt19937& random) {
  static const std::string kAlphabet =
      std::string("\"\"\"==<</>>  \t\r\n\v\f0159+-.eExXaInltvu&;,") + '\0' + "\xE9";
  const auto below = [&random](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  std::string text = seeds()[below(seeds().size())];
  if (below(4) == 0) text += seeds()[below(seeds().size())];
  for (std::size_t changes = below(5); changes > 0; --changes) {
    const std::size_t at = below(text.size() + 1);
    const char c = kAlphabet[below(kAlphabet.size())];
    switch (below(4)) {
      case 0:
        text.insert(at, 1, c);
        break;
      case 1:
        if (at < text.size()) text[at] = c;
        break;
      case 2:
        text.erase(at, below(4));
        break;
      default:
        text.insert(at, text.substr(at, below(8)));
    }
  }
  return text;
}

// Everything that a caller can see of a call.
template <class Value>
std::string outcome(bool ok, const Value& value, std::istream& in) {
  std::ostringstream text;
  text.precision(17);
  text << ok << " [" << value << "] state " << in.rdstate();
  in.clear();
  text << " rest [";
  for (int c = in.rdbuf()->sbumpc(); c != std::char_traits<char>::eof(); c = in.rdbuf()->sbumpc()) {
    text << static_cast<char>(c);
  }
  text << "]";
  return text.str();
}

template <class Value>
void compareValue(const std::string& text, Value before) {
  InputText file(text);
  Value read = before;
  const bool ok = KorAssocXML::ParseValue(file.stream(), read);
  std::istringstream reference(text);
  Value expected = before;
  const bool expectedOk = strtok_reader::ParseValue(reference, expected);
  ASSERT_EQ(outcome(ok, read, file.stream()), outcome(expectedOk, expected, reference));
}

template <class Parse, class Reference>
void compareFrame(const std::string& text, Parse parse, Reference parseReference) {
  InputText file(text);
  const bool ok = parse(file.stream());
  std::istringstream reference(text);
  const bool expectedOk = parseReference(reference);
  ASSERT_EQ(outcome(ok, "", file.stream()), outcome(expectedOk, "", reference));
}

void compareAll(const std::string& text) {
  SCOPED_TRACE(testing::PrintToString(text));
  ASSERT_NO_FATAL_FAILURE(compareValue(text, -3));
  ASSERT_NO_FATAL_FAILURE(compareValue(text, 3U));
  ASSERT_NO_FATAL_FAILURE(compareValue(text, -3L));
  ASSERT_NO_FATAL_FAILURE(compareValue(text, 0.75));
  ASSERT_NO_FATAL_FAILURE(compareValue(text, std::string("before")));
  ASSERT_NO_FATAL_FAILURE(compareValue(text, true));
  ASSERT_NO_FATAL_FAILURE(compareFrame(
      text, [](std::ifstream& in) { return KorAssocXML::ParseStartObj(in, "ItemSet"); },
      [](std::istream& in) { return strtok_reader::ParseStartObj(in, "ItemSet"); }));
  ASSERT_NO_FATAL_FAILURE(compareFrame(text, KorAssocXML::ParseEndObj,
                                       [](std::istream& in) { return strtok_reader::ParseEndObj(in); }));
  ASSERT_NO_FATAL_FAILURE(compareFrame(text, KorAssocXML::ParseStartXML,
                                       [](std::istream& in) { return strtok_reader::ParseStartXML(in); }));
}

TEST(XMLReader, AgreesWithStrtokOnWellFormedLines) {
  for (const std::string& line : seeds()) ASSERT_NO_FATAL_FAILURE(compareAll(line));
}

TEST(XMLReader, AgreesWithStrtokOnMutatedLines) {
  std::mt19937 random(5101);
  for (int i = 0; i < 12000; ++i) ASSERT_NO_FATAL_FAILURE(compareAll(mutated(random))) << i;
}

TEST(XMLReader, AgreesWithStrtokOnRandomTokens) {
  static const std::vector<std::string> kTokens = {
      "<",    "Int", "Long", "Double",  "String", "Obj",   " ",  "value", "name", "=",  "\"",
      "\"\"", "/>",  "1",    "ItemSet", "\t",     "</Obj", "\r", "\n",    ">",    "-2", "Missing"};
  std::mt19937 random(5102);
  for (int i = 0; i < 12000; ++i) {
    std::string text;
    for (std::size_t tokens = random() % 12; tokens > 0; --tokens) text += kTokens[random() % kTokens.size()];
    ASSERT_NO_FATAL_FAILURE(compareAll(text)) << i;
  }
}

TEST(XMLReader, AgreesWithStrtokOnRandomNumbers) {
  static const std::string kDigits = "0123456789+-.eE,xnaif";
  std::mt19937 random(5103);
  for (int i = 0; i < 6000; ++i) {
    std::string number;
    for (std::size_t length = random() % 24; length > 0; --length) {
      number += kDigits[random() % (random() % 4 == 0 ? kDigits.size() : 10)];
    }
    for (const char* element : {"Int", "Long", "Double"}) {
      ASSERT_NO_FATAL_FAILURE(compareAll(std::string("<") + element + " value=\"" + number + "\"/>\n")) << i;
    }
  }
}

}  // namespace
