// Attributes, text nodes and document types: the leaves of a document and their escaping.

#include "korassoc/xml/XMLAttribute.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

#include "korassoc/base/Platform.h"
#include "korassoc/xml/XMLDocType.h"
#include "korassoc/xml/XMLString.h"

namespace KorAssocXML {
namespace {

std::string text(const XMLInterface& node) {
  std::string out;
  ExportFormat format;
  EXPECT_EQ(node.ToString(out, format), 0);
  std::ostringstream stream;
  EXPECT_EQ(node.ToStream(stream, format, false), 0);
  EXPECT_EQ(stream.str(), out);
  std::ostringstream utf8;
  EXPECT_EQ(node.ToStream(utf8, format, true), 0);
  EXPECT_EQ(utf8.str(), korassoc::detail::utf8FromNarrow(out));
  return out;
}

std::string escaped(const std::string& value) {
  const std::string whole = text(XMLAttribute("a", value));
  EXPECT_EQ(whole.substr(0, 3), "a=\"");
  EXPECT_EQ(whole.back(), '"');
  return whole.substr(3, whole.size() - 4);
}

// The escaping spelled out: one pass of replacements after the other, each going on behind what it put in.
void replaceAll(std::string& value, std::string_view what, std::string_view by) {
  for (std::size_t at = value.find(what); at != std::string::npos; at = value.find(what, at + by.size())) {
    value.replace(at, what.size(), by);
  }
}

std::string escapedInPasses(std::string value) {
  replaceAll(value, "&", "&amp;");
  replaceAll(value, "<", "&lt;");
  replaceAll(value, ">", "&gt;");
  replaceAll(value, "\"", "&quot;");
  replaceAll(value, "\t", "&#9;");
  replaceAll(value, "\n", "&#10;");
  replaceAll(value, "\r", "&#13;");
  replaceAll(value, "  ", " &#32;");
  if (!value.empty() && value.front() == ' ') value.replace(0, 1, "&#32;");
  if (!value.empty() && value.back() == ' ') value.replace(value.size() - 1, 1, "&#32;");
  return value;
}

TEST(XMLAttribute, WritesItsNameAndItsQuotedValue) {
  const std::unique_ptr<XMLAttribute> attribute(XMLAttribute::Create("version", "3.2"));
  EXPECT_EQ(text(*attribute), "version=\"3.2\"");
  EXPECT_EQ(text(*std::unique_ptr<XMLAttribute>(XMLAttribute::Create("", ""))), "=\"\"");
}

TEST(XMLAttribute, AppendsToWhatIsThere) {
  std::string out = "<x ";
  ExportFormat format;
  XMLAttribute("a", "b").ToString(out, format);
  EXPECT_EQ(out, "<x a=\"b\"");
}

TEST(XMLAttribute, FormatsNumbers) {
  EXPECT_EQ(text(*std::unique_ptr<XMLAttribute>(XMLAttribute::Create("id", 12))), "id=\"12\"");
  EXPECT_EQ(text(*std::unique_ptr<XMLAttribute>(XMLAttribute::Create("id", 1.0 / 3))),
            "id=\"0.333333333333333\"");
}

TEST(XMLAttribute, EscapesTheSpacesAtItsEndsAndTheBracketBetween) {
  EXPECT_EQ(escaped(" a<b "), "&#32;a&lt;b&#32;");
}

TEST(XMLAttribute, EscapesWhatAnAttributeCannotHold) {
  struct Case {
    const char* value;
    const char* escaped;
  };
  const Case cases[] = {{"&", "&amp;"},
                        {"&amp;", "&amp;amp;"},
                        {"<>\"", "&lt;&gt;&quot;"},
                        {"a'b", "a'b"},
                        {"\t\n\r", "&#9;&#10;&#13;"},
                        {" ", "&#32;"},
                        {"  ", "&#32;&#32;"},
                        {"   ", "&#32;&#32;&#32;"},
                        {"    ", "&#32;&#32; &#32;"},
                        {"a  b", "a &#32;b"},
                        {"a   b", "a &#32; b"},
                        {"a    b", "a &#32; &#32;b"},
                        {"a  ", "a &#32;"},
                        {"a   ", "a &#32;&#32;"},
                        {" \t ", "&#32;&#9;&#32;"},
                        {"caf\xC3\xA9", "caf\xC3\xA9"}};
  for (const Case& c : cases) {
    EXPECT_EQ(escapedInPasses(c.value), c.escaped) << c.value;
    EXPECT_EQ(escaped(c.value), c.escaped) << c.value;
  }
}

TEST(XMLAttribute, EscapesAsPassAfterPassWould) {
  std::mt19937 random(5201);
  constexpr std::string_view kAlphabet = "   &<>\"'\t\n\rab;#";
  for (int i = 0; i < 20000; ++i) {
    std::string value;
    for (std::size_t length = random() % 12; length > 0; --length)
      value += kAlphabet[random() % kAlphabet.size()];
    ASSERT_EQ(escaped(value), escapedInPasses(value)) << value;
  }
}

TEST(XMLAttribute, DoesNotTouchTheFormat) {
  ExportFormat format;
  std::string out;
  XMLAttribute("a", "b").ToString(out, format);
  EXPECT_TRUE(format.IsNewParagraph());
  EXPECT_TRUE(format.HasIndentation());
}

TEST(XMLString, EscapesOnlyAmpersandsAndOpeningBrackets) {
  EXPECT_EQ(text(*std::unique_ptr<XMLString>(XMLString::Create(" x & <y>  \"\t\n"))),
            " x &amp; &lt;y>  \"\t\n");
  EXPECT_EQ(text(*std::unique_ptr<XMLString>(XMLString::Create(""))), "");
}

TEST(XMLString, LeavesWhatXmlForbidsInATextAsItStands) {
  for (const std::string& given :
       {std::string("]]>"), std::string("a]]>b ]] > ]>"), std::string("\x01\x1F")}) {
    const std::unique_ptr<XMLString> node(XMLString::Create(given));
    EXPECT_EQ(text(*node), given);
    ExportFormat format;
    std::ostringstream stream;
    node->ToStream(stream, format, false);
    EXPECT_EQ(stream.str(), given);
  }
}

TEST(XMLString, SwitchesParagraphAndIndentationOff) {
  const std::unique_ptr<XMLString> node(XMLString::Create("x"));
  for (const bool toStream : {false, true}) {
    ExportFormat format;
    std::string out;
    std::ostringstream stream;
    toStream ? node->ToStream(stream, format, false) : node->ToString(out, format);
    EXPECT_FALSE(format.IsNewParagraph());
    EXPECT_FALSE(format.HasIndentation());
  }
}

TEST(XMLDocType, WritesTheDeclarationAndTheDocumentType) {
  const std::unique_ptr<XMLDocType> docType(XMLDocType::Create("KorXMLRoot", "savexml.dtd", 7));
  EXPECT_EQ(text(*docType),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<!DOCTYPE KorXMLRoot SYSTEM \"savexml.dtd\">\n");
  EXPECT_EQ(docType->GetValue(), 7);
}

TEST(XMLDocType, SpansLinesWithExtensions) {
  const std::unique_ptr<XMLDocType> docType(XMLDocType::Create("r", "r.dtd", 0));
  EXPECT_EQ(docType->AddExtension("<!ENTITY a \"b\">"), 16);
  EXPECT_EQ(docType->AddExtension("x"), 18);
  EXPECT_EQ(text(*docType),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
            "<!DOCTYPE r SYSTEM \"r.dtd\"\n"
            "[\n"
            "<!ENTITY a \"b\">\n"
            "x\n"
            "]>\n");
}

TEST(ExportFormat, NeedsTheFormatFlagForBothOthers) {
  ExportFormat format;
  EXPECT_EQ(format.level, 0);
  EXPECT_TRUE(format.HasIndentation());
  EXPECT_TRUE(format.IsNewParagraph());
  format.SetFormat(false);
  EXPECT_FALSE(format.HasIndentation());
  EXPECT_FALSE(format.IsNewParagraph());
  format.SetFormat(true);
  format.SetIndentation(false);
  EXPECT_FALSE(format.HasIndentation());
  EXPECT_TRUE(format.IsNewParagraph());
  format.SetIndentation(true);
  format.SetIsNewParagraph(false);
  EXPECT_TRUE(format.HasIndentation());
  EXPECT_FALSE(format.IsNewParagraph());
}

}  // namespace
}  // namespace KorAssocXML
