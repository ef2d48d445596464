// What every node of an element tree can do: give its text.

#pragma once

#include <iosfwd>
#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/xml/ExportFormat.h"

namespace KorAssocXML {

// A node is made on the heap by its class's Create and belongs to the caller until it is handed to an
// element, which deletes it. Nodes are not copied. Errors: none of their own; a stream that has failed drops
// what it is given, and its state is the caller's to
//   look at.
class KORASSOC_EXPORT XMLInterface {
 public:
  virtual ~XMLInterface();

  // Appends the node's text to out. Returns 0.
  virtual int ToString(std::string& out, ExportFormat& format) const = 0;
  // Writes the node's text to out, converted to UTF-8 when utf8 is set. Returns 0.
  virtual int ToStream(std::ostream& out, ExportFormat& format, bool utf8) const = 0;

 protected:
  XMLInterface() = default;
  XMLInterface(const XMLInterface&) = delete;
  XMLInterface& operator=(const XMLInterface&) = delete;
};

}  // namespace KorAssocXML
