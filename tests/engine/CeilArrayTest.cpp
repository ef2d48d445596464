#include "korassoc/engine/CeilArray.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "korassoc/engine/Exceptions.h"
#include "tests/support/RecordStream.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

constexpr const char* kFailure = "Failure reading CeilArray!\n";

std::string chunks(const CeilArray& array) {
  std::string text;
  for (int chunk = 0; chunk < array.used(); ++chunk) {
    text += std::to_string(array.count(chunk)) + "x" + std::to_string(array.ceiling(chunk)) + " ";
  }
  return text;
}

// Reads the bytes; the message when it is refused, "" when it is not, with what went to standard error.
struct Reading {
  explicit Reading(const std::string& bytes) {
    const TemporaryFile file(bytes);
    std::fstream stream = file.reader();
    const StreamCapture errors(std::cerr);
    try {
      count = array.readObject(stream);
    } catch (IOException* exception) {
      delete exception;
      refused = true;
    }
    message = errors.text();
  }
  CeilArray array{10};
  std::uint64_t count = 0;
  bool refused = false;
  std::string message;
};

}  // namespace

TEST(CeilArray, IsEmptyAtFirst) {
  const CeilArray array(1000);
  EXPECT_EQ(array.used(), 0);
  EXPECT_EQ(array.total(), 0);
  EXPECT_EQ(array.average(), 0.0);
}

TEST(CeilArray, OpensTheFirstChunkWithTheFirstSupport) {
  CeilArray array(10);
  array.add(0.25);
  EXPECT_EQ(chunks(array), "1x0.250000 ");
  EXPECT_EQ(array.total(), 1);
  EXPECT_EQ(array.average(), 0.25);
}

TEST(CeilArray, CountsAnEqualSupportIntoTheLastChunk) {
  CeilArray array(10);
  for (int i = 0; i < 3; ++i) array.add(0.25);
  EXPECT_EQ(chunks(array), "3x0.250000 ");
  EXPECT_EQ(array.total(), 3);
  EXPECT_EQ(array.average(), 0.25);
}

TEST(CeilArray, OpensAChunkAtADecrease) {
  CeilArray array(10);
  array.add(0.5);
  array.add(0.25);
  EXPECT_EQ(chunks(array), "1x0.500000 1x0.250000 ");
  EXPECT_EQ(array.total(), 2);
  EXPECT_EQ(array.average(), 0.375);  // 0.5 + (0.25 - 0.5) / 2
  array.add(0.125);
  EXPECT_EQ(chunks(array), "1x0.500000 1x0.250000 1x0.125000 ");
  EXPECT_DOUBLE_EQ(array.average(), 0.875 / 3);
}

TEST(CeilArray, RaisesTheLowerChunksAtAnIncrease) {
  CeilArray array(10);
  for (const double support : {1.0, 0.5, 0.25, 0.125}) array.add(support);
  array.add(0.375);
  EXPECT_EQ(chunks(array), "1x1.000000 1x0.500000 1x0.375000 2x0.375000 ");
  EXPECT_EQ(array.total(), 5);
  EXPECT_EQ(array.average(), (1.0 + 0.5 + 0.375 + 2 * 0.375) / 5);
  array.add(0.5);  // a ceiling of exactly that value needs no raising
  EXPECT_EQ(chunks(array), "1x1.000000 1x0.500000 1x0.500000 3x0.500000 ");
  EXPECT_EQ(array.average(), 3.5 / 6);
  array.add(2.0);
  EXPECT_EQ(chunks(array), "1x2.000000 1x2.000000 1x2.000000 4x2.000000 ");
  EXPECT_EQ(array.average(), 2.0);
}

TEST(CeilArray, GrowsBeyondTheChunksItWasPreparedFor) {
  CeilArray array(2);
  for (int i = 0; i < 3000; ++i) array.add(1.0 - i / 4096.0);
  EXPECT_EQ(array.used(), 3000);
  EXPECT_EQ(array.total(), 3000);
  EXPECT_NEAR(array.average(), 1.0 - 2999.0 / 2 / 4096.0, 1e-12);
}

TEST(CeilArray, TakesAnyCapacity) {
  for (const int capacity : {0, -5, 2147483647}) {
    CeilArray array(capacity);
    array.add(0.5);
    EXPECT_EQ(array.used(), 1) << capacity;
  }
}

// The plain rule, chunk by chunk, whose sums must come out with the very same rounding.
TEST(CeilArray, AgreesToTheLastBitWithSumsOverAllChunks) {
  std::mt19937 random(20240607);
  for (int round = 0; round < 20; ++round) {
    CeilArray array(5);
    std::vector<std::pair<int, double>> plain;
    double average = 0.0;
    int total = 0;
    for (int step = 0; step < 400; ++step) {
      const double support = static_cast<double>(random() % 37 + 1) / 101.0;
      if (plain.empty()) {
        plain.emplace_back(1, support);
        average = support;
        total = 1;
      } else {
        ++total;
        const double last = plain.back().second;
        if (support > last) {
          ++plain.back().first;
          double sum = 0.0;
          for (auto& [count, ceiling] : plain) {
            if (ceiling < support) ceiling = support;
            sum += count * ceiling;
          }
          average = sum / total;
        } else {
          if (support == last) {
            ++plain.back().first;
          } else {
            plain.emplace_back(1, support);
          }
          average = average + (support - average) / total;
        }
      }
      array.add(support);
      ASSERT_EQ(array.average(), average) << "round " << round << " step " << step;
      ASSERT_EQ(array.total(), total);
    }
    ASSERT_EQ(array.used(), static_cast<int>(plain.size()));
    for (int chunk = 0; chunk < array.used(); ++chunk) {
      EXPECT_EQ(array.count(chunk), plain[static_cast<std::size_t>(chunk)].first);
      EXPECT_EQ(array.ceiling(chunk), plain[static_cast<std::size_t>(chunk)].second);
    }
  }
}

TEST(CeilArray, WritesItsRecord) {
  CeilArray array(10);
  for (const double support : {0.5, 0.5, 0.25}) array.add(support);
  const TemporaryFile file;
  std::fstream stream = file.writer();
  EXPECT_EQ(array.writeObject(stream), 2U + 8 + 4 + 4 + 2 * 16);
  stream.close();
  EXPECT_EQ(file.contents(), "CA" + float64Bytes(0.5 + (0.25 - 0.5) / 3) + int32Bytes(3) + int32Bytes(2) +  //
                                 int32Bytes(0) + int32Bytes(2) + float64Bytes(0.5) +                        //
                                 int32Bytes(1) + int32Bytes(1) + float64Bytes(0.25));
}

TEST(CeilArray, GoesOnAfterARecordAsItWouldHave) {
  CeilArray array(10);
  for (const double support : {0.7, 0.3, 0.2, 0.1}) array.add(support);
  const TemporaryFile file;
  std::fstream stream = file.writer();
  array.writeObject(stream);
  stream.close();
  Reading reading(file.contents());
  ASSERT_FALSE(reading.refused);
  EXPECT_EQ(reading.message, "");
  EXPECT_EQ(reading.count, 18U + 4 * 16);
  for (const double support : {0.25, 0.1, 0.6}) {
    array.add(support);
    reading.array.add(support);
    EXPECT_EQ(chunks(reading.array), chunks(array));
    EXPECT_EQ(reading.array.average(), array.average());
    EXPECT_EQ(reading.array.total(), array.total());
  }
}

TEST(CeilArray, RaisesEveryLowerChunkOfARecordOutOfOrder) {
  Reading reading("CA" + float64Bytes(0.4) + int32Bytes(3) + int32Bytes(3) + int32Bytes(0) + int32Bytes(1) +
                  float64Bytes(0.25) +  //
                  int32Bytes(1) + int32Bytes(1) + float64Bytes(0.75) + int32Bytes(2) + int32Bytes(1) +
                  float64Bytes(0.125));
  ASSERT_FALSE(reading.refused);
  reading.array.add(0.5);
  EXPECT_EQ(chunks(reading.array), "1x0.500000 1x0.750000 2x0.500000 ");
  EXPECT_EQ(reading.array.average(), (0.5 + 0.75 + 1.0) / 4);
}

TEST(CeilArray, StaysEmptyAndSaysSoOnAWrongTag) {
  for (const std::string& bytes :
       {"XX" + float64Bytes(0.5) + int32Bytes(1) + int32Bytes(0), std::string("C"), std::string("")}) {
    Reading reading(bytes);
    EXPECT_FALSE(reading.refused);
    EXPECT_EQ(reading.message, kFailure);
    EXPECT_EQ(reading.array.used(), 0);
    EXPECT_EQ(reading.array.average(), 0.0);
  }
}

TEST(CeilArray, StopsReadingBehindAWrongTag) {
  const TemporaryFile file("XXabc");
  std::fstream stream = file.reader();
  const StreamCapture errors(std::cerr);
  CeilArray array(10);
  EXPECT_EQ(array.readObject(stream), 2U);
  EXPECT_EQ(stream.get(), 'a');
}

TEST(CeilArray, RefusesAChunkOutOfOrderWithoutAWord) {
  Reading reading("CA" + float64Bytes(0.5) + int32Bytes(2) + int32Bytes(2) + int32Bytes(0) + int32Bytes(1) +
                  float64Bytes(0.5) + int32Bytes(2) + int32Bytes(1) + float64Bytes(0.25));
  EXPECT_TRUE(reading.refused);
  EXPECT_EQ(reading.message, "");
}

TEST(CeilArray, RefusesARecordCutShortAnywhere) {
  const std::string bytes = "CA" + float64Bytes(0.375) + int32Bytes(2) + int32Bytes(2) + int32Bytes(0) +
                            int32Bytes(1) + float64Bytes(0.5) + int32Bytes(1) + int32Bytes(1) +
                            float64Bytes(0.25);
  for (std::size_t length = 2; length < bytes.size(); ++length) {
    Reading reading(bytes.substr(0, length));
    EXPECT_TRUE(reading.refused) << length;
    EXPECT_EQ(reading.message, kFailure) << length;
  }
  EXPECT_FALSE(Reading(bytes).refused);
}

TEST(CeilArray, RefusesImpossibleCounts) {
  EXPECT_TRUE(Reading("CA" + float64Bytes(0.5) + int32Bytes(-1) + int32Bytes(0)).refused);
  EXPECT_TRUE(Reading("CA" + float64Bytes(0.5) + int32Bytes(1) + int32Bytes(1) + int32Bytes(0) +
                      int32Bytes(-1) + float64Bytes(0.5))
                  .refused);
  EXPECT_TRUE(Reading("CA" + float64Bytes(0.5) + int32Bytes(1) + int32Bytes(2147483647)).refused);
}

// What stands behind the record must not be taken for more of its chunks.
TEST(CeilArray, RefusesMoreChunksThanTheBytesLeftCanHold) {
  const std::string behind = float64Bytes(1.5) + int32Bytes({4, 2, 2});
  for (const int chunks : {1, 10}) {
    const std::string head = "CA" + float64Bytes(0.25) + int32Bytes(chunks);
    std::string body;
    for (int chunk = 0; chunk < chunks; ++chunk) body += int32Bytes({chunk, 1}) + float64Bytes(0.25);
    EXPECT_FALSE(Reading(head + int32Bytes(chunks) + body + behind).refused);
    // One chunk more would find bytes enough; it is one out of order.
    const Reading oneMore(head + int32Bytes(chunks + 1) + body + behind);
    EXPECT_TRUE(oneMore.refused);
    EXPECT_EQ(oneMore.message, "");
    for (const int claimed : {chunks + 2, 1000, 5000, 2147483647}) {
      const Reading reading(head + int32Bytes(claimed) + body + behind);
      EXPECT_TRUE(reading.refused) << claimed;
      EXPECT_EQ(reading.message, kFailure) << claimed;
      EXPECT_EQ(reading.array.used(), 0) << claimed;
    }
  }
}

TEST(CeilArray, TakesANegativeNumberOfChunksAsNone) {
  Reading reading("CA" + float64Bytes(0.5) + int32Bytes(7) + int32Bytes(-1));
  EXPECT_FALSE(reading.refused);
  EXPECT_EQ(reading.message, "");
  EXPECT_EQ(reading.array.used(), 0);
  EXPECT_EQ(reading.array.average(), 0.5);
}
