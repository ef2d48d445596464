// The descriptors' records within the records of tables, where the class of each is found out on the way.

#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "korassoc/base/BinaryRecord.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetCounter.h"

namespace korassoc::detail {

// What the reader of a table is told about the descriptors in it.
inline constexpr char kPlainCounters = 'A';
inline constexpr char kCarmaDescriptors =
    'C';  // plain counters too: what came back from the disk carries them
inline constexpr char kLatticeDescriptors = 'L';

inline constexpr std::string_view kSetCounterRefused = "Error reading SetCounter!\n";
inline constexpr std::string_view kCarmaDescriptorRefused = "Error reading CarmaSetDescriptor!\n";
inline constexpr std::string_view kLatticeDescriptorRefused = "Error reading LatticeSetDescriptor!\n";

// The shortest record of a descriptor, a plain counter's.
inline constexpr std::uint64_t kLeastDescriptorBytes = 10;

// Writes a descriptor's record through the writer of the record that it belongs to; a host's own class is
// asked to write itself. Returns the bytes that did not go through the writer.
std::uint64_t writeDescriptor(std::fstream& stream, BinaryWriter& record, const SetCounter& descriptor);

// Reads a record of a class that the type allows. Null, after a line on standard output, when there is none.
std::unique_ptr<SetCounter> readDescriptor(BinaryReader& record, char type);

// The same in an XML state; adds the lines of the object to lines. In a lattice every descriptor becomes a
// lattice descriptor: sets beyond an empty level, which no link reaches, are written with what they were
// counted by.
std::unique_ptr<SetCounter> readDescriptorXML(std::ifstream& in, char type, std::uint64_t& lines);

// The whole record: the tag and the fields.
void writeRecord(BinaryWriter& record, const SetCounter& descriptor);
void writeRecord(BinaryWriter& record, const CarmaSetDescriptor& descriptor);
void writeRecord(BinaryWriter& record, const LatticeSetDescriptor& descriptor);

// The fields behind the tag or the start of the object, and its end. False, and the descriptor as it was,
// when something is missing.
bool readFields(BinaryReader& record, SetCounter& descriptor);
bool readFields(BinaryReader& record, CarmaSetDescriptor& descriptor);
bool readFields(BinaryReader& record, LatticeSetDescriptor& descriptor);
bool readFieldsXML(std::ifstream& in, SetCounter& descriptor);
bool readFieldsXML(std::ifstream& in, CarmaSetDescriptor& descriptor);
bool readFieldsXML(std::ifstream& in, LatticeSetDescriptor& descriptor);

// The lines of a descriptor's object of one of the library's classes.
std::uint64_t linesOf(const SetCounter& descriptor);

// Writes the line and throws an IOException.
[[noreturn]] void refuseRecord(std::string_view line);

}  // namespace korassoc::detail
