#include "korassoc/xml/XMLString.h"

#include <utility>

#include "korassoc/xml/XMLText.h"

namespace KorAssocXML {

XMLString::XMLString(std::string text) : text_(std::move(text)) {}

XMLString* XMLString::Create(const std::string& text) { return new XMLString(text); }

int XMLString::ToString(std::string& out, ExportFormat& format) const {
  korassoc::detail::appendText(out, text_);
  format.SetIsNewParagraph(false);
  format.SetIndentation(false);
  return 0;
}

int XMLString::ToStream(std::ostream& out, ExportFormat& format, bool utf8) const {
  return korassoc::detail::writeWholeNode(*this, out, format, utf8);
}

}  // namespace KorAssocXML
