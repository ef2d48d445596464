#include "korassoc/xml/XMLObj.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "korassoc/itemsets/KorMV.h"
#include "korassoc/xml/NumberFormat.h"
#include "korassoc/xml/XMLText.h"

namespace KorAssocXML {
namespace {

using korassoc::detail::NumberText;

// A line feed and the tabs, with room for `more` characters behind them.
std::string startLine(long long tabs, std::size_t more) {
  const auto count = static_cast<std::size_t>(tabs < 0 ? 0 : tabs);
  std::string line;
  line.reserve(1 + count + more);
  line += '\n';
  line.append(count, '\t');
  return line;
}

// The line of a value that sits in an object with so many tabs.
int putValue(std::ostream& out, int objectTabs, std::string_view element, std::string_view value) {
  constexpr std::size_t kMarkup = sizeof("< value=\"\"/>");
  std::string line = startLine(objectTabs + 1LL, element.size() + value.size() + kMarkup);
  line += '<';
  line += element;
  line += ' ';
  korassoc::detail::appendAttribute(line, "value", value);
  line += "/>";
  korassoc::detail::putText(out, line);
  return 0;
}

}  // namespace

XMLObj::XMLObj(std::string name, int tabs) : name_(std::move(name)), tabs_(tabs) {}

int XMLObj::StartObj(std::ostream& out) const {
  constexpr std::size_t kMarkup = sizeof("<Obj name=\"\">");
  std::string line = startLine(tabs_, name_.size() + kMarkup);
  line += "<Obj name=\"";
  line += name_;
  line += "\">";
  korassoc::detail::putText(out, line);
  return 0;
}

int XMLObj::WriteSubElement(std::ostream& out, int value) const {
  return putValue(out, tabs_, "Int", NumberText(static_cast<long long>(value)).view());
}

int XMLObj::WriteSubElement(std::ostream& out, unsigned int value) const {
  return putValue(out, tabs_, "Int", NumberText(static_cast<long long>(value)).view());
}

int XMLObj::WriteSubElement(std::ostream& out, bool value) const {
  return putValue(out, tabs_, "Int", value ? "1" : "0");
}

int XMLObj::WriteSubElement(std::ostream& out, long value) const {
  return putValue(out, tabs_, "Long", NumberText(static_cast<long long>(value)).view());
}

int XMLObj::WriteSubElement(std::ostream& out, double value) const {
  if (KorMV::IsMissing(value)) return putValue(out, tabs_, "Double", "Missing");
  return putValue(out, tabs_, "Double", NumberText(value).view());
}

int XMLObj::WriteSubElement(std::ostream& out, const std::string& value) const {
  return putValue(out, tabs_, "String", value);
}

int XMLObj::EndObj(std::ostream& out) const {
  std::string line = startLine(tabs_, sizeof("</Obj>"));
  line += "</Obj>";
  korassoc::detail::putText(out, line);
  return 0;
}

}  // namespace KorAssocXML
