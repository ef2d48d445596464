// Signals that end the tool, at every stage of a run: what they leave behind, and what a shell sees.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/cli/Pipe.h"
#include "tests/cli/RunKorassoc.h"
#include "tests/cli/TemporaryFolder.h"

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

// The subsets of one basket are stored for good. Items that come alone, and once again much later, then find no
// room, and the file that takes them is there for most of the first pass.
std::string basketsThatSpill(int itemsOfTheOne, int itemsAlone) {
  std::string basket;
  for (int item = 1; item <= itemsOfTheOne; ++item) basket += std::to_string(item) + ' ';
  std::string text;
  for (int i = 0; i < itemsOfTheOne + 2; ++i) text += basket + '\n';
  for (int turn = 0; turn < 2; ++turn) {
    for (int item = 0; item < itemsAlone; ++item) text += std::to_string(100 + item) + '\n';
  }
  return text;
}

class Signals : public testing::Test {
 protected:
  Signals() { fs::create_directory(folder_.path("spill")); }

  std::vector<std::string> mine(const std::string& baskets,
                                const std::vector<std::string>& options = {}) const {
    baskets_.store("baskets", baskets);
    std::vector<std::string> arguments = {
        "mine",    baskets_.path("baskets"), "-s", "2n", "-c", "10%", "--approximate", "--max-sets", "300",
        "--spill", folder_.path("spill")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
  }
  std::vector<std::string> spilled() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.path("spill")))
      names.push_back(entry.path().filename().string());
    return names;
  }
  // A tool that spills at this moment, or did so a short time ago. It cannot end by itself before somebody reads
  // its results: they are more than a pipe holds.
  std::unique_ptr<StartedTool> toolThatSpills(const Pipe& results, ToolSetting setting = {}) const {
    setting.descriptors = {{STDOUT_FILENO, results.writing()}};
    const auto arguments = mine(basketsThatSpill(7, 3000));
    for (int attempt = 0; attempt < 10; ++attempt) {  // this process may sleep for all of the time
      auto tool = std::make_unique<StartedTool>(arguments, setting);
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
      while (std::chrono::steady_clock::now() < end) {
        const auto names = spilled();
        if (names.empty()) continue;
        EXPECT_THAT(names, ElementsAre(MatchesRegex("korassoc-[0-9a-f]{16}[.]spill")));
        return tool;
      }
    }
    ADD_FAILURE() << "no spill file was seen";
    return std::make_unique<StartedTool>(arguments, setting);
  }

  TemporaryFolder baskets_, folder_;
};

TEST_F(Signals, EndTheRunAsTheyUsuallyDoAndLeaveNoFile) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU}) {
    const Pipe unread;
    const auto tool = toolThatSpills(unread);
    tool->send(signal);
    const ToolRun run = tool->wait();
    EXPECT_EQ(run.signal, signal) << run.exitCode;
    EXPECT_THAT(run.err, Not(HasSubstr("korassoc: ")));
    EXPECT_THAT(spilled(), IsEmpty()) << signal;
  }
}

TEST_F(Signals, EndARunThatWaitsForItsInput) {
  ASSERT_EQ(::mkfifo(baskets_.path("fifo").c_str(), 0600), 0);
  const Pipe silent;
  ToolSetting reads;
  reads.descriptors = {{STDIN_FILENO, silent.reading()}};
  for (const int waits : {50, 0}) {  // so long, or not even until it has begun
    StartedTool opens({"mine", baskets_.path("fifo"), "-s", "2n", "-c", "10%"});
    StartedTool reader({"mine", "-", "-s", "2n", "-c", "10%"}, reads);
    std::this_thread::sleep_for(milliseconds(waits));
    opens.send(SIGTERM);
    reader.send(SIGINT);
    EXPECT_EQ(opens.wait().signal, SIGTERM);
    EXPECT_EQ(reader.wait().signal, SIGINT);
  }
}

TEST_F(Signals, ThatWereIgnoredAtTheStartStayIgnored) {
  Pipe results;
  ToolSetting nohup;
  nohup.ignoredSignals = {SIGHUP, SIGINT};
  const auto tool = toolThatSpills(results, nohup);
  tool->send(SIGHUP);
  tool->send(SIGINT);
  EXPECT_THAT(results.contents(), HasSubstr("{7}"));
  const ToolRun run = tool->wait();
  EXPECT_EQ(run.exitCode, 0) << run.signal;
  EXPECT_THAT(spilled(), IsEmpty());
}

TEST_F(Signals, OfAReaderThatLeavesLeaveNoFileEither) {
  Pipe pipe;
  const auto tool = toolThatSpills(pipe);
  pipe.closeReading();
  EXPECT_EQ(tool->wait().signal, SIGPIPE);
  EXPECT_THAT(spilled(), IsEmpty());
}

// At moments spread over the run, so that some of the signals meet it while it writes documents.
TEST_F(Signals, LeaveWholeDocumentsAndNothingElseWheneverTheyCome) {
  constexpr int kRuns = 30;
  const auto arguments = mine(basketsThatSpill(6, 500), {"--pmml", folder_.path("rules.xml"), "--lattice",
                                                         folder_.path("lattice.xml")});
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(runKorassoc(arguments).exitCode, 0);
  const auto whole = std::chrono::steady_clock::now() - begin;
  const std::string rules = folder_.contents("rules.xml");
  const std::string lattice = folder_.contents("lattice.xml");
  int ended = 0;
  for (int i = 0; i < kRuns; ++i) {
    folder_.store("rules.xml", "before");
    folder_.store("lattice.xml", "before");
    StartedTool tool(arguments);
    std::this_thread::sleep_for(whole * i / kRuns);
    tool.send(i % 2 == 0 ? SIGTERM : SIGINT);
    const ToolRun run = tool.wait();
    if (run.signal != 0) ++ended;
    EXPECT_THAT(folder_.names(), ElementsAre("lattice.xml", "rules.xml", "spill")) << i;
    EXPECT_THAT(spilled(), IsEmpty()) << i;
    EXPECT_THAT(folder_.contents("rules.xml"), AnyOf("before", rules)) << i;
    EXPECT_THAT(folder_.contents("lattice.xml"), AnyOf("before", lattice)) << i;
  }
  EXPECT_GT(ended, 0);
}

}  // namespace
}  // namespace korassoc::cli
