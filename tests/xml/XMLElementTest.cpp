// Elements: their layout, what text nodes do to it, ownership, depth, and streams that fail.

#include "korassoc/xml/XMLElement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/xml/XMLAttribute.h"
#include "korassoc/xml/XMLString.h"
#include "tests/support/FailingBuffer.h"

namespace KorAssocXML {
namespace {

using ElementPointer = std::unique_ptr<XMLElement>;

ElementPointer make(const std::string& name) { return ElementPointer(XMLElement::Create(name)); }

std::string asString(const XMLElement& element, ExportFormat format = ExportFormat()) {
  std::string out;
  EXPECT_EQ(element.ToString(out, format), 0);
  return out;
}

std::string asStream(const XMLElement& element, ExportFormat format = ExportFormat()) {
  std::ostringstream out;
  EXPECT_EQ(element.ToStream(out, format, false), 0);
  std::ostringstream utf8;
  EXPECT_EQ(element.ToStream(utf8, format, true), 0);
  return out.str();
}

ElementPointer item() {
  ElementPointer element = make("Item");
  element->AddAttribute("id", 1);
  element->AddAttribute("value", 5);
  return element;
}

TEST(XMLElement, PutsEachAttributeOnALineOfItsOwn) {
  ExportFormat format;
  format.level = 1;
  const char* expected = "\n\t<Item\n\t\tid=\"1\"\n\t\tvalue=\"5\"/>";
  EXPECT_EQ(asString(*item(), format), expected);
  EXPECT_EQ(asStream(*item(), format), expected);
}

TEST(XMLElement, StandsInOneLineWithoutFormatting) {
  ExportFormat format;
  format.SetFormat(false);
  format.level = 1;
  EXPECT_EQ(asString(*item(), format), "<Item id=\"1\" value=\"5\"/>");
  EXPECT_EQ(asStream(*item(), format), "<Item id=\"1\" value=\"5\"/>");
}

TEST(XMLElement, BreaksLinesWithoutIndentation) {
  ExportFormat format;
  format.SetIndentation(false);
  format.level = 3;
  EXPECT_EQ(asString(*item(), format), "\n<Item\nid=\"1\"\nvalue=\"5\"/>");
}

TEST(XMLElement, IndentsWithoutBreakingLines) {
  ExportFormat format;
  format.SetIsNewParagraph(false);
  format.level = 1;
  EXPECT_EQ(asString(*item(), format), "\t<Item \t\tid=\"1\" \t\tvalue=\"5\"/>");
}

TEST(XMLElement, IndentsItsChildrenByOneMore) {
  const ElementPointer root = make("Root");
  root->AddElement(item().release());
  root->AddElement(make("Empty").release());
  const char* expected =
      "\n<Root>"
      "\n\t<Item\n\t\tid=\"1\"\n\t\tvalue=\"5\"/>"
      "\n\t<Empty/>"
      "\n</Root>";
  EXPECT_EQ(asString(*root), expected);
  EXPECT_EQ(asStream(*root), expected);
}

TEST(XMLElement, CountsANegativeLevelAsNone) {
  ExportFormat format;
  format.level = -5;
  EXPECT_EQ(asString(*item(), format), "\n<Item\nid=\"1\"\nvalue=\"5\"/>");
}

TEST(XMLElement, LeavesTheLevelAsItWas) {
  const ElementPointer root = make("Root");
  root->AddElement(item().release());
  ExportFormat format;
  format.level = 4;
  std::string out;
  root->ToString(out, format);
  EXPECT_EQ(format.level, 4);
  std::ostringstream stream;
  root->ToStream(stream, format, false);
  EXPECT_EQ(format.level, 4);
}

TEST(XMLElement, ClosesDirectlyBehindItsText) {
  const ElementPointer element = make("Note");
  element->AddElement(XMLString::Create("x & y"));
  EXPECT_EQ(asString(*element), "\n<Note>x &amp; y</Note>");
  EXPECT_EQ(asStream(*element), "\n<Note>x &amp; y</Note>");
}

TEST(XMLElement, LaysOutAgainBehindAnElementWithTextWhenItGoesToAStream) {
  const ElementPointer root = make("Root");
  ElementPointer note = make("Note");
  note->AddElement(XMLString::Create("x"));
  root->AddElement(note.release());
  root->AddElement(make("Next").release());
  EXPECT_EQ(asStream(*root), "\n<Root>\n\t<Note>x</Note>\n\t<Next/>\n</Root>");
  EXPECT_EQ(asString(*root), "\n<Root>\n\t<Note>x</Note><Next/></Root>")
      << "a text node's effect lasts in a string";
}

TEST(XMLElement, SwitchesTheLayoutBackOnAtItsEndOnlyInAStream) {
  for (const bool toStream : {false, true}) {
    ExportFormat format;
    format.SetIndentation(false);
    format.SetIsNewParagraph(false);
    std::string out;
    std::ostringstream stream;
    toStream ? item()->ToStream(stream, format, false) : item()->ToString(out, format);
    EXPECT_EQ(format.IsNewParagraph(), toStream);
    EXPECT_EQ(format.HasIndentation(), toStream);
  }
}

TEST(XMLElement, ReturnsTheNewCounts) {
  const ElementPointer element = make("x");
  EXPECT_EQ(element->AddElement(make("a").release()), 1);
  EXPECT_EQ(element->AddElement(XMLString::Create("b")), 2);
  EXPECT_EQ(element->AddElement(make("c").release()), 3);
  EXPECT_EQ(element->AddAttribute("a", "1"), 1);
  EXPECT_EQ(element->AddAttribute("b", 2), 2);
  EXPECT_EQ(element->AddAttribute(XMLAttribute::Create("c", "3")), 3);
}

TEST(XMLElement, KeepsAttributesAndChildrenInOrder) {
  const ElementPointer element = make("x");
  element->AddAttribute("b", 2);
  element->AddAttribute("a", 1);
  element->AddAttribute("b", 3);
  element->AddElement(make("d").release());
  element->AddElement(make("c").release());
  ExportFormat format;
  format.SetFormat(false);
  EXPECT_EQ(asString(*element, format), "<x b=\"2\" a=\"1\" b=\"3\"><d/><c/></x>");
}

// Nodes that a host derives: they count who is alive, and their own texts are asked for.
class CountedElement : public XMLElement {
 public:
  explicit CountedElement(int& alive) : XMLElement("Counted"), alive_(alive) { ++alive_; }
  ~CountedElement() override { --alive_; }

 private:
  int& alive_;
};

class CountedAttribute : public XMLAttribute {
 public:
  explicit CountedAttribute(int& alive) : XMLAttribute("a", "1"), alive_(alive) { ++alive_; }
  ~CountedAttribute() override { --alive_; }

 private:
  int& alive_;
};

class CountedString : public XMLString {
 public:
  explicit CountedString(int& alive) : XMLString("text"), alive_(alive) { ++alive_; }
  ~CountedString() override { --alive_; }

 private:
  int& alive_;
};

TEST(XMLElement, DestroysItsAttributesAndChildren) {
  int alive = 0;
  {
    ElementPointer root = make("Root");
    for (int i = 0; i < 3; ++i) {
      ElementPointer plain = make("Plain");
      plain->AddElement(new CountedString(alive));
      auto counted = std::make_unique<CountedElement>(alive);
      counted->AddAttribute(new CountedAttribute(alive));
      ElementPointer inner = make("Inner");
      inner->AddElement(new CountedElement(alive));
      inner->AddElement(make("Leaf").release());
      counted->AddElement(inner.release());
      plain->AddElement(counted.release());
      plain->AddElement(make("Leaf").release());
      root->AddElement(plain.release());
      root->AddElement(new CountedElement(alive));
    }
    EXPECT_EQ(alive, 15);
  }
  EXPECT_EQ(alive, 0);
}

class ShoutingElement : public XMLElement {
 public:
  ShoutingElement() : XMLElement("quiet") {}
  int ToString(std::string& out, ExportFormat&) const override {
    out += "LOUD";
    return 0;
  }
  int ToStream(std::ostream& out, ExportFormat&, bool) const override {
    out << "LOUD";
    return 0;
  }
};

TEST(XMLElement, AsksAnElementOfADerivedClassForItsOwnText) {
  const ElementPointer root = make("Root");
  root->AddElement(make("a").release());
  root->AddElement(new ShoutingElement);
  root->AddElement(make("b").release());
  EXPECT_EQ(asString(*root), "\n<Root>\n\t<a/>LOUD\n\t<b/>\n</Root>");
  EXPECT_EQ(asStream(*root), "\n<Root>\n\t<a/>LOUD\n\t<b/>\n</Root>");
}

// A tree beside the element tree, and its layout told step by step and recursively.
struct Model {
  bool isText = false;
  std::string name;  // or the text
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<Model> children;
};

void describe(const Model& node, ExportFormat& format, bool stream, std::string& out) {
  if (node.isText) {
    out += node.name;
    format.SetIsNewParagraph(false);
    format.SetIndentation(false);
    return;
  }
  const std::string indentation(static_cast<std::size_t>(format.level), '\t');
  if (format.IsNewParagraph()) out += "\n";
  if (format.HasIndentation()) out += indentation;
  out += "<" + node.name;
  for (const auto& [name, value] : node.attributes) {
    out += format.IsNewParagraph() ? "\n" : " ";
    if (format.HasIndentation()) out += indentation + "\t";
    out += name + "=\"" + value + "\"";
  }
  if (node.children.empty()) {
    out += "/>";
  } else {
    out += ">";
    ++format.level;
    for (const Model& child : node.children) describe(child, format, stream, out);
    --format.level;
    if (format.IsNewParagraph()) out += "\n";
    if (format.HasIndentation()) out += indentation;
    out += "</" + node.name + ">";
  }
  if (stream) {
    format.SetIsNewParagraph(true);
    format.SetIndentation(true);
  }
}

Model randomTree(std::mt19937& random, int depth, bool withText) {
  Model node;
  node.name = "e" + std::to_string(random() % 100);
  for (std::size_t i = random() % 4; i > 0; --i) node.attributes.emplace_back("a" + std::to_string(i), "v");
  if (depth == 0) return node;
  for (std::size_t i = random() % 5; i > 0; --i) {
    if (withText && random() % 4 == 0) {
      node.children.push_back({true, "text", {}, {}});
    } else {
      node.children.push_back(randomTree(random, depth - 1, withText));
    }
  }
  return node;
}

ElementPointer build(const Model& model) {
  ElementPointer element = make(model.name);
  for (const auto& [name, value] : model.attributes) element->AddAttribute(name, value);
  for (const Model& child : model.children) {
    if (child.isText) {
      element->AddElement(XMLString::Create(child.name));
    } else {
      element->AddElement(build(child).release());
    }
  }
  return element;
}

std::string described(const Model& model, ExportFormat format, bool stream) {
  std::string out;
  describe(model, format, stream, out);
  return out;
}

ExportFormat randomFormat(std::mt19937& random) {
  ExportFormat format;
  format.SetFormat(random() % 4 != 0);
  format.SetIndentation(random() % 4 != 0);
  format.SetIsNewParagraph(random() % 4 != 0);
  format.level = static_cast<int>(random() % 3);
  return format;
}

TEST(XMLElement, WritesRandomTreesAlikeToStringsAndStreams) {
  std::mt19937 random(5202);
  for (int i = 0; i < 500; ++i) {
    const ElementPointer tree = build(randomTree(random, 4, false));
    ExportFormat format;
    format.SetFormat(random() % 2 == 0);
    ASSERT_EQ(asString(*tree, format), asStream(*tree, format)) << i;
  }
}

TEST(XMLElement, LaysOutRandomTreesWithTextAsDescribedStepByStep) {
  std::mt19937 random(5203);
  for (int i = 0; i < 500; ++i) {
    const Model model = randomTree(random, 4, true);
    const ElementPointer tree = build(model);
    const ExportFormat format = randomFormat(random);
    ASSERT_EQ(asString(*tree, format), described(model, format, false)) << i;
    ASSERT_EQ(asStream(*tree, format), described(model, format, true)) << i;
  }
}

TEST(XMLElement, IsWrittenAndDestroyedHoweverDeepItIs) {
  constexpr int kDepth = 300000;
  ElementPointer root = make("a");
  for (int i = 0; i < kDepth; ++i) {
    ElementPointer outer = make("a");
    outer->AddElement(root.release());
    root = std::move(outer);
  }
  ExportFormat format;
  format.SetFormat(false);
  std::string expected;
  for (int i = 0; i < kDepth; ++i) expected += "<a>";
  expected += "<a/>";
  for (int i = 0; i < kDepth; ++i) expected += "</a>";
  EXPECT_TRUE(asString(*root, format) == expected);
  EXPECT_TRUE(asStream(*root, format) == expected);
}

// Notes the largest piece that it was handed.
class PieceMeter : public std::streambuf {
 public:
  std::streamsize largest() const { return largest_; }
  std::streamsize total() const { return total_; }

 protected:
  std::streamsize xsputn(const char*, std::streamsize size) override {
    largest_ = std::max(largest_, size);
    total_ += size;
    return size;
  }
  int_type overflow(int_type c) override {
    ++total_;
    return traits_type::not_eof(c);
  }

 private:
  std::streamsize largest_ = 0;
  std::streamsize total_ = 0;
};

TEST(XMLElement, ReachesAStreamInPieces) {
  const ElementPointer root = make("Root");
  for (int i = 0; i < 20000; ++i) root->AddElement(item().release());
  PieceMeter meter;
  std::ostream out(&meter);
  ExportFormat format;
  root->ToStream(out, format, false);
  EXPECT_GT(meter.total(), 500000);
  EXPECT_LT(meter.largest(), 8192);
}

TEST(XMLElement, DropsEverythingFromTheByteAtWhichTheStreamFails) {
  const ElementPointer root = make("Root");
  for (int i = 0; i < 3; ++i) {
    ElementPointer note = item();
    note->AddElement(XMLString::Create("text"));
    root->AddElement(note.release());
  }
  const std::string text = asStream(*root);
  for (std::size_t bytes = 0; bytes <= text.size(); ++bytes) {
    FailingBuffer disk(bytes);
    std::ostream out(&disk);
    ExportFormat format;
    EXPECT_EQ(root->ToStream(out, format, false), 0);
    EXPECT_EQ(disk.text(), text.substr(0, bytes));
    EXPECT_EQ(out.good(), bytes == text.size()) << bytes;
  }
}

}  // namespace
}  // namespace KorAssocXML
