#include "cli/input/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace korassoc::cli {
namespace {

// The calls that are named differently, or take other types, on Windows.
#if defined(_WIN32)
using FileInfo = struct _stat64;
constexpr int kStandardInput = 0;
constexpr std::size_t kLongestRead = std::size_t{1} << 30;

int openForReading(const char* path) { return ::_open(path, _O_RDONLY | _O_BINARY); }
void binaryMode(int descriptor) { ::_setmode(descriptor, _O_BINARY); }
std::int64_t readSome(int descriptor, char* to, std::size_t bytes) {
  return ::_read(descriptor, to, static_cast<unsigned int>(bytes));
}
std::int64_t seek(int descriptor, std::int64_t to, int from) { return ::_lseeki64(descriptor, to, from); }
void closeFile(int descriptor) { ::_close(descriptor); }
bool look(int descriptor, FileInfo& info) { return ::_fstat64(descriptor, &info) == 0; }
bool isDirectory(const FileInfo& info) { return (info.st_mode & _S_IFMT) == _S_IFDIR; }
bool isRegular(const FileInfo& info) { return (info.st_mode & _S_IFMT) == _S_IFREG; }
std::int64_t nanosecondsOf(const FileInfo&) { return 0; }
#else
using FileInfo = struct stat;
constexpr int kStandardInput = STDIN_FILENO;
constexpr std::size_t kLongestRead = std::size_t{1} << 30;  // some systems refuse 2 GiB and more

int openForReading(const char* path) { return ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY); }
void binaryMode(int) {}
std::int64_t readSome(int descriptor, char* to, std::size_t bytes) {
  ssize_t got = 0;
  do {
    got = ::read(descriptor, to, bytes);
  } while (got < 0 && errno == EINTR);
  return got;
}
std::int64_t seek(int descriptor, std::int64_t to, int from) {
  return ::lseek(descriptor, static_cast<off_t>(to), from);
}
void closeFile(int descriptor) { ::close(descriptor); }
bool look(int descriptor, FileInfo& info) { return ::fstat(descriptor, &info) == 0; }
bool isDirectory(const FileInfo& info) { return S_ISDIR(info.st_mode); }
bool isRegular(const FileInfo& info) { return S_ISREG(info.st_mode); }
#if defined(__APPLE__)
std::int64_t nanosecondsOf(const FileInfo& info) { return info.st_mtimespec.tv_nsec; }
#else
std::int64_t nanosecondsOf(const FileInfo& info) { return info.st_mtim.tv_nsec; }
#endif
#endif

std::int64_t positionOf(int descriptor) {
  return std::max<std::int64_t>(seek(descriptor, 0, SEEK_CUR), 0);  // a pipe has none
}

[[noreturn]] void fail(int error) { throw std::system_error(error, std::generic_category()); }

}  // namespace

InputFile::InputFile(const std::string& path)
    : descriptor_(path == "-" ? kStandardInput : openForReading(path.c_str())) {
  if (descriptor_ < 0) fail(errno);
  binaryMode(descriptor_);
  start_ = positionOf(descriptor_);
  FileInfo info{};
  // The destructor does not run for an object that is not made.
  const int error = !look(descriptor_, info) ? errno : isDirectory(info) ? EISDIR : 0;
  if (error == 0) return;
  if (descriptor_ != kStandardInput) closeFile(descriptor_);
  fail(error);
}

InputFile::~InputFile() {
  if (descriptor_ != kStandardInput) closeFile(descriptor_);
}

std::size_t InputFile::read(char* to, std::size_t bytes) {
  const std::int64_t got = readSome(descriptor_, to, std::min(bytes, kLongestRead));
  if (got < 0) fail(errno);
  return static_cast<std::size_t>(got);
}

std::optional<FileStamp> InputFile::stamp() {
  FileInfo info{};
  if (!look(descriptor_, info)) fail(errno);
  if (!isRegular(info)) return std::nullopt;
  FileStamp stamp;
  stamp.size = static_cast<std::uint64_t>(std::max<std::int64_t>(info.st_size, 0));
  stamp.position = static_cast<std::uint64_t>(positionOf(descriptor_));
  stamp.modifiedSeconds = info.st_mtime;
  stamp.modifiedNanoseconds = nanosecondsOf(info);
  return stamp;
}

bool InputFile::restart() {
  FileInfo info{};
  if (!look(descriptor_, info)) fail(errno);
  return isRegular(info) && seek(descriptor_, start_, SEEK_SET) == start_;
}

}  // namespace korassoc::cli
