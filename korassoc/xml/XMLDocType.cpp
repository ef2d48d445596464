#include "korassoc/xml/XMLDocType.h"

#include <utility>

#include "korassoc/xml/XMLText.h"

namespace KorAssocXML {

XMLDocType::XMLDocType(std::string name, std::string systemId, long value)
    : name_(std::move(name)), systemId_(std::move(systemId)), value_(static_cast<int>(value)) {}

XMLDocType* XMLDocType::Create(const std::string& name, const std::string& systemId, long value) {
  return new XMLDocType(name, systemId, value);
}

int XMLDocType::AddExtension(const std::string& text) {
  extensions_ += '\n';
  extensions_ += text;
  return static_cast<int>(extensions_.size());
}

int XMLDocType::ToString(std::string& out, ExportFormat&) const {
  out += korassoc::detail::kXmlDeclaration;
  out += "\n<!DOCTYPE ";
  out += name_;
  out += " SYSTEM \"";
  out += systemId_;
  out += '"';
  if (!extensions_.empty()) {
    out += "\n[";
    out += extensions_;
    out += "\n]";
  }
  out += ">\n";
  return 0;
}

int XMLDocType::ToStream(std::ostream& out, ExportFormat& format, bool utf8) const {
  return korassoc::detail::writeWholeNode(*this, out, format, utf8);
}

}  // namespace KorAssocXML
