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
  int ToString(std::string& out, ExportFormat& format) const override;
  int ToStream(std::ostream& out, ExportFormat& format, bool utf8) const override;

 protected:
  explicit XMLString(std::string text);

 private:
  std::string text_;
};

}  // namespace KorAssocXML
