// Elements that are made while they are written leave no trace in the text.

#include "korassoc/xml/export/ElementSequence.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "korassoc/xml/XMLString.h"
#include "korassoc/xml/XMLTree.h"
#include "tests/support/FailingBuffer.h"

namespace korassoc::detail {
namespace {

using KorAssocXML::ExportFormat;
using KorAssocXML::XMLElement;
using KorAssocXML::XMLString;
using Element = std::unique_ptr<XMLElement>;

Element leaf(int number) {
  Element element(XMLElement::Create("Leaf"));
  element->AddAttribute("id", number);
  if (number % 2 == 0) element->AddElement(XMLString::Create("even"));
  return element;
}

void addLeaves(XMLElement& parent, int first, int count, bool sequence) {
  if (sequence) {
    parent.AddElement(ElementSequence::Create([first, count](const ElementSequence::Sink& sink) {
      for (int i = 0; i < count && sink(*leaf(first + i)); ++i) continue;
    }));
  } else {
    for (int i = 0; i < count; ++i) parent.AddElement(leaf(first + i).release());
  }
}

Element branch(int number, bool sequence) {
  Element element(XMLElement::Create("Branch"));
  element->AddAttribute("number", number);
  element->AddElement(leaf(1).release());
  addLeaves(*element, 2, number, sequence);
  return element;
}

// A tree with leaves on two levels, all of them in it or made as they are needed.
Element tree(bool sequence) {
  Element root(XMLElement::Create("Root"));
  addLeaves(*root, 0, 3, sequence);
  for (int number = 1; number <= 3; ++number) {
    if (sequence) {
      root->AddElement(ElementSequence::Create([number](const ElementSequence::Sink& sink) {
        sink(*branch(number, true));
        sink(*branch(-number, true));
      }));
    } else {
      root->AddElement(branch(number, false).release());
      root->AddElement(branch(-number, false).release());
    }
  }
  root->AddElement(leaf(9).release());
  return root;
}

std::string streamed(const XMLElement& root, bool format) {
  std::ostringstream out;
  KorAssocXML::WriteTree(out, nullptr, &root, format);
  return out.str();
}

std::string inOneString(const XMLElement& root, bool format) {
  std::string text;
  ExportFormat layout;
  layout.SetFormat(format);
  root.ToString(text, layout);
  return text;
}

TEST(ElementSequence, IsWrittenAsItsElementsAreInATree) {
  const Element plain = tree(false);
  const Element sequences = tree(true);
  EXPECT_NE(streamed(*plain, true), streamed(*plain, false));
  for (const bool format : {true, false}) {
    EXPECT_EQ(streamed(*sequences, format), streamed(*plain, format));
    EXPECT_EQ(inOneString(*sequences, format), inOneString(*plain, format));
  }
}

TEST(ElementSequence, IsWrittenTheSameEveryTime) {
  const Element sequences = tree(true);
  const std::string first = streamed(*sequences, true);
  EXPECT_EQ(streamed(*sequences, true), first);
}

TEST(ElementSequence, MakesNoMoreElementsOnceTheStreamHasFailed) {
  int made = 0;
  Element root(XMLElement::Create("Root"));
  root->AddElement(ElementSequence::Create([&](const ElementSequence::Sink& sink) {
    while (made < 1000) {
      ++made;
      if (!sink(*leaf(made))) return;
    }
  }));
  FailingBuffer buffer(100);
  std::ostream out(&buffer);
  KorAssocXML::WriteTree(out, nullptr, root.get(), true);
  EXPECT_FALSE(out.good());
  EXPECT_EQ(buffer.text().size(), 100U);
  EXPECT_GT(made, 1);
  EXPECT_LT(made, 20);
}

}  // namespace
}  // namespace korassoc::detail
