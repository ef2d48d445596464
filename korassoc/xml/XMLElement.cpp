#include "korassoc/xml/XMLElement.h"

#include <cstddef>
#include <typeinfo>
#include <utility>

#include "korassoc/xml/XMLAttribute.h"
#include "korassoc/xml/XMLString.h"
#include "korassoc/xml/XMLTree.h"

namespace KorAssocXML {
namespace {

constexpr std::size_t kPieceBytes = 4096;

void appendTabs(std::string& out, int count) {
  if (count > 0) out.append(static_cast<std::size_t>(count), '\t');
}

// Where emit() puts the text: one string to its end...
class StringSink {
 public:
  StringSink(std::string& out, ExportFormat& format) : out_(out), format_(format) {}
  std::string& text() { return out_; }
  void node(const XMLInterface& child) { child.ToString(out_, format_); }
  void elementEnds() {}

 private:
  std::string& out_;
  ExportFormat& format_;
};

// ...or a stream, through one piece after the other.
class StreamSink {
 public:
  StreamSink(std::ostream& out, ExportFormat& format, bool utf8) : out_(out), format_(format), utf8_(utf8) {}
  std::string& text() { return piece_; }
  void node(const XMLInterface& child) {
    hand();
    child.ToStream(out_, format_, utf8_);
  }
  void elementEnds() {
    format_.SetIsNewParagraph(true);
    format_.SetIndentation(true);
    if (piece_.size() >= kPieceBytes) hand();
  }
  void hand() {
    utf8_ ? WriteUTF(out_, piece_) : Write(out_, piece_);
    piece_.clear();
  }

 private:
  std::ostream& out_;
  ExportFormat& format_;
  bool utf8_;
  std::string piece_;
};

}  // namespace

XMLElement::XMLElement(std::string name) : name_(std::move(name)) {}

XMLElement* XMLElement::Create(const std::string& name) { return new XMLElement(name); }

XMLElement::~XMLElement() {
  while (!children_.empty()) {
    std::unique_ptr<XMLInterface> child = std::move(children_.back());
    children_.pop_back();
    destroyTree(std::move(child));
  }
}

int XMLElement::ToString(std::string& out, ExportFormat& format) const {
  StringSink sink(out, format);
  emit(sink, format);
  return 0;
}

int XMLElement::ToStream(std::ostream& out, ExportFormat& format, bool utf8) const {
  StreamSink sink(out, format, utf8);
  emit(sink, format);
  sink.hand();
  return 0;
}

int XMLElement::AddElement(XMLElement* child) { return addChild(std::unique_ptr<XMLInterface>(child)); }

int XMLElement::AddElement(XMLString* child) { return addChild(std::unique_ptr<XMLInterface>(child)); }

int XMLElement::AddAttribute(XMLAttribute* attribute) {
  std::unique_ptr<XMLAttribute> owned(attribute);
  attributes_.push_back(std::move(owned));
  return static_cast<int>(attributes_.size());
}

int XMLElement::AddAttribute(const std::string& name, const std::string& value) {
  return AddAttribute(XMLAttribute::Create(name, value));
}

int XMLElement::AddAttribute(const std::string& name, double value) {
  return AddAttribute(XMLAttribute::Create(name, value));
}

// The node as an element of this very class, whose children can be visited here, or null. Other nodes, and
// elements of a class derived from this one, are left to their own operations.
const XMLElement* XMLElement::asPlainElement(const XMLInterface& node) {
  return typeid(node) == typeid(XMLElement) ? static_cast<const XMLElement*>(&node) : nullptr;
}

// Destroys a tree without recursion and without memory of its own: on the way down, the slot in which an
// element held its child holds the way back up.
void XMLElement::destroyTree(std::unique_ptr<XMLInterface> node) noexcept {
  std::unique_ptr<XMLInterface> parent;
  for (;;) {
    XMLElement* element = node ? const_cast<XMLElement*>(asPlainElement(*node)) : nullptr;
    if (element != nullptr && !element->children_.empty()) {
      std::unique_ptr<XMLInterface> child = std::move(element->children_.back());
      element->children_.back() = std::move(parent);
      parent = std::move(node);
      node = std::move(child);
      continue;
    }
    node = std::move(parent);  // deletes the leaf
    if (!node) return;
    element = static_cast<XMLElement*>(node.get());
    parent = std::move(element->children_.back());
    element->children_.pop_back();
  }
}

int XMLElement::addChild(std::unique_ptr<XMLInterface> child) {
  children_.push_back(std::move(child));
  return static_cast<int>(children_.size());
}

void XMLElement::appendStartTag(std::string& out, ExportFormat& format) const {
  if (format.IsNewParagraph()) out += '\n';
  if (format.HasIndentation()) appendTabs(out, format.level);
  out += '<';
  out += name_;
  if (attributes_.empty()) return;
  ++format.level;
  for (const auto& attribute : attributes_) {
    out += format.IsNewParagraph() ? '\n' : ' ';
    if (format.HasIndentation()) appendTabs(out, format.level);
    attribute->ToString(out, format);
  }
  --format.level;
}

// Writes the tree below and including this element, with a stack of the elements whose end tag is still due.
template <class Sink>
void XMLElement::emit(Sink& sink, ExportFormat& format) const {
  struct Open {
    const XMLElement* element;
    int level;  // where the element started, and where its end tag stands
    std::size_t nextChild;
  };
  std::vector<Open> open;
  const XMLElement* entering = this;
  for (;;) {
    if (entering != nullptr) {
      entering->appendStartTag(sink.text(), format);
      if (entering->children_.empty()) {
        sink.text() += "/>";
        sink.elementEnds();
      } else {
        sink.text() += '>';
        open.push_back({entering, format.level, 0});
        ++format.level;
      }
      entering = nullptr;
    }
    if (open.empty()) return;
    Open& current = open.back();
    if (current.nextChild < current.element->children_.size()) {
      const XMLInterface& child = *current.element->children_[current.nextChild];
      ++current.nextChild;
      entering = asPlainElement(child);
      if (entering == nullptr) sink.node(child);
      continue;
    }
    --format.level;
    if (format.IsNewParagraph()) sink.text() += '\n';
    if (format.HasIndentation()) appendTabs(sink.text(), current.level);
    sink.text() += "</";
    sink.text() += current.element->name_;
    sink.text() += '>';
    sink.elementEnds();
    open.pop_back();
  }
}

}  // namespace KorAssocXML
