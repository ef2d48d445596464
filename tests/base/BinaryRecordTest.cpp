#include "korassoc/base/BinaryRecord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/TemporaryFile.h"

namespace korassoc::detail {
namespace {

using ::testing::IsEmpty;
using namespace std::string_literals;

std::string written(const std::function<void(BinaryWriter&)>& write) {
  std::ostringstream stream;
  BinaryWriter record(stream);
  write(record);
  record.finish();
  return stream.str();
}

// A stream whose end cannot be looked up.
class OneWayBuffer : public std::stringbuf {
 public:
  using std::stringbuf::stringbuf;

 protected:
  pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override {
    return pos_type(-1);
  }
  pos_type seekpos(pos_type, std::ios_base::openmode) override { return pos_type(-1); }
};

// A stream that takes a number of bytes and no more.
class FullBuffer : public std::streambuf {
 public:
  explicit FullBuffer(std::streamsize room) : room_(room) {}

 protected:
  std::streamsize xsputn(const char*, std::streamsize size) override {
    const std::streamsize taken = std::min(size, room_);
    room_ -= taken;
    return taken;
  }

 private:
  std::streamsize room_;
};

}  // namespace

TEST(BinaryWriter, WritesLittleEndianValuesWithNothingBetween) {
  EXPECT_EQ(written([](BinaryWriter& record) {
              record.tag("CSD");
              record.int32(0x01020304);
              record.int32(-2);
              record.float64(1.0);
              record.flag(true);
              record.flag(false);
              record.text("ab");
            }),
            "CSD\x04\x03\x02\x01\xfe\xff\xff\xff"
            "\0\0\0\0\0\0\xf0\x3f"
            "10\x03\0\0\0ab\0"s);
}

TEST(BinaryWriter, CountsEveryByteAcrossPieces) {
  std::ostringstream stream;
  BinaryWriter record(stream);
  record.tag("HT");
  EXPECT_EQ(record.finish(), 2U);
  stream << "inner";
  for (int i = 0; i < 1000; ++i) record.int32(i);
  record.text(std::string(5000, 'x'));
  EXPECT_EQ(record.finish(), 2U + 4000 + 5005);
  EXPECT_EQ(stream.str().size(), 2U + 5 + 4000 + 5005);
  EXPECT_EQ(stream.str().substr(0, 11), "HTinner\0\0\0\0"s);
}

TEST(BinaryWriter, HandsOverWhatIsLeftWhenItGoes) {
  std::ostringstream stream;
  { BinaryWriter(stream).tag("AAS"); }
  EXPECT_EQ(stream.str(), "AAS");
}

TEST(BinaryWriter, TellsAShortWriteByTheBadBit) {
  FullBuffer buffer(3);
  std::ostream stream(&buffer);
  BinaryWriter record(stream);
  record.int32(1);
  EXPECT_EQ(record.finish(), 4U);
  EXPECT_TRUE(stream.bad());
}

TEST(BinaryWriter, LeavesAFailedStreamAlone) {
  std::ostringstream stream;
  stream.setstate(std::ios_base::failbit);
  BinaryWriter record(stream);
  record.int32(1);
  record.finish();
  EXPECT_EQ(stream.str(), "");
}

TEST(BinaryWriter, NeverThrowsWhenItGoes) {
  FullBuffer buffer(0);
  std::ostream stream(&buffer);
  stream.exceptions(std::ios_base::badbit);
  EXPECT_NO_THROW(BinaryWriter(stream).int32(1));
}

TEST(BinaryReader, ReadsWhatTheWriterWrote) {
  const int ints[] = {0, 1, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
  const double doubles[] = {0.0, -0.0, 1.0 / 3, std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::denorm_min()};
  std::istringstream stream(written([&](BinaryWriter& record) {
    record.tag("XY");
    record.int32s(ints);
    for (const double value : doubles) record.float64(value);
    record.flag(true);
    record.text("a name");
    record.text("");
  }));
  BinaryReader record(stream);
  EXPECT_TRUE(record.tag("XY"));
  for (const int expected : ints) {
    int value = 5;
    EXPECT_TRUE(record.int32(value));
    EXPECT_EQ(value, expected);
  }
  for (const double expected : doubles) {
    double value = 5;
    EXPECT_TRUE(record.float64(value));
    EXPECT_EQ(value, expected);
    EXPECT_EQ(std::signbit(value), std::signbit(expected));
  }
  char flag = 'x';
  EXPECT_TRUE(record.character(flag));
  EXPECT_EQ(flag, '1');
  std::string text = "old";
  EXPECT_TRUE(record.text(text));
  EXPECT_EQ(text, "a name");
  EXPECT_TRUE(record.text(text));
  EXPECT_EQ(text, "");
  EXPECT_EQ(record.count(), 2U + 5 * 4 + 5 * 8 + 1 + 11 + 5);
  EXPECT_EQ(stream.peek(), std::char_traits<char>::eof());
}

TEST(BinaryReader, LeavesTheStreamWhereTheRecordEnds) {
  std::istringstream stream("AB\x07\0\0\0rest"s);
  BinaryReader record(stream);
  int value = 0;
  EXPECT_TRUE(record.tag("AB"));
  EXPECT_TRUE(record.int32(value));
  EXPECT_EQ(value, 7);
  std::string rest;
  stream >> rest;
  EXPECT_EQ(rest, "rest");
}

TEST(BinaryReader, ShowsTheTagThatItFound) {
  struct Case {
    std::string bytes;
    bool matches;
    std::string found;
  };
  for (const Case& c :
       {Case{"SD..", true, "SD"}, Case{"XD..", false, "XD"}, Case{"S", false, "S"}, Case{"", false, ""}}) {
    std::istringstream stream(c.bytes);
    std::string found = "old";
    EXPECT_EQ(BinaryReader(stream).tag("SD", &found), c.matches) << c.bytes;
    EXPECT_EQ(found, c.found) << c.bytes;
  }
}

TEST(BinaryReader, FillsAllTargetsOrNone) {
  std::istringstream stream("\x01\0\0\0\x02\0\0"s);
  BinaryReader record(stream);
  int first = -1;
  int second = -2;
  EXPECT_FALSE(record.int32s({&first, &second}));
  EXPECT_EQ(first, -1);
  EXPECT_EQ(second, -2);
  EXPECT_TRUE(stream.fail());
  EXPECT_TRUE(stream.eof());
  char next = 'x';
  EXPECT_FALSE(record.character(next));
  EXPECT_EQ(next, 'x');
}

TEST(BinaryReader, DoesNotReadFromAFailedStream) {
  std::istringstream stream("\x01\0\0\0"s);
  stream.setstate(std::ios_base::failbit);
  int value = -1;
  EXPECT_FALSE(BinaryReader(stream).int32(value));
  EXPECT_EQ(value, -1);
}

TEST(BinaryReader, ReadsManyIntsAcrossItsPieces) {
  std::vector<int> expected(50000);
  for (std::size_t i = 0; i < expected.size(); ++i) expected[i] = static_cast<int>(i * 2654435761U);
  std::istringstream stream(written([&](BinaryWriter& record) { record.int32s(expected); }));
  BinaryReader record(stream);
  std::vector<int> values = {1, 2, 3};
  EXPECT_TRUE(record.int32s(values, 50000));
  EXPECT_EQ(values, expected);
  EXPECT_TRUE(record.int32s(values, 0));
  EXPECT_THAT(values, IsEmpty());
}

TEST(BinaryReader, TakesNoMemoryOnTheWordOfALength) {
  const int huge = 2147483647;
  {
    std::istringstream stream("\x01\0\0\0"s);
    std::vector<int> values;
    EXPECT_FALSE(BinaryReader(stream).int32s(values, huge));
    EXPECT_LT(values.capacity(), 100000U);
  }
  {
    OneWayBuffer buffer("\x01\0\0\0"s);
    std::istream stream(&buffer);
    std::vector<int> values;
    EXPECT_FALSE(BinaryReader(stream).int32s(values, huge));
    EXPECT_LT(values.capacity(), 100000U);
  }
  for (const std::string& length : {"\xff\xff\xff\x7f"s, "\xff\xff\xff\xff"s, "\0\0\0\0"s, "\x04\0\0\0"s}) {
    std::istringstream stream(length + "ab\0"s);
    std::string text = "old";
    EXPECT_FALSE(BinaryReader(stream).text(text));
    EXPECT_EQ(text, "old");
    EXPECT_TRUE(stream.fail());
  }
}

TEST(BinaryReader, RefusesANegativeNumberOfInts) {
  std::istringstream stream("\x01\0\0\0"s);
  std::vector<int> values;
  EXPECT_FALSE(BinaryReader(stream).int32s(values, -1));
  EXPECT_TRUE(stream.fail());
}

TEST(BinaryReader, RefusesATextWithoutItsZeroAndEndsItAtTheFirst) {
  std::istringstream endless("\x03\0\0\0abc"s);
  std::string text;
  EXPECT_FALSE(BinaryReader(endless).text(text));
  std::istringstream early("\x05\0\0\0ab\0c\0rest"s);
  BinaryReader record(early);
  EXPECT_TRUE(record.text(text));
  EXPECT_EQ(text, "ab");
  EXPECT_EQ(record.count(), 9U);
}

TEST(BinaryReader, FetchesAheadNoMoreThanItWasToldToExpect) {
  std::string bytes;
  for (int i = 0; i < 40000; ++i) bytes += std::to_string(i % 10);
  for (const std::uint64_t told : {0U, 1U, 3U, 4U, 5U, 100U, 39996U, 40000U}) {
    std::istringstream stream(bytes);
    BinaryReader record(stream);
    std::uint64_t taken = 0;
    while (taken + 4 <= std::max<std::uint64_t>(told, 4)) {
      if (told > taken) record.expect(told - taken);
      std::string found;
      ASSERT_TRUE(record.tag(bytes.substr(taken, 4), &found)) << found;
      taken += 4;
      EXPECT_EQ(record.count(), taken);
      EXPECT_LE(static_cast<std::uint64_t>(stream.tellg()), std::max(told, taken));
    }
    // Whatever it was told, all of it can be read, and nothing behind it was touched.
    std::vector<char> rest(told > taken ? told - taken : 0);
    for (char& c : rest) ASSERT_TRUE(record.character(c));
    EXPECT_EQ(static_cast<std::uint64_t>(stream.tellg()), std::max(told, taken)) << told;
  }
}

TEST(BinaryReader, TakesWhatItFetchedAheadBeforeItFails) {
  std::istringstream stream("abcdefg");
  BinaryReader record(stream);
  record.expect(100);  // a record that is cut short
  EXPECT_TRUE(record.tag("ab"));
  EXPECT_TRUE(record.tag("cd"));
  EXPECT_TRUE(record.holds(3));
  EXPECT_TRUE(stream.good());
  std::string found;
  EXPECT_FALSE(record.tag("efgh", &found));
  EXPECT_EQ(found, "efg");
  EXPECT_EQ(record.count(), 7U);
  EXPECT_TRUE(stream.fail());
  EXPECT_FALSE(record.tag("e"));
}

TEST(BinaryReader, CountsWhatItFetchedAheadAmongWhatIsLeft) {
  const TemporaryFile file(std::string(200000, 'x'));
  std::fstream stream = file.reader();
  BinaryReader record(stream);
  record.expect(150000);
  char c = 0;
  ASSERT_TRUE(record.character(c));
  EXPECT_TRUE(record.holds(199999));
  EXPECT_FALSE(record.holds(200000));
  std::vector<std::int32_t> values;
  EXPECT_TRUE(record.int32s(values, 49999));
  EXPECT_TRUE(record.tag("xxx"));
  EXPECT_FALSE(record.character(c));
}

TEST(BinaryReader, KnowsOfFewBytesToo) {
  std::istringstream stream("abcdefg");
  BinaryReader record(stream);
  EXPECT_TRUE(record.holds(7));
  EXPECT_FALSE(record.holds(8));
  EXPECT_TRUE(record.tag("ab"));
  EXPECT_TRUE(record.holds(5));
  EXPECT_FALSE(record.holds(6));
  EXPECT_EQ(stream.get(), 'c');
}

TEST(BinaryReader, KnowsWhatAFileStillHolds) {
  const TemporaryFile file(std::string(200000, 'x'));
  std::fstream stream = file.reader();
  BinaryReader record(stream);
  EXPECT_TRUE(record.holds(200000));
  EXPECT_FALSE(record.holds(200001));
  char c = 0;
  EXPECT_TRUE(record.character(c));
  EXPECT_TRUE(record.holds(199999));
  EXPECT_FALSE(record.holds(200000));
  EXPECT_FALSE(record.holds(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(stream.tellg(), 1) << "looking does not move";
}

TEST(StoredValues, AreLittleEndianInPlace) {
  char bytes[8];
  storeInt32(bytes, -2);
  EXPECT_EQ(std::string(bytes, 4), "\xfe\xff\xff\xff");
  EXPECT_EQ(loadInt32(bytes), -2);
  storeFloat64(bytes, -0.1);
  EXPECT_EQ(loadFloat64(bytes), -0.1);
}

}  // namespace korassoc::detail
