// Any sequence of calls that builds an element tree gives, in every layout, the document of that tree: read
// back strictly, it has the same elements, attributes and texts. It is well-formed when its texts are such
// that XML can hold them, and only then. Names are good ones, since they are written as they stand. Seeds lie
// in tests/corpus/XmlTreeFuzz; every test run replays them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/Bytes.h"
#include "fuzz/Checks.h"
#include "fuzz/StrictXml.h"
#include "korassoc/xml/ExportFormat.h"
#include "korassoc/xml/XMLAttribute.h"
#include "korassoc/xml/XMLString.h"
#include "korassoc/xml/XMLTree.h"

namespace {

using fuzz::check;
using fuzz::XmlPart;
using namespace KorAssocXML;

const char* const kElementNames[] = {"PMML", "a", "_", "x:y", "b-1.c", "\xC3\xA9"};
const char* const kAttributeNames[] = {"id", "a", "_b", "xml:lang", "name", "value", "n-1", "\xC3\xA9"};

// 15 significant digits.
std::string digits(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.15g", value);
  return text;
}

// Builds a tree, and beside it the parts that its document must have.
class Building {
 public:
  explicit Building(fuzz::Bytes& bytes) : bytes_(bytes) { start(); }

  void run() {
    while (!bytes_.isEmpty()) {
      switch (bytes_.below(6)) {
        case 0:
          start();
          break;
        case 1:
          if (open_.size() > 1) end();
          break;
        case 2:
          text();
          break;
        case 3:
          attribute(false);
          break;
        case 4:
          attribute(true);
          break;
        default:
          start();
          end();
      }
    }
    while (!open_.empty()) end();
  }

  const XMLElement& root() const { return *root_; }
  const std::string& rootName() const { return parts_.front().name; }
  const std::vector<XmlPart>& parts() const { return parts_; }
  // Whether XML can hold the texts and values.
  bool isGood() const {
    return std::all_of(parts_.begin(), parts_.end(), [](const XmlPart& part) {
      const bool broken = part.kind == XmlPart::Kind::kText && part.value.find("]]>") != std::string::npos;
      return !broken && fuzz::isXmlText(part.value);
    });
  }

 private:
  struct Open {
    XMLElement* element;
    std::unique_ptr<XMLElement> detached;  // the same, when it joins its parent at its end
    std::string name;
    std::size_t attributesAt;   // where its next attribute stands among the parts
    std::size_t usedNames = 0;  // attributes so far
    int children = 0;
    bool endsInText = false;
  };

  void start() {
    const std::string name = kElementNames[bytes_.below(6)];
    auto element = std::unique_ptr<XMLElement>(XMLElement::Create(name));
    Open open{element.get(), nullptr, name, 0, 0, 0, false};
    if (open_.empty()) {
      root_ = std::move(element);
    } else if (bytes_.flag()) {
      open.detached = std::move(element);
    } else {
      join(std::move(element));
    }
    if (!open_.empty()) open_.back().endsInText = false;
    parts_.push_back({XmlPart::Kind::kStart, name, {}});
    open.attributesAt = parts_.size();
    open_.push_back(std::move(open));
  }

  // Adds a child to the innermost element.
  void join(std::unique_ptr<XMLElement> element) {
    Open& parent = open_.back();
    check(parent.element->AddElement(element.release()) == ++parent.children, "a wrong number of children");
  }

  void end() {
    Open closed = std::move(open_.back());
    open_.pop_back();
    parts_.push_back({XmlPart::Kind::kEnd, closed.name, {}});
    if (closed.detached) join(std::move(closed.detached));
  }

  void text() {
    const std::string text = bytes_.text();
    Open& parent = open_.back();
    check(parent.element->AddElement(XMLString::Create(text)) == ++parent.children,
          "a wrong number of children");
    if (!parent.endsInText) parts_.push_back({XmlPart::Kind::kText, {}, {}});
    parent.endsInText = true;
    parts_.back().value += text;  // neighbours become one text
  }

  // Each name is used once, in an order of the element's own.
  void attribute(bool number) {
    Open& open = open_.back();
    if (open.usedNames == std::size(kAttributeNames)) return;
    const std::string name = kAttributeNames[open.usedNames++];
    std::string value;
    int count = 0;
    if (number) {
      const double figure = bytes_.anyDouble();
      value = digits(figure);
      count = bytes_.flag() ? open.element->AddAttribute(name, figure)
                            : open.element->AddAttribute(XMLAttribute::Create(name, figure));
    } else {
      value = bytes_.text();
      count = bytes_.flag() ? open.element->AddAttribute(name, value)
                            : open.element->AddAttribute(XMLAttribute::Create(name, value));
    }
    check(count == static_cast<int>(open.usedNames), "a wrong number of attributes");
    insertAttribute({XmlPart::Kind::kAttribute, name, value});
  }

  // An element can get attributes after children of its own, but is written with all of them in its tag.
  // Elements that are still open begin before this place.
  void insertAttribute(XmlPart part) {
    Open& open = open_.back();
    parts_.insert(parts_.begin() + static_cast<std::ptrdiff_t>(open.attributesAt), std::move(part));
    ++open.attributesAt;
  }

  fuzz::Bytes& bytes_;
  std::unique_ptr<XMLElement> root_;
  std::vector<Open> open_;
  std::vector<XmlPart> parts_;
};

// The parts without the white space that the layout adds: no text that is nothing else, no line feeds and
// tabs in the others.
std::vector<XmlPart> withoutLayout(std::vector<XmlPart> parts) {
  for (XmlPart& part : parts) {
    if (part.kind == XmlPart::Kind::kText)
      std::erase_if(part.value, [](char c) { return c == '\n' || c == '\t'; });
  }
  std::erase_if(parts,
                [](const XmlPart& part) { return part.kind == XmlPart::Kind::kText && part.value.empty(); });
  return parts;
}

void checkDocument(const std::string& text, const Building& building, bool formatted) {
  const fuzz::XmlDocument document = fuzz::readXml(text);
  if (!building.isGood()) {
    check(!document.error.empty(), "texts that XML cannot hold were not told from good ones");
    return;
  }
  if (!document.error.empty()) fuzz::fail("not well-formed: " + document.error + "\n" + text);
  std::vector<XmlPart> expected = building.parts();
  std::erase_if(expected,
                [](const XmlPart& part) { return part.kind == XmlPart::Kind::kText && part.value.empty(); });
  if (formatted) {
    check(withoutLayout(document.parts) == withoutLayout(expected), "another tree was read back");
  } else {
    check(document.parts == expected, "another tree was read back");
  }
}

std::unique_ptr<XMLDocType> documentType(fuzz::Bytes& bytes, const std::string& root) {
  const int extensions = bytes.below(4);
  if (extensions == 0) return nullptr;
  std::unique_ptr<XMLDocType> type(XMLDocType::Create(root, "savexml.dtd", 1));
  for (int i = 1; i < extensions; ++i) type->AddExtension("<!ELEMENT e" + std::to_string(i) + " ANY>");
  return type;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Bytes bytes(data, size);
  const int extensionsFirst = bytes.byte();
  Building building(bytes);
  building.run();
  const auto byte = static_cast<std::uint8_t>(extensionsFirst);
  fuzz::Bytes typeBytes(&byte, 1);
  const std::unique_ptr<XMLDocType> type = documentType(typeBytes, building.rootName());

  for (const bool formatted : {false, true}) {
    std::ostringstream plain, utf8;
    WriteTree(plain, type.get(), &building.root(), formatted);
    WriteTreeUTF8(utf8, type.get(), &building.root(), formatted);
    checkDocument(plain.str(), building, formatted);
    checkDocument(utf8.str(), building, formatted);

    ExportFormat layout;
    layout.SetFormat(formatted);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";
    building.root().ToString(text, layout);
    checkDocument(text, building, formatted);
    check(layout.level == 0, "the depth was not lowered again");
  }
  return 0;
}
