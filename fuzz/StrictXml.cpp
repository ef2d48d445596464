#include "fuzz/StrictXml.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>

namespace fuzz {
namespace {

// Char, section 2.2.
bool isXmlCharacter(std::uint32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c < 0xD800 || (c >= 0xE000 && c < 0xFFFE) || (c >= 0x10000 && c <= 0x10FFFF);
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Beyond ASCII any character passes: which of them are letters is beside the point.
bool isNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool isNameCharacter(char c) { return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; }

// The bytes of the character that begins with this byte; 0: none does.
std::size_t lengthFrom(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

void appendUtf8(std::string& out, std::uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
    return;
  }
  const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr std::uint32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kLead[more] | c >> (6 * more));
  for (int i = more - 1; i >= 0; --i) out += static_cast<char>(0x80U | (c >> (6 * i) & 0x3FU));
}

class Reader {
 public:
  explicit Reader(std::string_view document) : left_(document), length_(document.size()) {}

  XmlDocument read() {
    if (!isXmlText(left_)) fail("a character that XML forbids");
    declaration();
    skipSpace();
    if (left_.starts_with("<!DOCTYPE")) documentType();
    elements();
    skipSpace();
    if (!left_.empty()) fail("something after the root element");
    return std::move(result_);
  }

 private:
  bool isGood() const { return result_.error.empty(); }

  // The first error stays; nothing is left to read then.
  void fail(const char* what) {
    if (!isGood()) return;
    result_.error = std::string(what) + " at byte " + std::to_string(length_ - left_.size());
    left_ = {};
  }

  bool take(std::string_view text) {
    if (!left_.starts_with(text)) return false;
    left_.remove_prefix(text.size());
    return true;
  }
  void expect(std::string_view text, const char* otherwise) {
    if (!take(text)) fail(otherwise);
  }
  char next() const { return left_.empty() ? '\0' : left_.front(); }

  bool skipSpace() {
    const std::size_t before = left_.size();
    while (!left_.empty() && isSpace(left_.front())) left_.remove_prefix(1);
    return left_.size() < before;
  }
  void expectSpace() {
    if (!skipSpace()) fail("no space");
  }

  std::string name() {
    if (!isNameStart(next())) {
      fail("no name");
      return {};
    }
    std::size_t end = 1;
    while (end < left_.size() && isNameCharacter(left_[end])) ++end;
    std::string result(left_.substr(0, end));
    left_.remove_prefix(end);
    return result;
  }

  // Up to the quote that ends it, for texts without entities.
  void plainLiteral() {
    expect("\"", "no quote");
    const std::size_t end = left_.find('"');
    if (end == std::string_view::npos) {
      fail("no closing quote");
    } else {
      left_.remove_prefix(end + 1);
    }
  }

  void declaration() {
    expect("<?xml version=\"1.0\" encoding=\"UTF-8\"", "no declaration");
    skipSpace();
    expect("?>", "an open declaration");
  }

  void documentType() {
    take("<!DOCTYPE");
    expectSpace();
    rootName_ = name();
    expectSpace();
    expect("SYSTEM", "no system identifier");
    expectSpace();
    plainLiteral();
    skipSpace();
    if (take("[")) {
      for (skipSpace(); isGood() && !take("]"); skipSpace()) elementDeclaration();
      skipSpace();
    }
    expect(">", "an open document type");
    skipSpace();
  }

  void elementDeclaration() {
    expect("<!ELEMENT", "no declaration in the document type");
    expectSpace();
    name();
    expectSpace();
    expect("ANY", "an element of unknown content");
    skipSpace();
    expect(">", "an open declaration in the document type");
  }

  // The root element with all that it holds. No recursion: documents may be deep.
  void elements() {
    startTag();
    if (isGood() && !rootName_.empty() && result_.parts.front().name != rootName_)
      fail("another root element");
    while (isGood() && !open_.empty()) {
      if (left_.empty()) {
        fail("an open element");
      } else if (left_.starts_with("</")) {
        endTag();
      } else if (next() == '<') {
        startTag();
      } else {
        text();
      }
    }
  }

  void startTag() {
    expect("<", "no tag");
    const std::string element = name();
    result_.parts.push_back({XmlPart::Kind::kStart, element, {}});
    std::set<std::string> attributes;
    bool spaced = skipSpace();
    while (isGood() && next() != '>' && next() != '/') {
      if (!spaced) fail("no space before an attribute");
      attribute(attributes);
      spaced = skipSpace();
    }
    if (take("/>")) {
      result_.parts.push_back({XmlPart::Kind::kEnd, element, {}});
      return;
    }
    expect(">", "an open tag");
    open_.push_back(element);
  }

  void attribute(std::set<std::string>& attributes) {
    const std::string attribute = name();
    if (!attributes.insert(attribute).second) fail("an attribute twice");
    expect("=", "an attribute without a value");
    expect("\"", "a value without quotes");
    std::string value;
    while (isGood() && !take("\"")) {
      if (left_.empty() || next() == '<') fail("a value without end");
      // A reader makes these a space each (section 3.3.3), so no value that means them may hold them.
      if (next() == '\t' || next() == '\n' || next() == '\r') fail("a bare line end or tab in a value");
      character(value);
    }
    result_.parts.push_back({XmlPart::Kind::kAttribute, attribute, value});
  }

  void text() {
    std::string value;
    while (isGood() && !left_.empty() && next() != '<') {
      if (left_.starts_with("]]>")) fail("]]> in text");
      character(value);
    }
    result_.parts.push_back({XmlPart::Kind::kText, {}, value});
  }

  void endTag() {
    take("</");
    const std::string element = name();
    skipSpace();
    expect(">", "an open end tag");
    if (isGood() && element != open_.back()) fail("the end of another element");
    result_.parts.push_back({XmlPart::Kind::kEnd, element, {}});
    open_.pop_back();
  }

  // One byte, or what an entity stands for.
  void character(std::string& out) {
    if (!isGood()) return;
    if (next() != '&') {
      out += next();
      left_.remove_prefix(1);
      return;
    }
    for (const auto& [entity, stands] :
         {std::pair("&amp;", '&'), {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}}) {
      if (!take(entity)) continue;
      out += stands;
      return;
    }
    reference(out);
  }

  void reference(std::string& out) {
    expect("&#", "an unknown entity");
    std::uint32_t code = 0;
    std::size_t digits = 0;
    for (; next() >= '0' && next() <= '9' && digits < 8; ++digits) {
      code = code * 10 + static_cast<std::uint32_t>(next() - '0');
      left_.remove_prefix(1);
    }
    if (digits == 0 || !isXmlCharacter(code)) fail("a reference to a character that XML forbids");
    expect(";", "an open reference");
    if (isGood()) appendUtf8(out, code);
  }

  std::string_view left_;
  std::size_t length_;
  std::string rootName_;
  std::vector<std::string> open_;
  XmlDocument result_;
};

}  // namespace

bool isXmlText(std::string_view text) {
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = lengthFrom(first);
    if (length == 0 || length > text.size()) return false;
    std::uint32_t code = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
      const auto more = static_cast<unsigned char>(text[i]);
      if ((more & 0xC0U) != 0x80U) return false;
      code = code << 6 | (more & 0x3FU);
    }
    if (code < kSmallest[length] || !isXmlCharacter(code)) return false;
    text.remove_prefix(length);
  }
  return true;
}

XmlDocument readXml(std::string_view document) { return Reader(document).read(); }

}  // namespace fuzz
