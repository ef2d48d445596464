#include "korassoc/xml/export/ElementSequence.h"

#include <ostream>
#include <utility>

using KorAssocXML::ExportFormat;
using KorAssocXML::XMLElement;

namespace korassoc::detail {

ElementSequence::ElementSequence(Producer produce) : XMLElement(""), produce_(std::move(produce)) {}

ElementSequence* ElementSequence::Create(Producer produce) { return new ElementSequence(std::move(produce)); }

int ElementSequence::ToString(std::string& out, ExportFormat& format) const {
  produce_([&](const XMLElement& element) {
    element.ToString(out, format);
    return true;
  });
  return 0;
}

int ElementSequence::ToStream(std::ostream& out, ExportFormat& format, bool utf8) const {
  produce_([&](const XMLElement& element) {
    element.ToStream(out, format, utf8);
    return out.good();
  });
  return 0;
}

}  // namespace korassoc::detail
