// Reads XML documents as strictly as the standard asks: a second opinion on what the library writes.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// What a document consists of, in its order.
struct XmlPart {
  enum class Kind { kStart, kAttribute, kText, kEnd };
  Kind kind;
  std::string name;   // of an element or attribute
  std::string value;  // of an attribute or text, entities resolved, line ends as they stand
  bool operator==(const XmlPart&) const = default;
};

struct XmlDocument {
  std::string error;           // why it is not well-formed, and where; empty: it is
  std::vector<XmlPart> parts;  // of the root element; text between two tags is one part
};

// Knows what the library has reason to write: one declaration, a document type with declarations in it,
// elements, attributes, text, entities and character references. Comments, instructions and CDATA count as
// errors. (XML 1.0, fifth edition)
XmlDocument readXml(std::string_view document);

// Whether a document may hold this text at all: UTF-8 without the characters that XML forbids.
bool isXmlText(std::string_view text);

}  // namespace fuzz
