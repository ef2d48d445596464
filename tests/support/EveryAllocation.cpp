#include "tests/support/EveryAllocation.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <streambuf>

#include "tests/support/FailingAllocator.h"
#include "tests/support/Hosts.h"

namespace {

using Failing = FailingAllocator::Failing;

// Takes everything and keeps nothing.
class NowhereBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

class SilentStreams {
 public:
  SilentStreams() : out_(std::cout.rdbuf(&nowhere_)), err_(std::cerr.rdbuf(&nowhere_)) {}
  ~SilentStreams() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
    std::cout.clear();
    std::cerr.clear();
  }
  SilentStreams(const SilentStreams&) = delete;
  SilentStreams& operator=(const SilentStreams&) = delete;

 private:
  NowhereBuffer nowhere_;
  std::streambuf* out_;
  std::streambuf* err_;
};

// How often the attempt asks for memory when there is enough, and what it answers.
int allocationsOf(Attempt& attempt, std::string& answer) {
  int asked = 0;
  KorAssoc::KorStatus status;
  {
    const FailingAllocator counting(FailingAllocator::kNever);
    status = attempt.run();
    asked = counting.asked();
  }
  EXPECT_EQ(shortForm(status), "OK");
  answer = attempt.answer();
  return asked;
}

// One attempt with the allocation of this number, from 0, failing.
void failOne(Attempt& attempt, int allocation, Failing failing, const std::string& expected) {
  KorAssoc::KorStatus status;
  int failed = 0;
  bool threw = false;
  {
    const FailingAllocator limit(allocation, failing);
    try {
      status = attempt.run();
    } catch (...) {
      threw = true;
    }
    failed = limit.failed();
  }
  ASSERT_FALSE(threw);
  ASSERT_GT(failed, 0) << "this attempt asks for less memory than the one before it";
  if (status.IsOK()) {
    EXPECT_EQ(attempt.answer(), expected);
  } else {
    ASSERT_TRUE(attempt.mayRefuseWith(status)) << shortForm(status);
    attempt.checkAfterRefusal();
    if (!attempt.canBeRepeated() || testing::Test::HasFailure()) return;
    ASSERT_EQ(shortForm(attempt.run()), "OK") << "with memory again";
    EXPECT_EQ(attempt.answer(), expected) << "with memory again";
  }
}

}  // namespace

bool Attempt::mayRefuseWith(const KorAssoc::KorStatus& status) const { return status == error(40001); }

void failAllocations(const std::function<std::unique_ptr<Attempt>()>& make) {
  std::string expected;
  int allocations = 0;
  int tried = 0;
  {
    const SilentStreams silent;
    for (int warmUp = 0; warmUp < 2; ++warmUp) {  // what is made once, at the first time, is there afterwards
      const std::unique_ptr<Attempt> attempt = make();
      allocations = allocationsOf(*attempt, expected);
    }
    const int step = std::getenv("KORASSOC_EVERY_ALLOCATION") != nullptr ? 1 : 10;
    for (const Failing failing : {Failing::kOnce, Failing::kFromThenOn}) {
      // Neither mode tries the same tenth.
      int allocation = failing == Failing::kOnce || allocations == 0 ? 0 : step / 2 % allocations;
      for (; allocation < allocations; allocation += step, ++tried) {
        SCOPED_TRACE("allocation " + std::to_string(allocation) +
                     (failing == Failing::kOnce ? " fails" : " and all later ones fail"));
        const long long before = FailingAllocator::livingBlocks();
        {
          const std::unique_ptr<Attempt> attempt = make();
          failOne(*attempt, allocation, failing, expected);
        }
        if (testing::Test::HasFailure()) return;  // one is enough to look into
        ASSERT_EQ(FailingAllocator::livingBlocks(), before) << "blocks left over";
      }
    }
  }
  std::printf("%s.%s: asks %d times, %d failures tried\n",
              testing::UnitTest::GetInstance()->current_test_info()->test_suite_name(),
              testing::UnitTest::GetInstance()->current_test_info()->name(), allocations, tried);
}
