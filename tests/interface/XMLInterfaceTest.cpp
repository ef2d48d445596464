// The names and signatures of the XML layer that hosts compile against.

#include <fstream>
#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>

#include "korassoc/korassoc.h"
#include "tests/interface/InterfaceTest.h"

namespace {

using namespace KorAssocXML;
using Text = const std::string&;

TEST(Interface, HasTheWriterOfTheStateFormat) {
  static_assert(std::is_constructible_v<XMLObj, std::string, int>);
  has<int (XMLObj::*)(std::ostream&) const>(&XMLObj::StartObj);
  has<int (XMLObj::*)(std::ostream&) const>(&XMLObj::EndObj);
  has<int (XMLObj::*)(std::ostream&, int) const>(&XMLObj::WriteSubElement);
  has<int (XMLObj::*)(std::ostream&, unsigned int) const>(&XMLObj::WriteSubElement);
  has<int (XMLObj::*)(std::ostream&, bool) const>(&XMLObj::WriteSubElement);
  has<int (XMLObj::*)(std::ostream&, long) const>(&XMLObj::WriteSubElement);
  has<int (XMLObj::*)(std::ostream&, double) const>(&XMLObj::WriteSubElement);
  has<int (XMLObj::*)(std::ostream&, Text) const>(&XMLObj::WriteSubElement);
  has<int (*)(std::ostream&, Text)>(&StartRoot);
  has<int (*)(std::ostream&, Text)>(&WriteHeader);
  has<int (*)(std::ostream&)>(&EndRoot);
  has<int (*)(std::ostream&)>(&EndHeader);
}

TEST(Interface, HasTheReaderOfTheStateFormat) {
  has<bool (*)(std::ifstream&)>(&ParseStartXML);
  has<bool (*)(std::ifstream&, Text)>(&ParseStartObj);
  has<bool (*)(std::ifstream&, int&)>(&ParseValue);
  has<bool (*)(std::ifstream&, unsigned int&)>(&ParseValue);
  has<bool (*)(std::ifstream&, long&)>(&ParseValue);
  has<bool (*)(std::ifstream&, double&)>(&ParseValue);
  has<bool (*)(std::ifstream&, std::string&)>(&ParseValue);
  has<bool (*)(std::ifstream&, bool&)>(&ParseValue);
  has<bool (*)(std::ifstream&)>(&ParseEndObj);
}

TEST(Interface, HasTheNumberFormats) {
  has<std::string (*)(double, bool, const char*)>(&Format);
  has<std::string (*)(long)>(&Format);
  has<std::string (*)(double, const char*)>(&ReplaceSep);
  has<std::string (*)()>(&GetDecimalCharacter);
  has<std::string (*)()>(&GetListSeparator);
  has<std::string (*)()>(&GetDefaultNumericFormat);
}

TEST(Interface, HasTheElementTree) {
  has<XMLElement* (*)(Text)>(&XMLElement::Create);
  has<int (XMLElement::*)(XMLElement*)>(&XMLElement::AddElement);
  has<int (XMLElement::*)(XMLString*)>(&XMLElement::AddElement);
  has<int (XMLElement::*)(XMLAttribute*)>(&XMLElement::AddAttribute);
  has<int (XMLElement::*)(Text, Text)>(&XMLElement::AddAttribute);
  has<int (XMLElement::*)(Text, double)>(&XMLElement::AddAttribute);
  has<XMLAttribute* (*)(Text, Text)>(&XMLAttribute::Create);
  has<XMLAttribute* (*)(Text, double)>(&XMLAttribute::Create);
  has<XMLDocType* (*)(Text, Text, long)>(&XMLDocType::Create);
  has<int (XMLDocType::*)(Text)>(&XMLDocType::AddExtension);
  has<XMLString* (*)(Text)>(&XMLString::Create);
  has<int (XMLInterface::*)(std::string&, ExportFormat&) const>(&XMLInterface::ToString);
  has<int (XMLInterface::*)(std::ostream&, ExportFormat&, bool) const>(&XMLInterface::ToStream);
  has<int (*)(std::ostream&, Text)>(&Write);
  has<int (*)(std::ostream&, Text)>(&WriteUTF);
  has<int (*)(std::ostream&, const XMLDocType*, const XMLElement*, bool)>(&WriteTree);
  has<int (*)(std::ostream&, const XMLDocType*, const XMLElement*, bool)>(&WriteTreeUTF8);
}

}  // namespace
