#include "cli/input/Input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "cli/input/InputFile.h"
#include "cli/input/LineReader.h"
#include "tests/cli/ExpectError.h"
#include "tests/support/TemporaryFile.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace korassoc::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// A file to which something happens while it is read: once the first of its blocks, which are short, is
// taken.
class EventfulFile : public InputFile {
 public:
  EventfulFile(const std::string& path, std::function<void()> event)
      : InputFile(path), event_(std::move(event)) {}

  std::size_t read(char* to, std::size_t bytes) override {
    const std::size_t got = InputFile::read(to, std::min<std::size_t>(bytes, 1000));
    if (event_) std::exchange(event_, nullptr)();
    return got;
  }

 private:
  std::function<void()> event_;
};

// Bytes that come a few at a time, from a file of which the system says what the test makes it say.
class ScriptedSource : public ByteSource {
 public:
  ScriptedSource(std::string bytes, std::optional<FileStamp> first, std::optional<FileStamp> last)
      : bytes_(std::move(bytes)), first_(first), last_(last) {}

  std::size_t read(char* to, std::size_t bytes) override {
    const std::size_t got = std::min({bytes, bytes_.size() - taken_, std::size_t{7}});
    std::memcpy(to, bytes_.data() + taken_, got);
    taken_ += got;
    return got;
  }
  std::optional<FileStamp> stamp() override { return taken_ == 0 ? first_ : last_; }
  bool restart() override {
    taken_ = 0;
    return true;
  }

 private:
  std::string bytes_;
  std::size_t taken_ = 0;
  std::optional<FileStamp> first_, last_;
};

// 20,000 bytes of text, last modified an hour ago, so that the clock of files has moved on in any case.
class OldFile : public TemporaryFile {
 public:
  OldFile() : TemporaryFile(text()) {
    std::filesystem::last_write_time(name(),
                                     std::filesystem::last_write_time(name()) - std::chrono::hours(1));
  }
  static std::string text() {
    std::string lines;
    while (lines.size() < 20000) lines += "milk,beer\n";
    return lines;
  }
};

std::string textOf(Input input) {
  std::string text;
  char block[4096];
  while (const std::size_t got = input.read(block, sizeof block)) text.append(block, got);
  input.finish();
  return text;
}

// The text of a source of that kind.
template <typename Source, typename... Arguments>
std::string textOf(Arguments&&... arguments) {
  return textOf(Input(std::make_unique<Source>(std::forward<Arguments>(arguments)...), "FILE"));
}

// What is said about a file to which the event happens while it is read, without the file's name.
std::string refusalAfter(const OldFile& file, const std::function<void()>& event) {
  const std::string message = errorOf(ExitCode::kInput, [&] { textOf<EventfulFile>(file.name(), event); });
  EXPECT_THAT(message, StartsWith("FILE: another program changed it while it was read ("));
  EXPECT_THAT(message, HasSubstr("; try again"));
  const std::size_t from = message.find('(') + 1;
  return message.substr(from, message.find(')') - from);
}

TEST(Input, RefusesAFileThatIsCutShortWhileItIsRead) {
  const OldFile file;
  EXPECT_EQ(refusalAfter(file, [&] { std::filesystem::resize_file(file.name(), 5000); }),
            "20000 bytes at first, 5000 at the end");
  const OldFile other;
  EXPECT_EQ(refusalAfter(other, [&] { std::filesystem::resize_file(other.name(), 0); }),
            "20000 bytes at first, 0 at the end");
}

TEST(Input, RefusesAFileThatIsRewrittenWhileItIsRead) {
  const OldFile file;
  EXPECT_EQ(refusalAfter(file, [&] { file.write(std::string(20000, '7')); }),
            "20000 bytes as before, but written to");
}

TEST(Input, RefusesAFileToWhichALineIsAddedWhileItIsRead) {
  const OldFile file;
  EXPECT_EQ(
      refusalAfter(file, [&] { std::ofstream(file.name(), std::ios::app | std::ios::binary) << "bread\n"; }),
      "20000 bytes at first, 20006 at the end");
}

TEST(Input, RefusesAFileThatIsCutShortAndRefilledBehindAHole) {
  const OldFile file;
  EXPECT_EQ(refusalAfter(file,
                         [&] {
                           std::filesystem::resize_file(file.name(), 0);
                           std::filesystem::resize_file(file.name(), 20000);  // NUL bytes throughout
                         }),
            "20000 bytes as before, but written to");
}

TEST(Input, KeepsToTheFileThatItOpenedWhenAnotherTakesItsName) {
  const OldFile file;
  const TemporaryFile next("bread\n");
  EXPECT_EQ(textOf<EventfulFile>(file.name(), [&] { std::filesystem::rename(next.name(), file.name()); }),
            OldFile::text());
  const OldFile other;
  EXPECT_EQ(textOf<EventfulFile>(other.name(), [&] { std::filesystem::remove(other.name()); }),
            OldFile::text());
}

TEST(Input, DoesNotFollowAFileThatGrowsForEver) {
  class Growing : public InputFile {
   public:
    explicit Growing(const std::string& path)
        : InputFile(path), out_(path, std::ios::app | std::ios::binary) {}
    std::size_t read(char* to, std::size_t bytes) override {
      if (++reads_ == 1000) ADD_FAILURE() << "still reading";
      out_ << "milk,beer\n" << std::flush;
      return reads_ < 1000 ? InputFile::read(to, std::min<std::size_t>(bytes, 10)) : 0;
    }

   private:
    std::ofstream out_;
    int reads_ = 0;
  };
  for (const std::string text : {"", "milk,beer\n"}) {
    const TemporaryFile file(text);
    EXPECT_THAT(errorOf(ExitCode::kInput, [&] { textOf<Growing>(file.name()); }),
                HasSubstr("another program changed it while it was read"));
  }
}

TEST(Input, BeginsAgainWithTheFileAsItIsThen) {
  const OldFile file;
  Input input = Input::open(file.name());
  char block[100];
  ASSERT_EQ(input.read(block, sizeof block), sizeof block);
  file.write("bread\n");
  EXPECT_TRUE(input.restart());
  EXPECT_EQ(input.expectedBytes(), 6U);
  EXPECT_EQ(textOf(std::move(input)), "bread\n");
}

TEST(Input, JudgesByWhatTheSystemSaysOfTheFile) {
  const std::string text = "milk,beer\n";
  const FileStamp whole{10, 0, 1000, 500};
  const FileStamp behind{25, 15, 1000, 500};  // 15 bytes have been read by someone else
  struct Case {
    const char* what;
    std::optional<FileStamp> first, last;
    const char* said;  // nullptr: the content is taken
  };
  const Case cases[] = {
      {"a pipe", std::nullopt, std::nullopt, nullptr},
      {"a file as it was", whole, whole, nullptr},
      {"its rest", behind, behind, nullptr},
      {"a file of the system, without a size", FileStamp{}, FileStamp{}, nullptr},
      {"another size", whole, FileStamp{9, 0, 1000, 500}, "(10 bytes at first, 9 at the end)"},
      {"another second", whole, FileStamp{10, 0, 999, 500}, "(10 bytes as before, but written to)"},
      {"another nanosecond", whole, FileStamp{10, 0, 1000, 501}, "(10 bytes as before, but written to)"},
      {"less than its size", FileStamp{11, 0, 1, 1}, FileStamp{11, 0, 1, 1}, "11 bytes, but 10 were read; "},
      {"more than its size", FileStamp{8, 0, 1, 1}, FileStamp{8, 0, 1, 1}, "8 bytes, but 10 were read; "},
      {"a size beyond any memory", FileStamp{std::uint64_t{1} << 62, 0, 1, 1},
       FileStamp{std::uint64_t{1} << 62, 0, 1, 1}, "4611686018427387904 bytes, but 10 were read; "},
      {"a position behind the end", FileStamp{5, 8, 1, 1}, FileStamp{5, 8, 1, 1}, " 0 bytes, but "}};
  for (const Case& c : cases) {
    const auto read = [&] { return textOf<ScriptedSource>(text, c.first, c.last); };
    if (c.said == nullptr) {
      EXPECT_EQ(read(), text) << c.what;
    } else {
      EXPECT_THAT(errorOf(ExitCode::kInput, read), HasSubstr(c.said)) << c.what;
    }
  }
}

// The size that a file claims sizes nothing that would not be there.
TEST(Input, IsReadWhateverSizeItClaims) {
  const std::string lines[] = {"1 2\n", "milk,beer\n"};
  for (const std::string& line : lines) {
    std::string text;
    while (text.size() < 300000) text += line;
    for (const int bits : {35, 39, 45, 62, 63}) {
      const FileStamp stamp{std::uint64_t{1} << bits, 0, 1, 1};
      EXPECT_THAT(
          errorOf(ExitCode::kInput,
                  [&] {
                    LineReader().read(Input(std::make_unique<ScriptedSource>(text, stamp, stamp), "FILE"));
                  }),
          HasSubstr("bytes, but 300"))
          << bits;
    }
  }
}

TEST(Input, RefusesAMissingFile) {
  EXPECT_EQ(
      errorOf(ExitCode::kInput, [] { textOf(Input::open("/no/such/baskets.csv")); }),
      "/no/such/baskets.csv: cannot be read: No such file or directory; check the path and its permissions");
}

TEST(Input, RefusesADirectory) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(errorOf(ExitCode::kInput, [&] { textOf(Input::open(folder)); }),
            folder + ": is a directory; give the basket file in it");
}

TEST(Input, RefusesAnEmptyName) {
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { textOf(Input::open("")); }), HasSubstr("file name is empty"));
}

TEST(Input, NamesAFileInOneLineWhateverItIsCalled) {
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { textOf(Input::open("/no/such\nfile")); }),
              HasSubstr("/no/such\\nfile: cannot be read"));
}

#if !defined(_WIN32)
TEST(Input, ReadsANamedPipeToItsEnd) {
  const TemporaryFile pipe;
  ASSERT_EQ(::mkfifo(pipe.name().c_str(), 0600), 0);
  std::thread writer([&pipe] { std::ofstream(pipe.name(), std::ios::binary) << OldFile::text(); });
  EXPECT_EQ(textOf(Input::open(pipe.name())), OldFile::text());
  writer.join();
}
#endif

#if defined(__linux__)
TEST(Input, ReportsAReadThatFails) {
  // The first page of a process is never mapped: opening succeeds, reading does not.
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { textOf(Input::open("/proc/self/mem")); }),
              HasSubstr("/proc/self/mem: cannot be read: "));
}

TEST(Input, ReadsFilesThatTellNoSize) {
  EXPECT_THAT(textOf(Input::open("/proc/self/status")), HasSubstr("Pid:"));
}
#endif

}  // namespace
}  // namespace korassoc::cli
