#include "korassoc/xml/export/ItemIndex.h"

#include <algorithm>

namespace korassoc::detail {
namespace {

ItemSet distinct(std::vector<int> items) {
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  return ItemSet(items.data(), static_cast<int>(items.size()));
}

}  // namespace

ItemIndex::ItemIndex(std::vector<int> items) : items_(distinct(std::move(items))) {}

}  // namespace korassoc::detail
