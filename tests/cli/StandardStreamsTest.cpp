// Standard input, output and error that are full, closed or left by their reader.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/cli/Pipe.h"
#include "tests/cli/RunKorassoc.h"
#include "tests/cli/TemporaryFolder.h"

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int kIn = STDIN_FILENO;
constexpr int kOut = STDOUT_FILENO;
constexpr int kErr = STDERR_FILENO;
constexpr int kClosed = -1;

class StandardStreams : public testing::Test {
 protected:
  StandardStreams() {
    folder_.store("baskets", "2 8\n5 8\n2 5\n2 5\n2 5 8\n2 5 8\n2\n5\n5\n5\n9\n9\n");
    usual_ = mine();
    EXPECT_EQ(usual_.exitCode, 0) << usual_.err;
    EXPECT_THAT(usual_.out, HasSubstr("{8}"));
  }

  std::string path(const std::string& name) const { return folder_.path(name); }
  ToolRun mine(const ToolSetting& setting = {}, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"mine", path("baskets"), "-s", "1n", "-c", "50%"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runKorassoc(arguments, setting);
  }
  // The run gave its whole result.
  void expectUsual(const ToolRun& run) const {
    EXPECT_EQ(run.exitCode, 0) << "signal " << run.signal;
    EXPECT_EQ(run.out, usual_.out);
  }

  TemporaryFolder folder_;
  ToolRun usual_;
};

class Opened {
 public:
  Opened(const std::string& path, int flags) : descriptor_(::open(path.c_str(), flags | O_CLOEXEC)) {}
  ~Opened() { ::close(descriptor_); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

TEST_F(StandardStreams, TakeNothingFromTheResultWhenStandardErrorIsFull) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
  const Opened full("/dev/full", O_WRONLY);
  ToolSetting setting;
  setting.descriptors = {{kErr, full.get()}};
  expectUsual(mine(setting));
  EXPECT_EQ(mine(setting, {"--max-sets", "2"}).exitCode, 4);  // nor from the exit code
}

TEST_F(StandardStreams, TakeNothingFromTheResultWhenStandardErrorIsClosed) {
  ToolSetting setting;
  setting.descriptors = {{kErr, kClosed}};
  expectUsual(mine(setting));
}

TEST_F(StandardStreams, TakeNothingFromTheResultWhenStandardErrorIsNoLongerRead) {
  Pipe pipe;
  pipe.closeReading();
  ToolSetting setting;
  setting.descriptors = {{kErr, pipe.writing()}};
  expectUsual(mine(setting));
}

TEST_F(StandardStreams, TakeNothingFromTheResultWhenStandardErrorMayNotGrow) {
  Pipe results;  // the limit is on files alone
  ToolSetting setting;
  setting.descriptors = {{kOut, results.writing()}};
  setting.fileSizeBytes = 10;
  const ToolRun run = mine(setting);
  EXPECT_EQ(run.exitCode, 0) << "signal " << run.signal;
  EXPECT_EQ(run.err, usual_.err.substr(0, 10));
  EXPECT_EQ(results.contents(), usual_.out);
}

// A file that is opened gets the least number that is free: without care it would be that of a closed stream,
// and hold what is said there.
TEST_F(StandardStreams, AreNotWrittenIntoFilesThatAreOpenedInTheirPlace) {
  const std::vector<std::string> options = {"--pmml", path("rules.xml"), "--lattice", path("lattice.xml")};
  ASSERT_EQ(mine({}, options).exitCode, 0);
  const std::string rules = folder_.contents("rules.xml");
  const std::string lattice = folder_.contents("lattice.xml");
  fs::remove(path("rules.xml"));
  fs::remove(path("lattice.xml"));
  ToolSetting setting;
  setting.descriptors = {{kIn, kClosed}, {kOut, kClosed}, {kErr, kClosed}};
  EXPECT_EQ(mine(setting, options).exitCode, 1);  // the table has no place to go
  EXPECT_EQ(folder_.contents("rules.xml"), rules);
  EXPECT_EQ(folder_.contents("lattice.xml"), lattice);
  EXPECT_THAT(folder_.names(), ElementsAre("baskets", "lattice.xml", "rules.xml"));
}

TEST_F(StandardStreams, AreAnErrorWhenStandardOutputIsClosed) {
  ToolSetting setting;
  setting.descriptors = {{kOut, kClosed}};
  const ToolRun run = mine(setting);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("korassoc: standard output: cannot be written: Bad file descriptor"));
}

TEST_F(StandardStreams, AreAnErrorWhenStandardInputIsClosed) {
  ToolSetting setting;
  setting.descriptors = {{kIn, kClosed}};
  const ToolRun run = runKorassoc({"mine", "-", "-s", "1n", "-c", "50%"}, setting);
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_THAT(run.err, HasSubstr("korassoc: standard input: cannot be read: Bad file descriptor"));
}

TEST_F(StandardStreams, AreAnErrorWhenStandardOutputMayNotGrow) {
  ToolSetting setting;
  setting.fileSizeBytes = 10;
  Pipe errors;  // the limit is on files alone
  setting.descriptors = {{kErr, errors.writing()}};
  const ToolRun run = mine(setting);
  EXPECT_EQ(run.exitCode, 1) << "signal " << run.signal;
  EXPECT_THAT(errors.contents(), HasSubstr("korassoc: standard output: cannot be written: File too large"));
}

TEST_F(StandardStreams, EndTheRunWithoutAWordWhenTheResultsAreNoLongerRead) {
  Pipe pipe;
  pipe.closeReading();
  ToolSetting setting;
  setting.descriptors = {{kOut, pipe.writing()}};
  const ToolRun run = mine(setting);
  EXPECT_EQ(run.signal, SIGPIPE) << run.exitCode;
  EXPECT_EQ(run.err.find("korassoc: "), std::string::npos) << run.err;
}

TEST_F(StandardStreams, AreAnErrorWhenTheResultsAreNoLongerReadAndTheSignalIsIgnored) {
  Pipe pipe;
  pipe.closeReading();
  ToolSetting setting;
  setting.descriptors = {{kOut, pipe.writing()}};
  setting.ignoredSignals = {SIGPIPE};
  const ToolRun run = mine(setting);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.err, HasSubstr("korassoc: standard output: cannot be written: Broken pipe"));
}

TEST_F(StandardStreams, AreNotMeantWhenADocumentIsNoLongerRead) {
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  // 4,082 itemsets: more than a pipe holds, so that the tool cannot be done before the reader leaves.
  folder_.store("baskets", "1 2 3 4 5 6 7 8 9 10 11 12\n");
  std::thread reader([this] { const Opened leaves(path("fifo"), O_RDONLY); });
  const ToolRun run = mine({}, {"--top", "1", "--lattice", path("fifo")});
  reader.join();
  EXPECT_EQ(run.exitCode, 1) << "signal " << run.signal;
  EXPECT_THAT(run.err, HasSubstr(path("fifo") + ": cannot be written: Broken pipe"));
}

}  // namespace
}  // namespace korassoc::cli
