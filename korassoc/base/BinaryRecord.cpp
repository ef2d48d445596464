#include "korassoc/base/BinaryRecord.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <ios>
#include <utility>

namespace korassoc::detail {
namespace {

static_assert(sizeof(int) == kInt32Bytes, "stored integers are 32 bits wide");
static_assert(sizeof(double) == kFloat64Bytes, "stored doubles are 64 bits wide");

// A length below this is tried without asking for the end of the stream, and memory grows by steps of it.
constexpr std::size_t kTrustedBytes = 65536;

// The largest piece that is fetched ahead. More would only take the caches from those who use the values.
constexpr std::size_t kFetchBytes = 32768;

}  // namespace

void storeFloat64(char* to, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  storeInt32(to, static_cast<std::int32_t>(static_cast<std::uint32_t>(bits)));
  storeInt32(to + 4, static_cast<std::int32_t>(static_cast<std::uint32_t>(bits >> 32)));
}

double loadFloat64(const char* from) {
  const auto low = static_cast<std::uint32_t>(loadInt32(from));
  const auto high = static_cast<std::uint32_t>(loadInt32(from + 4));
  return std::bit_cast<double>(static_cast<std::uint64_t>(low) | static_cast<std::uint64_t>(high) << 32);
}

BinaryWriter::~BinaryWriter() {
  try {
    finish();
  } catch (...) {  // a stream that throws on failure; its state tells the rest
  }
}

void BinaryWriter::int32(std::int32_t value) { storeInt32(room(kInt32Bytes), value); }

void BinaryWriter::int32s(std::span<const std::int32_t> values) {
  for (const std::int32_t value : values) int32(value);
}

void BinaryWriter::float64(double value) { storeFloat64(room(kFloat64Bytes), value); }

void BinaryWriter::flag(bool value) { *room(1) = value ? '1' : '0'; }

void BinaryWriter::text(std::string_view characters) {
  int32(static_cast<std::int32_t>(characters.size() + 1));
  bytes(characters.data(), characters.size());
  *room(1) = '\0';
}

void BinaryWriter::bytes(const char* data, std::size_t size) {
  while (size > 0) {
    const std::size_t piece = std::min(size, buffer_.size());
    std::memcpy(room(piece), data, piece);
    data += piece;
    size -= piece;
  }
}

std::uint64_t BinaryWriter::finish() {
  const auto size = static_cast<std::streamsize>(used_);
  used_ = 0;
  if (size > 0 && out_.good() && out_.rdbuf()->sputn(buffer_.data(), size) != size) {
    out_.setstate(std::ios_base::badbit);
  }
  return count_;
}

// What raw() does when not everything is there: takes what is, and the rest from the stream.
bool BinaryReader::fetch(char* to, std::size_t size) {
  const std::size_t waiting = end_ - next_;
  if (waiting > 0) std::memcpy(to, fetched_.data() + next_, waiting);
  count_ += waiting;
  next_ = end_ = 0;
  to += waiting;
  size -= waiting;
  if (!in_.good()) {
    in_.setstate(std::ios_base::failbit);
    return false;
  }
  const bool ahead = expected_ > size && size < kFetchBytes;
  const std::size_t wanted =
      ahead ? static_cast<std::size_t>(std::min<std::uint64_t>(expected_, kFetchBytes)) : size;
  if (ahead && fetched_.size() < wanted) fetched_.resize(wanted);
  char* const place = ahead ? fetched_.data() : to;
  const std::streamsize answer = in_.rdbuf()->sgetn(place, static_cast<std::streamsize>(wanted));
  const auto got = static_cast<std::size_t>(std::max<std::streamsize>(answer, 0));
  expected_ -= std::min<std::uint64_t>(expected_, got);
  const std::size_t taken = std::min(got, size);
  count_ += taken;
  if (ahead) {
    std::memcpy(to, place, taken);
    next_ = taken;
    end_ = got;
  }
  if (taken == size) return true;
  in_.setstate(std::ios_base::failbit | std::ios_base::eofbit);
  return false;
}

bool BinaryReader::tag(std::string_view expected, std::string* found) {
  std::array<char, 16> characters;
  assert(expected.size() <= characters.size());
  const std::uint64_t before = count_;
  const bool read = raw(characters.data(), expected.size());
  const std::string_view seen(characters.data(), static_cast<std::size_t>(count_ - before));
  if (found != nullptr) *found = seen;
  return read && seen == expected;
}

bool BinaryReader::int32(std::int32_t& value) { return int32s({&value}); }

bool BinaryReader::int32s(std::initializer_list<std::int32_t*> targets) {
  std::array<char, 16 * kInt32Bytes> bytes;
  assert(targets.size() * kInt32Bytes <= bytes.size());
  if (!raw(bytes.data(), targets.size() * kInt32Bytes)) return false;
  const char* from = bytes.data();
  for (std::int32_t* target : targets) {
    *target = loadInt32(from);
    from += kInt32Bytes;
  }
  return true;
}

bool BinaryReader::int32s(std::span<std::int32_t> values) {
  std::array<char, 256> bytes;
  while (!values.empty()) {
    const std::size_t piece = std::min(values.size(), bytes.size() / kInt32Bytes);
    if (!raw(bytes.data(), piece * kInt32Bytes)) return false;
    for (std::size_t i = 0; i < piece; ++i) values[i] = loadInt32(bytes.data() + i * kInt32Bytes);
    values = values.subspan(piece);
  }
  return true;
}

bool BinaryReader::int32s(std::vector<std::int32_t>& values, std::int32_t count) {
  values.clear();
  if (count < 0 || !mayHold(static_cast<std::uint64_t>(count) * kInt32Bytes)) {
    in_.setstate(std::ios_base::failbit);
    return false;
  }
  const auto total = static_cast<std::size_t>(count);
  while (values.size() < total) {
    const std::size_t piece = std::min(total - values.size(), kTrustedBytes / kInt32Bytes);
    values.resize(values.size() + piece);
    if (!int32s(std::span(values).last(piece))) return false;
  }
  return true;
}

bool BinaryReader::float64(double& value) {
  std::array<char, kFloat64Bytes> bytes;
  if (!raw(bytes.data(), bytes.size())) return false;
  value = loadFloat64(bytes.data());
  return true;
}

bool BinaryReader::character(char& value) { return raw(&value, 1); }

bool BinaryReader::text(std::string& value) {
  std::int32_t length = 0;
  if (!int32(length)) return false;
  if (length < 1 || !mayHold(static_cast<std::uint64_t>(length))) {
    in_.setstate(std::ios_base::failbit);
    return false;
  }
  std::string characters;
  const auto total = static_cast<std::size_t>(length);
  while (characters.size() < total) {
    const std::size_t have = characters.size();
    characters.resize(have + std::min(total - have, kTrustedBytes));
    if (!raw(characters.data() + have, characters.size() - have)) return false;
  }
  const std::size_t end = characters.find('\0');
  if (end == std::string::npos) {
    in_.setstate(std::ios_base::failbit);
    return false;
  }
  characters.resize(end);
  value = std::move(characters);
  return true;
}

// holds() for what is going to be read as a whole: few bytes are believed, since reading them will tell.
bool BinaryReader::mayHold(std::uint64_t bytes) {
  return bytes <= kTrustedBytes ? in_.good() || bytes <= end_ - next_ : holds(bytes);
}

bool BinaryReader::holds(std::uint64_t bytes) {
  const std::size_t waiting = end_ - next_;
  if (bytes <= waiting) return true;
  bytes -= waiting;
  if (!in_.good()) return false;
  std::streambuf& buffer = *in_.rdbuf();
  const std::streamsize available = buffer.in_avail();
  if (available > 0 && static_cast<std::uint64_t>(available) >= bytes) return true;
  constexpr auto side = std::ios_base::in;
  const std::streampos here = buffer.pubseekoff(0, std::ios_base::cur, side);
  if (here == std::streampos(-1)) return true;
  const std::streampos end = buffer.pubseekoff(0, std::ios_base::end, side);
  if (buffer.pubseekpos(here, side) != here) {
    in_.setstate(std::ios_base::badbit);
    return false;
  }
  const std::streamoff left = end == std::streampos(-1) ? -1 : end - here;
  return end == std::streampos(-1) || (left >= 0 && static_cast<std::uint64_t>(left) >= bytes);
}

}  // namespace korassoc::detail
