#include "korassoc/xml/XMLText.h"

#include <cstddef>
#include <ostream>

#include "korassoc/xml/XMLTree.h"

namespace korassoc::detail {
namespace {

// What stands for a character in an attribute's value; empty for a character that stands for itself. Spaces
// depend on their neighbours and are not asked about here.
std::string_view attributeEntity(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

constexpr std::string_view kSpaceEntity = "&#32;";

void appendEscapedValue(std::string& out, std::string_view value) {
  std::size_t i = 0;
  while (i < value.size()) {
    if (value[i] != ' ') {
      const std::string_view entity = attributeEntity(value[i]);
      if (entity.empty()) {
        out += value[i];
      } else {
        out += entity;
      }
      ++i;
      continue;
    }
    const bool pair = i + 1 < value.size() && value[i + 1] == ' ';
    const bool atAnEnd = i == 0 || (!pair && i + 1 == value.size());
    out += atAnEnd ? kSpaceEntity : std::string_view(" ");
    if (pair) out += kSpaceEntity;
    i += pair ? 2 : 1;
  }
}

}  // namespace

void appendAttribute(std::string& out, std::string_view name, std::string_view value) {
  out += name;
  out += "=\"";
  appendEscapedValue(out, value);
  out += '"';
}

void appendText(std::string& out, std::string_view text) {
  for (const char c : text) {
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else {
      out += c;
    }
  }
}

void putText(std::ostream& out, std::string_view text) {
  if (!text.empty()) out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

int writeWholeNode(const KorAssocXML::XMLInterface& node, std::ostream& out,
                   KorAssocXML::ExportFormat& format, bool utf8) {
  std::string text;
  node.ToString(text, format);
  return utf8 ? KorAssocXML::WriteUTF(out, text) : KorAssocXML::Write(out, text);
}

}  // namespace korassoc::detail
