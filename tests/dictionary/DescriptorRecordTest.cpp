// The descriptors' records, binary and XML: written as documented, refused when they are not.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/engine/Exceptions.h"
#include "tests/support/InputText.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"

namespace {

using namespace std::string_literals;

const std::string kCounterFailure = "Error reading SetCounter!\n";
const std::string kCarmaFailure = "Error reading CarmaSetDescriptor!\n";
const std::string kLatticeFailure = "Error reading LatticeSetDescriptor!\n";

LatticeSetDescriptor lattice(int count, int transaction, int missed, const std::vector<int>& adjacent) {
  LatticeSetDescriptor descriptor(count, transaction, missed);
  for (const int item : adjacent) descriptor.adjacent.Add(item);
  return descriptor;
}

// All fields in one text.
std::string fields(const SetCounter& descriptor) {
  std::ostringstream text;
  text << descriptor.count << ' ' << descriptor.getTID() << ' ' << descriptor.getMaxMissed() << " :";
  if (const auto* links = dynamic_cast<const LatticeSetDescriptor*>(&descriptor)) {
    for (int i = 0; i < links->adjacent.count; ++i) text << ' ' << links->adjacent.data[i];
  }
  return text.str();
}

std::string written(const SetCounter& descriptor, std::uint64_t size) {
  RecordStream record;
  EXPECT_EQ(descriptor.writeObject(record.stream()), size);
  return record.bytes();
}

std::string writtenXML(const SetCounter& descriptor, int tabs, std::uint64_t lines) {
  std::ostringstream out;
  EXPECT_EQ(descriptor.writeObjectXML(out, tabs), lines);
  return out.str();
}

// Reads the bytes; the answer, or "refused" when an IOException was thrown.
std::string read(SetCounter& descriptor, const std::string& bytes) {
  RecordStream record(bytes);
  try {
    const std::string size = std::to_string(descriptor.readObject(record.stream()));
    return size + " bytes, left: " + record.left();
  } catch (const IOException* refusal) {
    delete refusal;
    return "refused";
  }
}

struct Kind {
  const char* name;
  std::function<std::unique_ptr<SetCounter>()> make;  // with fields that no test reads
  std::string bytes;
  std::string lines;
  std::string expected;
  std::string failure;     // binary
  std::string elementXML;  // failures in XML: another object,
  std::string fieldXML;    // a field missing
};

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {"SetCounter", [] { return std::make_unique<SetCounter>(-9, -9); },
       "SC"s + "\x05\0\0\0"s + "\x02\x01\0\0"s,
       "\n\t<Obj name=\"SetCounter\">\n\t\t<Int value=\"5\"/>\n\t\t<Int value=\"258\"/>\n\t</Obj>",
       "5 258 0 :", kCounterFailure, kCounterFailure, kCounterFailure},
      {"CarmaSetDescriptor", [] { return std::make_unique<CarmaSetDescriptor>(-9, -9, -9); },
       "CSD"s + "\x05\0\0\0"s + "\x02\x01\0\0"s + "\xFF\xFF\xFF\xFF"s,
       "\n\t<Obj name=\"CarmaSetDescriptor\">\n\t\t<Int value=\"5\"/>\n\t\t<Int value=\"258\"/>"
       "\n\t\t<Int value=\"-1\"/>\n\t</Obj>",
       "5 258 -1 :", kCarmaFailure, kCounterFailure, kCounterFailure},
      {"LatticeSetDescriptor", [] { return std::make_unique<LatticeSetDescriptor>(-9, -9, -9); },
       "LSD"s + "\x05\0\0\0"s + "\x02\x01\0\0"s + "\x07\0\0\0"s + "\x02\0\0\0"s + "\xFD\xFF\xFF\xFF"s +
           "\x04\0\0\0"s,
       "\n\t<Obj name=\"LatticeSetDescriptor\">\n\t\t<Int value=\"5\"/>\n\t\t<Int value=\"258\"/>"
       "\n\t\t<Int value=\"7\"/>\n\t\t<Int value=\"2\"/>\n\t\t<Int value=\"-3\"/>\n\t\t<Int value=\"4\"/>"
       "\n\t</Obj>",
       "5 258 7 : -3 4", kLatticeFailure, kLatticeFailure, kCounterFailure}};
  return all;
}

TEST(DescriptorRecord, OfASetCounterIsItsTagCountAndTID) {
  const SetCounter descriptor(5, 258);
  EXPECT_EQ(written(descriptor, 10), kinds()[0].bytes);
  EXPECT_EQ(writtenXML(descriptor, 1, 4), kinds()[0].lines);
}

TEST(DescriptorRecord, OfACarmaSetDescriptorAddsMaxMissed) {
  const CarmaSetDescriptor descriptor(5, 258, -1);
  EXPECT_EQ(written(descriptor, 15), kinds()[1].bytes);
  EXPECT_EQ(writtenXML(descriptor, 1, 5), kinds()[1].lines);
}

TEST(DescriptorRecord, OfALatticeSetDescriptorAddsTheAdjacentItems) {
  const LatticeSetDescriptor descriptor = lattice(5, 258, 7, {4, -3});
  EXPECT_EQ(written(descriptor, 27), kinds()[2].bytes);
  EXPECT_EQ(writtenXML(descriptor, 1, 8), kinds()[2].lines);
}

TEST(DescriptorRecord, OfALatticeSetDescriptorWithoutAdjacentItemsHasNineteenBytes) {
  EXPECT_EQ(written(LatticeSetDescriptor(1, 2, 3), 19),
            "LSD"s + "\x01\0\0\0"s + "\x02\0\0\0"s + "\x03\0\0\0"s + "\0\0\0\0"s);
}

TEST(DescriptorRecord, IsReadBackAndTheStreamStandsBehindIt) {
  for (const Kind& kind : kinds()) {
    const auto descriptor = kind.make();
    EXPECT_EQ(read(*descriptor, kind.bytes + "next"),
              std::to_string(kind.bytes.size()) + " bytes, left: next");
    EXPECT_EQ(fields(*descriptor), kind.expected) << kind.name;

    const auto fromXML = kind.make();
    InputText in(kind.lines + "\nnext");
    const auto lines = static_cast<std::uint64_t>(std::count(kind.lines.begin(), kind.lines.end(), '\n'));
    EXPECT_EQ(fromXML->readObjectXML(in.stream()), lines);
    EXPECT_EQ(fields(*fromXML), kind.expected) << kind.name;
    std::string next;
    std::getline(in.stream(), next);
    EXPECT_EQ(next, "next");
  }
}

TEST(DescriptorRecord, RefusesAnotherTagWithTheMessageOfItsClass) {
  for (const Kind& kind : kinds()) {
    for (const std::string& other : {"XX"s, "AAS"s, "SC"s, "CSD"s, "LSD"s, ""s}) {
      if (kind.bytes.rfind(other, 0) == 0 && !other.empty()) continue;
      const StreamCapture out(std::cout);
      const auto descriptor = kind.make();
      const std::string before = fields(*descriptor);
      EXPECT_EQ(read(*descriptor, other.empty() ? "" : other + std::string(40, '\0')), "refused");
      EXPECT_EQ(out.text(), kind.failure) << kind.name << " from " << other;
      EXPECT_EQ(fields(*descriptor), before);
    }
  }
}

TEST(DescriptorRecord, RefusesToBeCutShortAnywhere) {
  for (const Kind& kind : kinds()) {
    for (std::size_t size = 0; size < kind.bytes.size(); ++size) {
      const StreamCapture out(std::cout);
      const auto descriptor = kind.make();
      EXPECT_EQ(read(*descriptor, kind.bytes.substr(0, size)), "refused") << kind.name << ' ' << size;
      EXPECT_EQ(out.text(), kind.failure);
      EXPECT_EQ(fields(*descriptor), fields(*kind.make()));
    }
  }
}

TEST(DescriptorRecord, RefusesAStreamThatHasFailed) {
  for (const Kind& kind : kinds()) {
    RecordStream record(kind.bytes);
    record.stream().setstate(std::ios::badbit);
    const StreamCapture out(std::cout);
    EXPECT_THROW(
        try { kind.make()->readObject(record.stream()); } catch (const IOException* refusal) {
          delete refusal;
          throw std::runtime_error("refused");
        },
        std::runtime_error);
    EXPECT_EQ(out.text(), kind.failure);
  }
}

TEST(DescriptorRecord, RefusesALyingNumberOfAdjacentItems) {
  for (const int number : {-1, -2147483647 - 1, 3, 1000000, 2147483647}) {
    const StreamCapture out(std::cout);
    LatticeSetDescriptor descriptor(1, 2, 3);
    EXPECT_EQ(read(descriptor, "LSD" + int32Bytes({5, 6, 7, number, 8, 9})), "refused") << number;
    EXPECT_EQ(out.text(), kLatticeFailure);
    EXPECT_EQ(fields(descriptor), "1 2 3 :");
  }
}

TEST(DescriptorRecord, PutsAdjacentItemsInOrder) {
  LatticeSetDescriptor descriptor(1, 2, 3);
  read(descriptor, "LSD" + int32Bytes({5, 6, 7, 4, 9, -1, 9, 3}));
  EXPECT_EQ(fields(descriptor), "5 6 7 : -1 3 9 9");
  descriptor.adjacent.Add(4);
  EXPECT_EQ(fields(descriptor), "5 6 7 : -1 3 4 9 9");
}

TEST(DescriptorRecord, ChangedInOneByteIsAnotherRecordOrRefused) {
  for (const Kind& kind : kinds()) {
    for (std::size_t place = 0; place < kind.bytes.size(); ++place) {
      for (int value = 0; value < 256; ++value) {
        std::string bytes = kind.bytes;
        bytes[place] = static_cast<char>(value);
        const StreamCapture out(std::cout);
        const auto descriptor = kind.make();
        if (read(*descriptor, bytes) == "refused") {
          EXPECT_EQ(out.text(), kind.failure);
          EXPECT_EQ(fields(*descriptor), fields(*kind.make()));
        } else if (place < 15) {  // not among the adjacent items, whose order is mended
          RecordStream again;
          descriptor->writeObject(again.stream());
          EXPECT_EQ(again.bytes(), bytes) << kind.name << ' ' << place << ": " << value;
        }
      }
    }
  }
}

TEST(DescriptorXML, RefusesAnotherObject) {
  for (const Kind& kind : kinds()) {
    for (const char* text :
         {"", "<Obj name=\"ItemSet\">\n<Int value=\"1\"/>\n<Int value=\"1\"/>\n</Obj>\n"}) {
      InputText in(text);
      const StreamCapture out(std::cout);
      const auto descriptor = kind.make();
      EXPECT_EQ(descriptor->readObjectXML(in.stream()), 0U);
      EXPECT_EQ(out.text(), kind.elementXML) << kind.name;
      EXPECT_EQ(fields(*descriptor), fields(*kind.make()));
    }
  }
}

TEST(DescriptorXML, RefusesAMissingLine) {
  for (const Kind& kind : kinds()) {
    std::vector<std::string> lines;
    std::istringstream text(kind.lines.substr(1));
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    for (std::size_t missing = 1; missing < lines.size(); ++missing) {
      std::string rest;
      for (std::size_t i = 0; i < lines.size(); ++i) rest += i == missing ? "" : lines[i] + "\n";
      InputText in(rest);
      const StreamCapture out(std::cout);
      const auto descriptor = kind.make();
      EXPECT_EQ(descriptor->readObjectXML(in.stream()), 0U) << kind.name << " without line " << missing;
      EXPECT_EQ(out.text(), kind.fieldXML);
      EXPECT_EQ(fields(*descriptor), fields(*kind.make()));
    }
  }
}

TEST(DescriptorXML, RefusesALyingNumberOfAdjacentItems) {
  for (const char* number : {"-1", "-2147483648", "2", "1000000", "2147483647"}) {
    InputText in(
        "<Obj name=\"LatticeSetDescriptor\">\n<Int value=\"5\"/>\n<Int value=\"6\"/>\n<Int value=\"7\"/>\n"
        "<Int value=\"" +
        std::string(number) + "\"/>\n<Int value=\"8\"/>\n</Obj>\n");
    const StreamCapture out(std::cout);
    LatticeSetDescriptor descriptor(1, 2, 3);
    EXPECT_EQ(descriptor.readObjectXML(in.stream()), 0U) << number;
    EXPECT_EQ(out.text(), kCounterFailure);
  }
}

}  // namespace
