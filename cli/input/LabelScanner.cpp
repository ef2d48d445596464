#include "cli/input/LabelScanner.h"

#include <fmt/format.h>

#include <cstring>

#include "cli/input/TextPlace.h"

namespace korassoc::cli {

void LabelScanner::scan(BasketBuilder& baskets, LabelTable& labels) {
  BasketBuilder::Lines lines(baskets);
  const char* p = text_.data();
  const char* const end = p + text_.size();
  while (p != end) {
    const void* found = std::memchr(p, '\n', static_cast<std::size_t>(end - p));
    const char* const lineEnd = found == nullptr ? end : static_cast<const char*>(found);
    const bool carriageReturn = lineEnd != p && lineEnd[-1] == '\r';
    scanLine(p, carriageReturn ? lineEnd - 1 : lineEnd, lines, labels);
    lines.endLine();
    p = lineEnd == end ? end : lineEnd + 1;
  }
}

void LabelScanner::scanLine(const char* p, const char* end, BasketBuilder::Lines& lines, LabelTable& labels) {
  const bool byBlanks = separator_ == Separator::kBlanks;
  const char mark = separatorCharacter(separator_);
  const std::size_t itemsBefore = emptyItems_;
  bool anyItem = false;
  for (;;) {
    while (p != end && isBlank(*p)) ++p;
    if (p == end && (byBlanks || !anyItem)) break;
    const bool quoted = p != end && *p == '"';
    const char* const first = p;
    const std::string_view label = quoted ? readQuoted(p, end) : readPlain(p, end);
    if (label.size() > kLongestLabel) {
      fail(first, fmt::format("an item of {} bytes, more than {}; the items are surely not separated by {} "
                              "(say what they are separated by with --separator)",
                              label.size(), kLongestLabel, separatorName(separator_)));
    }
    if (label.empty()) {
      ++emptyItems_;
    } else {
      lines.add(labels.intern(label));
      anyItem = true;
    }
    if (quoted) {
      const char* const behind = p;
      while (p != end && isBlank(*p)) ++p;
      const bool separated = p == end || (byBlanks ? p != behind : *p == mark);
      if (!separated) {
        fail(behind, fmt::format("text follows a closing quote; put a separator ({}) there, or double the "
                                 "quote if it belongs to the item",
                                 separatorName(separator_)));
      }
    }
    if (p == end) break;
    if (!byBlanks) ++p;
  }
  if (!anyItem) emptyItems_ = itemsBefore;  // a line of separators alone is an empty line, nothing more
}

std::string_view LabelScanner::readQuoted(const char*& p, const char* end) {
  const char* const opening = p++;
  const char* const first = p;
  bool doubled = false;
  for (;; ++p) {
    if (p == end) {
      fail(opening,
           "this quote is not closed on its line; close it, or quote the whole item and double the "
           "quotes in it");
    }
    if (*p != '"') continue;
    if (end - p == 1 || p[1] != '"') break;
    doubled = true;
    ++p;
  }
  const std::string_view inside(first, static_cast<std::size_t>(p - first));
  ++p;
  if (!doubled) return inside;
  unquoted_.clear();
  for (std::size_t i = 0; i < inside.size(); ++i) {
    unquoted_ += inside[i];
    if (inside[i] == '"') ++i;
  }
  return unquoted_;
}

std::string_view LabelScanner::readPlain(const char*& p, const char* end) const {
  const char* const first = p;
  const char mark = separatorCharacter(separator_);
  const bool byBlanks = separator_ == Separator::kBlanks;
  while (p != end && *p != mark && !(byBlanks && *p == '\t')) {
    if (*p == '"') {
      fail(p,
           "a quote inside an item; quote the whole item and double the quotes in it, as in \"5\"\" pipe\"");
    }
    ++p;
  }
  const char* last = p;
  while (last != first && isBlank(last[-1])) --last;
  return {first, static_cast<std::size_t>(last - first)};
}

void LabelScanner::fail(const char* at, const std::string& what) const {
  failAt(name_, text_, static_cast<std::size_t>(at - text_.data()), what);
}

}  // namespace korassoc::cli
