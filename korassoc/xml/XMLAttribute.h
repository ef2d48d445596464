// An attribute of an element: name="value".

#pragma once

#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/xml/XMLInterface.h"

namespace KorAssocXML {

class KORASSOC_EXPORT XMLAttribute : public XMLInterface {
 public:
  XMLAttribute(std::string name, std::string value);

  // A new attribute that holds the value as it stands. The caller owns it.
  static XMLAttribute* Create(const std::string& name, const std::string& value);
  // A new attribute that holds the number with 15 significant digits, in the classic locale.
  static XMLAttribute* Create(const std::string& name, double value);

  // The name as it stands, =, and in double quotes the value with these replaced: & < > and the double quote
  // by their entities; tab, line feed and carriage return by &#9; &#10; &#13;; the second space of each pair
  // (counted from the left), a space in front and a space at the end by &#32;. The format is not used.
  int ToString(std::string& out, ExportFormat& format) const override;
  int ToStream(std::ostream& out, ExportFormat& format, bool utf8) const override;

 private:
  std::string name_;
  std::string value_;
};

}  // namespace KorAssocXML
