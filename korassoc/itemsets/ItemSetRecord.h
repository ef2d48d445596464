// The parts of ItemSet's binary record, for records that hold many itemsets and go through one writer or
// reader.

#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

//   "IS:" and a zero byte | length | the items
inline constexpr std::string_view kItemSetTag("IS:\0", 4);
inline constexpr std::uint64_t kItemSetHeadBytes = 8;  // the whole record of an empty set

void writeItems(BinaryWriter& record, const ItemSet& set);

// Reads a record's length and items. A negative length is taken as it stands, without items. False for
// another tag, a length beyond the end of the stream, or a failed stream; nothing is printed.
bool readItems(BinaryReader& record, std::int32_t& length, std::vector<int>& items);

}  // namespace korassoc::detail
