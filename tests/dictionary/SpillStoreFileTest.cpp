// The file that a spill store works on: which it takes, which it leaves alone, and what is left of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#endif

#include "korassoc/dictionary/SpillStore.h"
#include "tests/support/SpillFileReader.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

using ::testing::IsEmpty;

TEST(SpillStoreFile, IsRemovedWithTheStore) {
  const TemporaryFile file;
  {
    const SpillStore store(nullptr, file.name().c_str(), 1, 1);
    EXPECT_TRUE(std::filesystem::exists(file.name()));
    EXPECT_EQ(store.fileName(), file.name());
  }
  EXPECT_FALSE(std::filesystem::exists(file.name()));
}

TEST(SpillStoreFile, IsRemovedWhenAnExceptionUnwinds) {
  const TemporaryFile file;
  try {
    const SpillStore store(nullptr, file.name().c_str(), 1, 1);
    throw 1;
  } catch (int) {
  }
  EXPECT_FALSE(std::filesystem::exists(file.name()));
}

constexpr std::size_t kFileSize = 8U + 13U * 737279U;

// What a store leaves behind in a process that is ended: a header and two sets.
std::string leftover() {
  std::string bytes(kFileSize, '\0');
  bytes[0] = 2;
  const char slots[26] = {1, 7, 0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0, 2, 7, 0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0};
  bytes.replace(8 + 13 * 7, sizeof slots, slots, sizeof slots);
  return bytes;
}

std::string withByte(std::string bytes, std::size_t offset, char byte) {
  bytes[offset] = byte;
  return bytes;
}

bool holds(const TemporaryFile& file, const std::string& contents) {
  std::ifstream in(file.name(), std::ios::binary);
  std::string found(contents.size() + 1, '\0');
  in.read(found.data(), static_cast<std::streamsize>(found.size()));
  return static_cast<std::size_t>(in.gcount()) == contents.size() && found.starts_with(contents);
}

TEST(SpillStoreFile, TakesOverAnEmptyFileAndWhatAStoreLeftBehind) {
  const std::pair<const char*, std::string> cases[] = {
      {"empty", ""},
      {"laid out, the header still missing", std::string(kFileSize, '\0')},
      {"with sets", leftover()},
      {"a slot half written", withByte(leftover(), 8 + 13 * 9 + 3, 'x')}};
  for (const auto& [what, contents] : cases) {
    const TemporaryFile file(contents);
    SpillStore store(nullptr, file.name().c_str(), 1, 1);
    ASSERT_TRUE(store.isOpen()) << what;
    const DiskImage image = readSpillFile(file.name(), 1);
    EXPECT_EQ(image.size, kFileSize) << what;
    EXPECT_EQ(image.levelPlusOne, 2) << what;
    EXPECT_THAT(image.slots, IsEmpty()) << what;
  }
}

TEST(SpillStoreFile, LeavesAnythingElseOfItsNameAsItIs) {
  const std::pair<const char*, std::string> cases[] = {
      {"a byte", "x"},
      {"a text", std::string(20000, 'x')},
      {"a byte short", leftover().substr(1)},
      {"a byte too long", leftover() + '\0'},
      {"of a store of pairs", std::string(8U + 17U * 737279U, '\0')},
      {"an impossible state byte in the first slot", withByte(leftover(), 8, 3)},
      {"and in the last", withByte(leftover(), kFileSize - 13, -1)},
      {"as long as a spill file, but text", std::string(kFileSize, 'x')}};
  for (const auto& [what, contents] : cases) {
    const TemporaryFile file(contents);
    {
      SpillStore store(nullptr, file.name().c_str(), 1, 1);
      EXPECT_FALSE(store.isOpen()) << what;
      EXPECT_EQ(store.fileName(), file.name()) << what;
      ItemSet set(3);
      SetCounter counter(5, 0);
      EXPECT_EQ(store.add(&set, &counter), 1) << what;
    }
    EXPECT_TRUE(holds(file, contents)) << what;
  }
}

TEST(SpillStoreFile, IsUsedByOneStoreAtATime) {
  const TemporaryFile file;
  auto first = std::make_unique<SpillStore>(nullptr, file.name().c_str(), 1, 1);
  ItemSet set(3);
  SetCounter counter(5, 0);
  {
    SpillStore second(nullptr, file.name().c_str(), 1, 1);
    EXPECT_FALSE(second.isOpen());
    EXPECT_EQ(first->add(&set, &counter), 0);
    EXPECT_EQ(second.add(&set, &counter), 1);
  }
  EXPECT_EQ(readSpillFile(file.name(), 1).slots.size(), 1U) << "the second one's end removes nothing";
  first.reset();
  EXPECT_FALSE(std::filesystem::exists(file.name()));
  EXPECT_TRUE(SpillStore(nullptr, file.name().c_str(), 1, 1).isOpen());
}

TEST(SpillStoreFile, IsOutOfEverybodysReachWhenNoNameIsGiven) {
  SpillStore first(nullptr, nullptr, 1, 1);
  SpillStore second(nullptr, "", 1, 1);
  ASSERT_TRUE(first.isOpen());
  ASSERT_TRUE(second.isOpen());
  EXPECT_NE(first.fileName(), second.fileName());
  for (SpillStore* store : {&first, &second}) {
    EXPECT_EQ(std::filesystem::path(store->fileName()).parent_path(), temporaryFolder());
#if !defined(_WIN32)
    EXPECT_FALSE(std::filesystem::exists(store->fileName()));
#endif
  }
  ItemSet set(3);
  SetCounter counter(5, 0);
  EXPECT_EQ(first.add(&set, &counter), 0);
  EXPECT_TRUE(first.contains(&set));
  EXPECT_FALSE(second.contains(&set));
}

#if !defined(_WIN32)
TEST(SpillStoreFile, LeavesNoFileInTheTemporaryFolderOfAProcessThatIsKilled) {
  const TemporaryFile folder;
  std::filesystem::create_directory(folder.name());
  const pid_t child = fork();
  if (child == 0) {
    setenv("TMPDIR", folder.name().c_str(), 1);
    const SpillStore store(nullptr, nullptr, 1, 1);
    if (!store.isOpen()) _exit(1);
    raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_TRUE(std::filesystem::is_empty(folder.name()));
}

TEST(SpillStoreFile, IsTakenOverFromAProcessThatWasKilled) {
  const TemporaryFile file;
  const pid_t child = fork();
  if (child == 0) {
    SpillStore store(nullptr, file.name().c_str(), 1, 1);
    ItemSet set(3);
    SetCounter counter(5, 0);
    if (store.add(&set, &counter) != 0) _exit(1);
    raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  ASSERT_EQ(readSpillFile(file.name(), 1).slots.size(), 1U);
  {
    const SpillStore store(nullptr, file.name().c_str(), 1, 1);
    EXPECT_TRUE(store.isOpen());
    EXPECT_THAT(readSpillFile(file.name(), 1).slots, IsEmpty());
  }
  EXPECT_FALSE(std::filesystem::exists(file.name()));
}
#endif

TEST(SpillStoreFile, WithoutItTheStoreAnswersAbsent) {
  const TemporaryFile missing;
  const std::string cases[] = {missing.name() + "/no/such/directory",
                               std::filesystem::temp_directory_path().string()};
  for (const std::string& name : cases) {
    const StreamCapture out(std::cout);
    SpillStore store(nullptr, name.c_str(), 1, 1);
    EXPECT_FALSE(store.isOpen());
    ItemSet set(3);
    SetCounter counter(5, 0);
    EXPECT_EQ(store.add(&set, &counter), 1);
    EXPECT_FALSE(store.contains(&set));
    EXPECT_EQ(store.find(&set), nullptr);
    EXPECT_EQ(store.increment(&set), nullptr);
    EXPECT_EQ(store.reduce(1, 2.0), 0);
    EXPECT_EQ(store.size(), 0);
    EXPECT_EQ(store.writtenCount(), 0);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(store.fileName(), name);
  }
  EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::temp_directory_path()));
}

TEST(SpillStoreFile, CannotBeMadeForANegativeLevel) {
  const TemporaryFile file;
  SpillStore store(nullptr, file.name().c_str(), 1, -3);
  ItemSet set(3);
  SetCounter counter(5, 0);
  EXPECT_EQ(store.add(&set, &counter), 1);
  EXPECT_FALSE(std::filesystem::exists(file.name()));
}

}  // namespace
