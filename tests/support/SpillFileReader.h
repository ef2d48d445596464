// Reads a spill file by its documented layout, knowing nothing of the code that writes it.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

// One slot that does not read as thirteen (for level 1) zero bytes.
struct DiskSlot {
  int position = 0;
  int state = 0;
  int hash = 0;
  std::vector<int> items;
  int count = 0;

  bool operator==(const DiskSlot&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const DiskSlot& slot) {
  out << "slot " << slot.position << ": state " << slot.state << ", hash " << slot.hash << ", items";
  for (const int item : slot.items) out << ' ' << item;
  return out << ", count " << slot.count;
}

struct DiskImage {
  bool opened = false;
  std::size_t size = 0;
  int levelPlusOne = 0;
  int zero = 0;
  std::vector<DiskSlot> slots;  // in file order, the all-zero ones left out
};

// The position of the first byte from `from` on that is not zero, or the size.
inline std::size_t firstNonZero(const std::vector<char>& bytes, std::size_t from) {
  static const std::vector<char> zeros(65536, '\0');
  while (from < bytes.size()) {
    const std::size_t length = std::min(zeros.size(), bytes.size() - from);
    if (std::memcmp(bytes.data() + from, zeros.data(), length) != 0) break;
    from += length;
  }
  while (from < bytes.size() && bytes[from] == '\0') ++from;
  return from;
}

inline DiskImage readSpillFile(const std::string& path, int level) {
  DiskImage image;
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  image.opened = in.is_open();
  if (!image.opened) return image;
  std::vector<char> bytes(static_cast<std::size_t>(in.tellg()));
  in.seekg(0);
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  image.size = bytes.size();
  const auto intAt = [&bytes](std::size_t offset) {
    int value = 0;
    if (offset + 4 <= bytes.size()) std::memcpy(&value, bytes.data() + offset, 4);
    return value;
  };
  image.levelPlusOne = intAt(0);
  image.zero = intAt(4);
  const std::size_t slotSize = static_cast<std::size_t>(4 * level + 9);
  std::size_t next = 8;
  while ((next = firstNonZero(bytes, next)) < bytes.size()) {
    const std::size_t position = (next - 8) / slotSize;
    const std::size_t offset = 8 + position * slotSize;
    DiskSlot slot;
    slot.position = static_cast<int>(position);
    slot.state = static_cast<unsigned char>(bytes[offset]);
    slot.hash = intAt(offset + 1);
    for (int i = 0; i < level; ++i) slot.items.push_back(intAt(offset + 5 + 4 * static_cast<std::size_t>(i)));
    slot.count = intAt(offset + slotSize - 4);
    image.slots.push_back(slot);
    next = offset + slotSize;
  }
  return image;
}

// Overwrites bytes of a file that somebody else has open.
inline void pokeFile(const std::string& path, std::size_t offset, const std::string& bytes) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(offset));
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}
