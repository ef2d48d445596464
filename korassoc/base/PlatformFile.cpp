#include "korassoc/base/PlatformFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <random>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#if defined(_WIN32)
#include <io.h>
#include <share.h>
#include <stdio.h>
#else
#include <unistd.h>
#endif

namespace korassoc::detail {
namespace {

#if defined(_WIN32)

using Offset = long long;
constexpr int kShared = _O_RDWR | _O_CREAT | _O_BINARY | _O_NOINHERIT;
constexpr int kExclusive = _O_EXCL;

int openFile(const char* name, int flags) {
  int descriptor = -1;
  return _sopen_s(&descriptor, name, flags, _SH_DENYNO, _S_IREAD | _S_IWRITE) == 0 ? descriptor : -1;
}
long long readAt(int descriptor, std::uint64_t offset, char* bytes, std::size_t size) {
  if (_lseeki64(descriptor, static_cast<Offset>(offset), SEEK_SET) < 0) return -1;
  return _read(descriptor, bytes, static_cast<unsigned int>(size));
}
long long writeAt(int descriptor, std::uint64_t offset, const char* bytes, std::size_t size) {
  if (_lseeki64(descriptor, static_cast<Offset>(offset), SEEK_SET) < 0) return -1;
  return _write(descriptor, bytes, static_cast<unsigned int>(size));
}
bool setSize(int descriptor, std::uint64_t size) {
  return _chsize_s(descriptor, static_cast<Offset>(size)) == 0;
}
void closeAndRemove(int descriptor, const char* name) {
  _close(descriptor);  // an open file cannot be removed here, nor can its name come to mean another one
  std::remove(name);
}

#else

using Offset = off_t;
// Opening a pipe or a device by mistake neither waits nor makes it the controlling terminal.
constexpr int kShared = O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr int kExclusive = O_EXCL;

int openFile(const char* name, int flags) {
  int descriptor = -1;
  do {
    descriptor = ::open(name, flags, S_IRUSR | S_IWUSR);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}
long long readAt(int descriptor, std::uint64_t offset, char* bytes, std::size_t size) {
  return ::pread(descriptor, bytes, size, static_cast<Offset>(offset));
}
long long writeAt(int descriptor, std::uint64_t offset, const char* bytes, std::size_t size) {
  return ::pwrite(descriptor, bytes, size, static_cast<Offset>(offset));
}
bool setSize(int descriptor, std::uint64_t size) {
  int result = -1;
  do {
    result = ::ftruncate(descriptor, static_cast<Offset>(size));
  } while (result != 0 && errno == EINTR);
  return result == 0;
}
void closeAndRemove(int descriptor, const char* name) {
  struct stat open {};
  struct stat named {};
  if (::fstat(descriptor, &open) == 0 && ::stat(name, &named) == 0 && S_ISREG(open.st_mode) &&
      open.st_dev == named.st_dev && open.st_ino == named.st_ino) {
    ::unlink(name);
  }
  ::close(descriptor);
}

#endif

// One call reads or writes no more than this, which every system's types hold.
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

bool fitsOffset(std::uint64_t offset) {
  return offset <= static_cast<std::uint64_t>(std::numeric_limits<Offset>::max()) - kMostAtOnce;
}

// 128 random bits in hexadecimal digits; empty when the system has no source of them.
std::string randomDigits() {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  try {
    std::random_device random;
    for (int word = 0; word < 4; ++word) {
      unsigned int bits = random();
      for (int digit = 0; digit < 8; ++digit, bits >>= 4) digits += kDigits[bits & 15U];
    }
  } catch (const std::exception&) {
    digits.clear();
  }
  return digits;
}

}  // namespace

std::unique_ptr<PlatformFile> PlatformFile::open(std::string name, int flags) {
  std::unique_ptr<PlatformFile> file(new PlatformFile(-1, std::move(name)));
  file->descriptor_ = openFile(file->name_.c_str(), flags);
  return file->descriptor_ >= 0 ? std::move(file) : nullptr;
}

std::unique_ptr<PlatformFile> PlatformFile::createTemporary(std::string_view namePrefix) {
  std::error_code noDirectory;
  const std::filesystem::path directory = std::filesystem::temp_directory_path(noDirectory);
  if (noDirectory) return nullptr;
  // A name that is taken is an accident or an attack; a handful of others settles the accident.
  for (int attempt = 0; attempt < 8; ++attempt) {
    const std::string digits = randomDigits();
    if (digits.empty()) return nullptr;
    auto file = open((directory / (std::string(namePrefix) + digits)).string(), kShared | kExclusive);
    if (file != nullptr || errno != EEXIST) return file;
  }
  return nullptr;
}

std::unique_ptr<PlatformFile> PlatformFile::createNamed(const std::string& name) {
  auto file = open(name, kShared);
  // Where emptying fails the thing has no size (a device, a pipe): writing to it will tell.
  if (file != nullptr) static_cast<void>(file->resize(0));
  return file;
}

PlatformFile::~PlatformFile() {
  if (descriptor_ >= 0) closeAndRemove(descriptor_, name_.c_str());
}

std::size_t PlatformFile::read(std::uint64_t offset, char* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size && fitsOffset(offset)) {
    const long long got =
        readAt(descriptor_, offset + done, bytes + done, std::min(size - done, kMostAtOnce));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

bool PlatformFile::write(std::uint64_t offset, const char* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size && fitsOffset(offset)) {
    const long long put =
        writeAt(descriptor_, offset + done, bytes + done, std::min(size - done, kMostAtOnce));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) break;
    done += static_cast<std::size_t>(put);
  }
  return done == size;
}

bool PlatformFile::resize(std::uint64_t size) { return fitsOffset(size) && setSize(descriptor_, size); }

}  // namespace korassoc::detail
