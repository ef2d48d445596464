#include "cli/input/FileContent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "cli/input/InputFile.h"
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

// What is said about a file to which the event happens while it is read, without the file's name.
std::string refusalAfter(const OldFile& file, const std::function<void()>& event) {
  EventfulFile source(file.name(), event);
  const std::string message = errorOf(ExitCode::kInput, [&] { FileContent::take(source, "FILE"); });
  EXPECT_THAT(message, StartsWith("FILE: another program changed it while it was read ("));
  EXPECT_THAT(message, HasSubstr("; try again"));
  const std::size_t from = message.find('(') + 1;
  return message.substr(from, message.find(')') - from);
}

TEST(FileContent, HoldsTheBytesOfAFile) {
  const TemporaryFile file(std::string_view("a\0b\n", 4));
  const FileContent content = FileContent::open(file.name());
  EXPECT_EQ(content.bytes(), std::string_view("a\0b\n", 4));
  EXPECT_EQ(content.name(), file.name());
}

TEST(FileContent, IsEmptyForAnEmptyFile) {
  const TemporaryFile file("");
  EXPECT_EQ(FileContent::open(file.name()).bytes().size(), 0U);
}

TEST(FileContent, KeepsItsBytesWhenItIsMoved) {
  const TemporaryFile file("bread\n");
  FileContent first = FileContent::open(file.name());
  FileContent second = std::move(first);
  EXPECT_EQ(second.bytes(), "bread\n");
  second = FileContent::open(file.name());
  EXPECT_EQ(second.bytes(), "bread\n");
}

TEST(FileContent, RefusesAFileThatIsCutShortWhileItIsRead) {
  const OldFile file;
  EXPECT_EQ(refusalAfter(file, [&] { std::filesystem::resize_file(file.name(), 5000); }),
            "20000 bytes at first, 5000 at the end");
  const OldFile other;
  EXPECT_EQ(refusalAfter(other, [&] { std::filesystem::resize_file(other.name(), 0); }),
            "20000 bytes at first, 0 at the end");
}

TEST(FileContent, RefusesAFileThatIsRewrittenWhileItIsRead) {
  const OldFile file;
  EXPECT_EQ(refusalAfter(file, [&] { file.write(std::string(20000, '7')); }),
            "20000 bytes as before, but written to");
}

TEST(FileContent, RefusesAFileToWhichALineIsAddedWhileItIsRead) {
  const OldFile file;
  EXPECT_EQ(
      refusalAfter(file, [&] { std::ofstream(file.name(), std::ios::app | std::ios::binary) << "bread\n"; }),
      "20000 bytes at first, 20006 at the end");
}

TEST(FileContent, RefusesAFileThatIsCutShortAndRefilledBehindAHole) {
  const OldFile file;
  EXPECT_EQ(refusalAfter(file,
                         [&] {
                           std::filesystem::resize_file(file.name(), 0);
                           std::filesystem::resize_file(file.name(), 20000);  // NUL bytes throughout
                         }),
            "20000 bytes as before, but written to");
}

TEST(FileContent, KeepsToTheFileThatItOpenedWhenAnotherTakesItsName) {
  const OldFile file;
  const TemporaryFile next("bread\n");
  EventfulFile replaced(file.name(), [&] { std::filesystem::rename(next.name(), file.name()); });
  EXPECT_EQ(FileContent::take(replaced, "FILE").bytes(), OldFile::text());
  const OldFile other;
  EventfulFile removed(other.name(), [&] { std::filesystem::remove(other.name()); });
  EXPECT_EQ(FileContent::take(removed, "FILE").bytes(), OldFile::text());
}

TEST(FileContent, DoesNotFollowAFileThatGrowsForEver) {
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
    Growing source(file.name());
    EXPECT_THAT(errorOf(ExitCode::kInput, [&] { FileContent::take(source, "FILE"); }),
                HasSubstr("another program changed it while it was read"));
  }
}

TEST(FileContent, JudgesByWhatTheSystemSaysOfTheFile) {
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
      {"another size", whole, FileStamp{9, 0, 1000, 500}, "10 bytes at first, 9 at the end"},
      {"another second", whole, FileStamp{10, 0, 999, 500}, "10 bytes as before, but written to"},
      {"another nanosecond", whole, FileStamp{10, 0, 1000, 501}, "10 bytes as before, but written to"},
      {"less than its size", FileStamp{11, 0, 1, 1}, FileStamp{11, 0, 1, 1},
       "11 bytes to read, but 10 were found"},
      {"more than its size", FileStamp{8, 0, 1, 1}, FileStamp{8, 0, 1, 1},
       "8 bytes to read, but 10 were found"},
      {"a size beyond any memory", FileStamp{std::uint64_t{1} << 62, 0, 1, 1},
       FileStamp{std::uint64_t{1} << 62, 0, 1, 1}, "4611686018427387904 bytes to read, but 10 were found"},
      {"a position behind the end", FileStamp{5, 8, 1, 1}, FileStamp{5, 8, 1, 1}, "0 bytes to read, but "}};
  for (const Case& c : cases) {
    ScriptedSource source(text, c.first, c.last);
    if (c.said == nullptr) {
      EXPECT_EQ(FileContent::take(source, "FILE").bytes(), text) << c.what;
    } else {
      EXPECT_THAT(errorOf(ExitCode::kInput, [&] { FileContent::take(source, "FILE"); }),
                  HasSubstr("(" + std::string(c.said)))
          << c.what;
    }
  }
}

TEST(FileContent, TakesWhatComesInShortBlocks) {
  std::string text;
  while (text.size() < 300000) text += std::to_string(text.size()) + "\n";
  ScriptedSource pipe(text, std::nullopt, std::nullopt);
  EXPECT_EQ(FileContent::take(pipe, "FILE").bytes(), text);
  const FileStamp stamp{text.size(), 0, 1, 1};
  ScriptedSource file(text, stamp, stamp);
  EXPECT_EQ(FileContent::take(file, "FILE").bytes(), text);
}

TEST(FileContent, RefusesAMissingFile) {
  EXPECT_EQ(
      errorOf(ExitCode::kInput, [] { FileContent::open("/no/such/baskets.csv"); }),
      "/no/such/baskets.csv: cannot be read: No such file or directory; check the path and its permissions");
}

TEST(FileContent, RefusesADirectory) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(errorOf(ExitCode::kInput, [&] { FileContent::open(folder); }),
            folder + ": is a directory; give the basket file in it");
}

TEST(FileContent, RefusesAnEmptyName) {
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { FileContent::open(""); }), HasSubstr("file name is empty"));
}

TEST(FileContent, NamesAFileInOneLineWhateverItIsCalled) {
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { FileContent::open("/no/such\nfile"); }),
              HasSubstr("/no/such\\nfile: cannot be read"));
}

#if !defined(_WIN32)
TEST(FileContent, ReadsANamedPipeToItsEnd) {
  const TemporaryFile pipe;
  ASSERT_EQ(::mkfifo(pipe.name().c_str(), 0600), 0);
  std::thread writer([&pipe] { std::ofstream(pipe.name(), std::ios::binary) << OldFile::text(); });
  EXPECT_EQ(FileContent::open(pipe.name()).bytes(), OldFile::text());
  writer.join();
}
#endif

#if defined(__linux__)
TEST(FileContent, ReportsAReadThatFails) {
  // The first page of a process is never mapped: opening succeeds, reading does not.
  EXPECT_THAT(errorOf(ExitCode::kInput, [] { FileContent::open("/proc/self/mem"); }),
              HasSubstr("/proc/self/mem: cannot be read: "));
}

TEST(FileContent, ReadsFilesThatTellNoSize) {
  EXPECT_THAT(std::string(FileContent::open("/proc/self/status").bytes()), HasSubstr("Pid:"));
}

TEST(FileContent, EndsAtTheFirstNulOfAnEndlessDevice) {
  const FileContent content = FileContent::open("/dev/zero");
  ASSERT_GE(content.bytes().size(), 1U);
  EXPECT_EQ(content.bytes()[0], '\0');
}
#endif

}  // namespace
}  // namespace korassoc::cli
