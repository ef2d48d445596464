// The head of a document with a document type: the XML declaration and the DOCTYPE line.

#pragma once

#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/xml/XMLInterface.h"

namespace KorAssocXML {

class KORASSOC_EXPORT XMLDocType : public XMLInterface {
 public:
  // A new document type: the root element's name and the DTD's file name, both written as they stand. The
  // value is stored in 32 bits and does not appear in the text. The caller owns the result.
  static XMLDocType* Create(const std::string& name, const std::string& systemId, long value);

  // Adds a line to the internal subset, which stands between [ and ]. Returns the length of all its lines,
  // each with its line feed, in bytes.
  int AddExtension(const std::string& text);

  int GetValue() const { return value_; }

  // The declaration, a line feed, the DOCTYPE and a line feed. The format is not used.
  int ToString(std::string& out, ExportFormat& format) const override;
  int ToStream(std::ostream& out, ExportFormat& format, bool utf8) const override;

 protected:
  XMLDocType(std::string name, std::string systemId, long value);

 private:
  std::string name_;
  std::string systemId_;
  std::string extensions_;  // each line with its line feed in front
  int value_;
};

}  // namespace KorAssocXML
