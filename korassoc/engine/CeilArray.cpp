#include "korassoc/engine/CeilArray.h"

#include <algorithm>
#include <iostream>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/itemsets/CountBound.h"
#include "korassoc/xml/XMLObj.h"
#include "korassoc/xml/XMLReader.h"

using korassoc::detail::BinaryReader;
using korassoc::detail::BinaryWriter;
using korassoc::detail::saturatingSum;
using KorAssocXML::ParseValue;

namespace {

constexpr std::uint64_t kChunkBytes = 16;  // of the binary record: index, count, ceiling

// The capacity comes from settings that may have been read from a file; no more memory than this is taken for
// it.
constexpr int kPreparedChunks = 1024;

void report() { std::cerr << "Failure reading CeilArray!\n"; }

[[noreturn]] void refuseRecord() {
  report();
  throw new IOException();
}

}  // namespace

CeilArray::CeilArray(int capacity) {
  chunks_.reserve(static_cast<std::size_t>(std::clamp(capacity, 1, kPreparedChunks)));
}

void CeilArray::add(double support) {
  if (chunks_.empty()) {
    open(support, 1);
    average_ = support;
    total_ = 1;
    return;
  }
  Chunk& last = chunks_.back();
  total_ = saturatingSum(total_, 1);
  if (support > last.ceiling) {
    last.count = saturatingSum(last.count, 1);
    raise(support);
    return;
  }
  if (support == last.ceiling) {
    last.count = saturatingSum(last.count, 1);
  } else {
    open(support, 1);
  }
  average_ += (support - average_) / total_;
}

// A chunk as a record has it, which may break the order.
void CeilArray::append(double ceiling, int count) {
  if (!chunks_.empty() && !(ceiling <= chunks_.back().ceiling)) descending_ = false;
  open(ceiling, count);
}

void CeilArray::open(double ceiling, int count) {
  double weight = 0.0;
  if (!chunks_.empty()) weight = chunks_.back().weightBefore + chunks_.back().count * chunks_.back().ceiling;
  chunks_.push_back({count, ceiling, weight});
}

// The chunks below the new ceiling are the last ones. Their sum goes on from that of the chunks before them,
// so that it is rounded as a sum over all chunks from the first to the last would be. Requires a last chunk
// below it.
void CeilArray::raise(double ceiling) {
  std::size_t first = chunks_.size() - 1;
  while (first > 0 && (!descending_ || chunks_[first - 1].ceiling < ceiling)) --first;
  double weight = chunks_[first].weightBefore;
  for (std::size_t i = first; i < chunks_.size(); ++i) {
    if (chunks_[i].ceiling < ceiling) chunks_[i].ceiling = ceiling;
    chunks_[i].weightBefore = weight;
    weight += chunks_[i].count * chunks_[i].ceiling;
  }
  average_ = weight / total_;
}

std::uint64_t CeilArray::writeObject(std::fstream& stream) const {
  BinaryWriter record(stream);
  record.tag("CA");
  record.float64(average_);
  record.int32(total_);
  record.int32(used());
  for (int chunk = 0; chunk < used() && stream.good(); ++chunk) {
    record.int32(chunk);
    record.int32(count(chunk));
    record.float64(ceiling(chunk));
  }
  return record.finish();
}

std::uint64_t CeilArray::readObject(std::fstream& stream) {
  *this = CeilArray(kPreparedChunks);
  BinaryReader record(stream);
  if (!record.tag("CA")) {
    report();
    return record.count();
  }
  int chunks = 0;
  if (!record.float64(average_) || !record.int32s({&total_, &chunks}) || total_ < 0) refuseRecord();
  // Else what follows the record would be taken for a chunk out of order, which is refused without a word.
  if (chunks > 0 && !record.holds(static_cast<std::uint64_t>(chunks) * kChunkBytes)) refuseRecord();
  for (int chunk = 0; chunk < chunks; ++chunk) {
    int index = 0;
    if (!record.int32(index)) refuseRecord();
    if (index != chunk) throw new IOException();
    int transactions = 0;
    double support = 0.0;
    if (!record.int32(transactions) || !record.float64(support) || transactions < 0) refuseRecord();
    append(support, transactions);
  }
  return record.count();
}

std::uint64_t CeilArray::writeObjectXML(std::ostream& stream) const {
  const KorAssocXML::XMLObj object("CeilArray", 1);
  object.StartObj(stream);
  object.WriteSubElement(stream, average_);
  object.WriteSubElement(stream, total_);
  object.WriteSubElement(stream, used());
  int chunk = 0;
  for (; chunk < used() && stream.good(); ++chunk) {
    object.WriteSubElement(stream, chunk);
    object.WriteSubElement(stream, count(chunk));
    object.WriteSubElement(stream, ceiling(chunk));
  }
  object.EndObj(stream);
  return 5 + 3 * static_cast<std::uint64_t>(chunk);
}

std::uint64_t CeilArray::readObjectXML(std::ifstream& stream) {
  *this = CeilArray(kPreparedChunks);
  int chunks = 0;
  if (!KorAssocXML::ParseStartObj(stream, "CeilArray") || !ParseValue(stream, average_) ||
      !ParseValue(stream, total_) || !ParseValue(stream, chunks) || total_ < 0) {
    refuseRecord();
  }
  for (int chunk = 0; chunk < chunks; ++chunk) {
    int index = 0;
    if (!ParseValue(stream, index)) refuseRecord();
    if (index != chunk) throw new IOException();
    int transactions = 0;
    double support = 0.0;
    if (!ParseValue(stream, transactions) || !ParseValue(stream, support) || transactions < 0) refuseRecord();
    append(support, transactions);
  }
  if (!KorAssocXML::ParseEndObj(stream)) refuseRecord();
  return 5 + 3 * static_cast<std::uint64_t>(used());
}
