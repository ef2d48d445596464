// The frame of an XML state file: its root element.

#pragma once

#include <iosfwd>
#include <string>

#include "korassoc/base/Export.h"

namespace KorAssocXML {

// A state file is, line by line, the XML declaration and the DOCTYPE (an XMLDocType with "KorXMLRoot" and
// "savexml.dtd"), then StartRoot, the objects (XMLObj), EndRoot. It does not end with a line feed.
// All four return 0; a stream that has failed drops what it is given.

// <KorXMLRoot copyright="...">, the text escaped as in XMLAttribute; no line feed before or after.
KORASSOC_EXPORT int StartRoot(std::ostream& out, const std::string& copyright);
KORASSOC_EXPORT int WriteHeader(std::ostream& out, const std::string& copyright);  // the same

// A line feed and </KorXMLRoot>.
KORASSOC_EXPORT int EndRoot(std::ostream& out);
KORASSOC_EXPORT int EndHeader(std::ostream& out);  // the same

}  // namespace KorAssocXML
