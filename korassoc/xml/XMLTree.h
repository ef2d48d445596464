// Writing documents: the tree functions and the two ways by which text reaches a stream.

#pragma once

#include <iosfwd>
#include <string>

#include "korassoc/base/Export.h"
#include "korassoc/xml/XMLDocType.h"
#include "korassoc/xml/XMLElement.h"

namespace KorAssocXML {

// All return 0. A stream that has failed drops what it is given; the caller looks at its state.

// Puts the characters as they stand.
KORASSOC_EXPORT int Write(std::ostream& out, const std::string& text);

// Puts the text as UTF-8. On Windows it is taken to be in the ANSI code page; elsewhere strings are UTF-8
// already and go out byte for byte, so bytes that are no valid UTF-8 stay as they are.
KORASSOC_EXPORT int WriteUTF(std::ostream& out, const std::string& text);

// Writes a whole document: the document type, or without one (null) the XML declaration and a line feed; then
// the tree, whose root must not be null. With format set, nodes stand on lines of their own and are indented.
KORASSOC_EXPORT int WriteTree(std::ostream& out, const XMLDocType* docType, const XMLElement* root,
                              bool format);

// The same through WriteUTF.
KORASSOC_EXPORT int WriteTreeUTF8(std::ostream& out, const XMLDocType* docType, const XMLElement* root,
                                  bool format);

}  // namespace KorAssocXML
