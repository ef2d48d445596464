#include "korassoc/base/PlatformFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <utility>

#include <sys/stat.h>
#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// The others need it.
#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace korassoc::detail {
namespace {

enum class Lock { kMine, kTaken, kNone };  // kNone: the file system has no locks

#if defined(_WIN32)

using Offset = long long;

// Files are opened without following links. Everybody may read and write them meanwhile.
HANDLE openHandle(const char* name, DWORD disposition, DWORD moreAccess, DWORD flags) {
  const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | (moreAccess == DELETE ? FILE_SHARE_DELETE : 0);
  return CreateFileA(name, GENERIC_READ | GENERIC_WRITE | moreAccess, share, nullptr, disposition,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT | flags, nullptr);
}

// The lock lies on one byte far behind every end, so that it is in nobody's way.
Lock lock(HANDLE file) {
  OVERLAPPED place{};
  place.OffsetHigh = 0x40000000;
  if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0)
    return Lock::kMine;
  return GetLastError() == ERROR_LOCK_VIOLATION ? Lock::kTaken : Lock::kNone;
}

// Whether the token names this owner as its user, or as the owner of what the user makes (for those who act
// as administrators it is the group of them).
bool tokenNames(HANDLE token, TOKEN_INFORMATION_CLASS whom, PSID owner) {
  alignas(TOKEN_USER) char answer[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD length = 0;
  if (GetTokenInformation(token, whom, answer, sizeof answer, &length) == 0) return false;
  PSID named = nullptr;
  std::memcpy(&named, answer, sizeof named);  // the first member of what either question is answered with
  return EqualSid(named, owner) != 0;
}

bool belongsToUser(HANDLE file) {
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR holder = nullptr;
  if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                      &holder) != ERROR_SUCCESS) {
    return false;
  }
  HANDLE token = nullptr;
  bool same = false;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) != 0) {
    same = tokenNames(token, TokenUser, owner) || tokenNames(token, TokenOwner, owner);
    CloseHandle(token);
  }
  LocalFree(holder);
  return same;
}

bool isOwn(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION status{};
  constexpr DWORD kOthers = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE;
  return GetFileInformationByHandle(file, &status) != 0 && (status.dwFileAttributes & kOthers) == 0 &&
         status.nNumberOfLinks == 1 && belongsToUser(file);
}

// The descriptor of a handle that is good, else -1.
int descriptorOf(HANDLE file, bool good) {
  if (file == INVALID_HANDLE_VALUE) return -1;
  const int descriptor =
      good ? _open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_RDWR | _O_BINARY) : -1;
  if (descriptor < 0) CloseHandle(file);
  return descriptor;
}

HANDLE makeHandle(const char* name, DWORD moreAccess, DWORD flags) {
  const HANDLE file = openHandle(name, CREATE_NEW, moreAccess, flags);
  errno = file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS ? EEXIST : 0;
  return file;
}

// The system removes it when its last handle is closed, also that of a process that is ended.
int openTemporary(const char* name) {
  const HANDLE file = makeHandle(name, DELETE, FILE_FLAG_DELETE_ON_CLOSE);
  return descriptorOf(file, true);
}
int openNew(const char* name) {
  const HANDLE file = makeHandle(name, 0, 0);
  if (file == INVALID_HANDLE_VALUE) return -1;
  return descriptorOf(file, GetFileType(file) == FILE_TYPE_DISK && lock(file) != Lock::kTaken);
}
int openOwn(const char* name) {
  const HANDLE file = openHandle(name, OPEN_EXISTING, 0, 0);
  if (file == INVALID_HANDLE_VALUE) return -1;
  return descriptorOf(file, GetFileType(file) == FILE_TYPE_DISK && isOwn(file) && lock(file) == Lock::kMine);
}

long long sizeOf(int descriptor) { return _filelengthi64(descriptor); }
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
void closeOnly(int descriptor) { _close(descriptor); }
void closeAndRemove(int descriptor, const char* name) {
  _close(descriptor);  // an open file cannot be removed here, nor can its name come to mean another one
  std::remove(name);
}

#else

using Offset = off_t;
// Opening a pipe or a device by mistake neither waits nor makes it the controlling terminal.
constexpr int kExisting = O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;
constexpr int kNew = kExisting | O_CREAT | O_EXCL;

int openFile(const char* name, int flags) {
  int descriptor = -1;
  do {
    descriptor = ::open(name, flags, S_IRUSR | S_IWUSR);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

// The same file under a number that is no standard stream's: in a program that has closed one, what is printed
// there would go into the file. -1, with the file still open, when there is no such number.
int pastStandardStreams(int descriptor) {
  if (descriptor > STDERR_FILENO) return descriptor;
  const int past = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (past >= 0) ::close(descriptor);
  return past;
}

// The lock belongs to the opened file, so it tells two objects of one process apart as well.
Lock lock(int descriptor) {
  int result = -1;
  do {
    result = ::flock(descriptor, LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return Lock::kMine;
  return errno == EWOULDBLOCK ? Lock::kTaken : Lock::kNone;
}

bool isOwn(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
}

// Whether the name leads to the open file itself.
bool isNameOf(const char* name, int descriptor) {
  struct stat open {};
  struct stat named {};
  return ::fstat(descriptor, &open) == 0 && ::lstat(name, &named) == 0 && S_ISREG(open.st_mode) &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

void closeOnly(int descriptor) { ::close(descriptor); }
void closeAndRemove(int descriptor, const char* name) {
  if (isNameOf(name, descriptor)) ::unlink(name);
  ::close(descriptor);
}

int openTemporary(const char* name) {
  const int descriptor = openFile(name, kNew);
  if (descriptor < 0) return -1;
  ::unlink(name);
  const int past = pastStandardStreams(descriptor);
  if (past < 0) ::close(descriptor);
  return past;
}
int openNew(const char* name) {
  const int descriptor = openFile(name, kNew);
  if (descriptor < 0) return -1;
  if (lock(descriptor) == Lock::kTaken) {
    ::close(descriptor);  // somebody has met the new file, empty as it was, and uses it now
    return -1;
  }
  const int past = pastStandardStreams(descriptor);
  if (past < 0) closeAndRemove(descriptor, name);
  return past;
}
int openOwn(const char* name) {
  struct stat status {};
  if (::lstat(name, &status) != 0 || !isOwn(status)) return -1;
  const int descriptor = openFile(name, kExisting);
  if (descriptor < 0) return -1;
  // Both again with the lock: until then its former user may have removed it.
  if (lock(descriptor) == Lock::kMine && ::fstat(descriptor, &status) == 0 && isOwn(status) &&
      isNameOf(name, descriptor)) {
    const int past = pastStandardStreams(descriptor);
    if (past >= 0) return past;
  }
  ::close(descriptor);
  return -1;
}

long long sizeOf(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 ? static_cast<long long>(status.st_size) : -1;
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

std::unique_ptr<PlatformFile> PlatformFile::open(std::string name, Open openIt) {
  std::unique_ptr<PlatformFile> file(new PlatformFile(std::move(name)));
  file->descriptor_ = openIt(file->name_.c_str());
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
    auto file = open((directory / (std::string(namePrefix) + digits)).string(), openTemporary);
    if (file != nullptr || errno != EEXIST) return file;
  }
  return nullptr;
}

std::unique_ptr<PlatformFile> PlatformFile::createNamed(const std::string& name) {
  return open(name, openNew);
}

std::unique_ptr<PlatformFile> PlatformFile::openLeftover(const std::string& name) {
  auto file = open(name, openOwn);
  if (file != nullptr) file->isRemovedAtEnd_ = false;
  return file;
}

PlatformFile::~PlatformFile() {
  if (descriptor_ < 0) return;
  if (isRemovedAtEnd_) {
    closeAndRemove(descriptor_, name_.c_str());
  } else {
    closeOnly(descriptor_);
  }
}

bool PlatformFile::takeOver() {
  if (!resize(0)) return false;
  isRemovedAtEnd_ = true;
  return true;
}

std::uint64_t PlatformFile::size() const {
  return static_cast<std::uint64_t>(std::max(sizeOf(descriptor_), 0LL));
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
