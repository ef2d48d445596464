// Whole documents.

#include "korassoc/xml/XMLTree.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "korassoc/xml/XMLString.h"
#include "tests/support/FailingBuffer.h"

namespace KorAssocXML {
namespace {

// A small lattice document with every kind of node.
std::unique_ptr<XMLElement> lattice() {
  std::unique_ptr<XMLElement> root(XMLElement::Create("AssocLattice"));
  root->AddAttribute("version", "1.0");
  std::unique_ptr<XMLElement> header(XMLElement::Create("Header"));
  header->AddAttribute("copyright", "A & B");
  header->AddElement(XMLString::Create("all <sets>"));
  root->AddElement(header.release());
  std::unique_ptr<XMLElement> model(XMLElement::Create("Model"));
  model->AddElement(XMLElement::Create("Stats"));
  std::unique_ptr<XMLElement> item(XMLElement::Create("Item"));
  item->AddAttribute("id", 1);
  item->AddAttribute("support", 1.0 / 3.0);
  model->AddElement(item.release());
  root->AddElement(model.release());
  return root;
}

constexpr const char* kFormatted =
    "\n<AssocLattice"
    "\n\tversion=\"1.0\">"
    "\n\t<Header"
    "\n\t\tcopyright=\"A &amp; B\">all &lt;sets></Header>"
    "\n\t<Model>"
    "\n\t\t<Stats/>"
    "\n\t\t<Item"
    "\n\t\t\tid=\"1\""
    "\n\t\t\tsupport=\"0.333333333333333\"/>"
    "\n\t</Model>"
    "\n</AssocLattice>";

constexpr const char* kUnformatted =
    "<AssocLattice version=\"1.0\"><Header copyright=\"A &amp; B\">all &lt;sets></Header>"
    "<Model><Stats/><Item id=\"1\" support=\"0.333333333333333\"/></Model></AssocLattice>";

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";
constexpr const char* kDocType = "<!DOCTYPE AssocLattice SYSTEM \"associationmodellattice.dtd\">\n";

std::unique_ptr<XMLDocType> docType() {
  return std::unique_ptr<XMLDocType>(XMLDocType::Create("AssocLattice", "associationmodellattice.dtd", 0));
}

TEST(WriteTree, OpensWithTheDeclarationWhenThereIsNoDocumentType) {
  std::ostringstream out;
  EXPECT_EQ(WriteTree(out, nullptr, lattice().get(), true), 0);
  EXPECT_EQ(out.str(), std::string(kDeclaration) + kFormatted);
}

TEST(WriteTree, WritesTheDocumentTypeInItsPlace) {
  std::ostringstream out;
  EXPECT_EQ(WriteTree(out, docType().get(), lattice().get(), true), 0);
  EXPECT_EQ(out.str(), std::string(kDeclaration) + kDocType + kFormatted);
}

TEST(WriteTree, WritesTheTreeInOneLineWithoutFormatting) {
  std::ostringstream out;
  EXPECT_EQ(WriteTree(out, docType().get(), lattice().get(), false), 0);
  EXPECT_EQ(out.str(), std::string(kDeclaration) + kDocType + kUnformatted);
}

TEST(WriteTreeUTF8, WritesTheSameDocument) {
  std::ostringstream plain;
  EXPECT_EQ(WriteTreeUTF8(plain, nullptr, lattice().get(), true), 0);
  EXPECT_EQ(plain.str(), std::string(kDeclaration) + kFormatted);
  std::ostringstream typed;
  EXPECT_EQ(WriteTreeUTF8(typed, docType().get(), lattice().get(), false), 0);
  EXPECT_EQ(typed.str(), std::string(kDeclaration) + kDocType + kUnformatted);
}

TEST(WriteTree, DropsEverythingFromTheByteAtWhichTheStreamFails) {
  const std::string text = std::string(kDeclaration) + kDocType + kFormatted;
  for (std::size_t bytes = 0; bytes < text.size(); ++bytes) {
    FailingBuffer disk(bytes);
    std::ostream out(&disk);
    EXPECT_EQ(WriteTree(out, docType().get(), lattice().get(), true), 0);
    EXPECT_EQ(disk.text(), text.substr(0, bytes));
    EXPECT_TRUE(out.bad()) << bytes;
  }
}

TEST(Write, PutsTheCharactersAsTheyStand) {
  const std::string text("a\0<&\xE9\n", 6);
  std::ostringstream out;
  EXPECT_EQ(Write(out, text), 0);
  EXPECT_EQ(Write(out, ""), 0);
  EXPECT_EQ(out.str(), text);
}

#if !defined(_WIN32)
TEST(WriteUTF, PutsACharacterOutsideAsciiAsItsUtf8Sequence) {
  std::ostringstream out;
  EXPECT_EQ(WriteUTF(out, "caf\xC3\xA9 \xE2\x82\xAC"), 0);
  EXPECT_EQ(out.str(), "caf\xC3\xA9 \xE2\x82\xAC");
}

TEST(WriteUTF, KeepsBytesThatAreNoUtf8) {
  std::ostringstream out;
  WriteUTF(out, "\xE9t\xE9");
  EXPECT_EQ(out.str(), "\xE9t\xE9");
}
#endif

}  // namespace
}  // namespace KorAssocXML
