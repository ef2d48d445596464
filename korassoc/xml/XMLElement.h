// An element: a name, attributes and children. The inner nodes of a document.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/xml/XMLInterface.h"

namespace KorAssocXML {

class XMLAttribute;
class XMLString;

// Attributes and children are written in the order in which they were added.
// Ownership: owns its attributes and children; an element must not be added twice or to its own descendants.
// Depth: trees of any depth are written and destroyed without recursion.
class KORASSOC_EXPORT XMLElement : public XMLInterface {
 public:
  // A new element without attributes and children. The name is written as it stands. The caller owns it.
  static XMLElement* Create(const std::string& name);
  ~XMLElement() override;

  // With formatting on: a line feed, level tabs and the start tag; each attribute on a line of its own, one
  // tab deeper; the children, one level deeper; a line feed, level tabs and the end tag. Without children the
  // start tag ends in "/>". Without formatting the same in one line, a blank in front of each attribute.
  // A text node leaves the paragraph and indentation flags off for all that follows.
  int ToString(std::string& out, ExportFormat& format) const override;
  // The same text in pieces of a few kilobytes. But every element, at its end, switches the paragraph and
  // indentation flags on, so a text node acts until the end of the element that holds it.
  int ToStream(std::ostream& out, ExportFormat& format, bool utf8) const override;

  // Takes ownership of the child, which must not be null. Returns the new number of children.
  virtual int AddElement(XMLElement* child);
  virtual int AddElement(XMLString* child);

  // Takes ownership of the attribute, which must not be null. All three return the new number of attributes.
  int AddAttribute(XMLAttribute* attribute);
  int AddAttribute(const std::string& name, const std::string& value);
  int AddAttribute(const std::string& name, double value);  // as XMLAttribute::Create formats numbers

 protected:
  explicit XMLElement(std::string name);

 private:
  static const XMLElement* asPlainElement(const XMLInterface& node);
  static void destroyTree(std::unique_ptr<XMLInterface> node) noexcept;
  int addChild(std::unique_ptr<XMLInterface> child);
  template <class Sink>
  void emit(Sink& sink, ExportFormat& format) const;
  void appendStartTag(std::string& out, ExportFormat& format) const;

  std::vector<std::unique_ptr<XMLAttribute>> attributes_;
  std::string name_;
  std::vector<std::unique_ptr<XMLInterface>> children_;
};

}  // namespace KorAssocXML
