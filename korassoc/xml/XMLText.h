// The texts that the record writer and the element tree share: escaping, and the way to the stream.

#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "korassoc/xml/XMLInterface.h"

namespace korassoc::detail {

// The first line of every document, without its line feed.
inline constexpr std::string_view kXmlDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>";

// Appends name="value", the value escaped as XMLAttribute::ToString says.
void appendAttribute(std::string& out, std::string_view name, std::string_view value);

// Appends text between tags: & and < become their entities.
void appendText(std::string& out, std::string_view text);

// Puts the characters to the stream in one piece; a stream that fails on the way keeps those before.
void putText(std::ostream& out, std::string_view text);

// The ToStream of a node whose text is small: its ToString, then Write or WriteUTF. Returns 0.
int writeWholeNode(const KorAssocXML::XMLInterface& node, std::ostream& out,
                   KorAssocXML::ExportFormat& format, bool utf8);

}  // namespace korassoc::detail
