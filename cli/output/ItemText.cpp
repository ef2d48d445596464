#include "cli/output/ItemText.h"

#include "cli/Printable.h"

namespace korassoc::cli {

std::string labelText(std::string_view label) {
  const bool plain = !label.empty() && label.find_first_of(",\"{}") == std::string_view::npos &&
                     label.front() != ' ' && label.back() != ' ';
  if (plain) return printable(label);
  std::string quoted = "\"";
  for (const char c : label) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return printable(quoted += '"');
}

std::string setText(std::span<const int> items, const ItemNames& names) {
  std::string text = "{";
  for (const int item : items) {
    if (text.size() > 1) text += ", ";
    text += labelText(names.name(item));
  }
  return text += "}";
}

}  // namespace korassoc::cli
