#include "korassoc/xml/XMLAttribute.h"

#include <utility>

#include "korassoc/xml/NumberFormat.h"
#include "korassoc/xml/XMLText.h"

namespace KorAssocXML {

XMLAttribute::XMLAttribute(std::string name, std::string value)
    : name_(std::move(name)), value_(std::move(value)) {}

XMLAttribute* XMLAttribute::Create(const std::string& name, const std::string& value) {
  return new XMLAttribute(name, value);
}

XMLAttribute* XMLAttribute::Create(const std::string& name, double value) {
  return new XMLAttribute(name, Format(value, false, nullptr));
}

int XMLAttribute::ToString(std::string& out, ExportFormat&) const {
  korassoc::detail::appendAttribute(out, name_, value_);
  return 0;
}

int XMLAttribute::ToStream(std::ostream& out, ExportFormat& format, bool utf8) const {
  return korassoc::detail::writeWholeNode(*this, out, format, utf8);
}

}  // namespace KorAssocXML
