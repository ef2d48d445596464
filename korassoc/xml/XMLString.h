// A text node: the characters between an element's tags.

#pragma once

#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/xml/XMLInterface.h"

namespace KorAssocXML {

class KORASSOC_EXPORT XMLString : public XMLInterface {
 public:
  // A new text node. The caller owns it.
  static XMLString* Create(const std::string& text);

  // The text with & and < replaced by their entities, nothing else. Switches the paragraph and indentation
  // flags of the format off, so that the closing tag follows the text directly.
  // XML forbids "]]>" in a text, and control characters other than tab, line feed and carriage return. Both
  // are written as they stand, and the document is not well-formed then: who may have such a text changes it
  // before. The library's own documents hold no text nodes.
  int ToString(std::string& out, ExportFormat& format) const override;
  int ToStream(std::ostream& out, ExportFormat& format, bool utf8) const override;

 protected:
  explicit XMLString(std::string text);

 private:
  std::string text_;
};

}  // namespace KorAssocXML
