#include "cli/output/FileSink.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#if defined(_WIN32)
#include <io.h>
#include <share.h>
#else
#include <unistd.h>
#endif

namespace korassoc::cli {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 16;
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

// The few calls that are named differently, or take other types, on Windows.
#if defined(_WIN32)
constexpr int kNewFile = _O_WRONLY | _O_BINARY | _O_NOINHERIT | _O_CREAT | _O_EXCL;
constexpr int kOldFile = _O_WRONLY | _O_BINARY | _O_NOINHERIT;
int openFile(const char* path, int flags) {
  int descriptor = -1;
  errno = ::_sopen_s(&descriptor, path, flags, _SH_DENYNO, _S_IREAD | _S_IWRITE);
  return descriptor;
}
long writeSome(int descriptor, const char* bytes, std::size_t count) {
  return ::_write(descriptor, bytes, static_cast<unsigned int>(count));
}
int syncFile(int descriptor) { return ::_commit(descriptor); }
int closeFile(int descriptor) { return ::_close(descriptor); }
void syncNames(const char*) {}
int openNew(const char* path, const char*) { return openFile(path, kNewFile); }
int openUnnamed(const char*, const char*) {
  errno = ENOTSUP;
  return -1;
}
int nameFile(int, const char*) {
  errno = ENOTSUP;
  return -1;
}
#else
constexpr int kNewFile = O_WRONLY | O_CLOEXEC | O_NOCTTY | O_CREAT | O_EXCL;
constexpr int kOldFile = O_WRONLY | O_CLOEXEC | O_NOCTTY;
#if defined(O_TMPFILE)
constexpr int kUnnamedFile = O_WRONLY | O_CLOEXEC | O_TMPFILE;
#endif
constexpr mode_t kEverybody = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
int openFile(const char* path, int flags, mode_t mode = 0) {
  int descriptor = -1;
  do {
    descriptor = ::open(path, flags, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}
long writeSome(int descriptor, const char* bytes, std::size_t count) {
  return static_cast<long>(::write(descriptor, bytes, count));
}
int syncFile(int descriptor) {
  int result = -1;
  do {
    result = ::fsync(descriptor);
  } while (result != 0 && errno == EINTR);
  return result;
}
int closeFile(int descriptor) { return ::close(descriptor); }
void syncNames(const char* folder) {
  const int descriptor = ::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  static_cast<void>(syncFile(descriptor));
  closeFile(descriptor);
}

// Gives a new file the group and the permissions of an older one of the same owner.
bool takeOver(int descriptor, const struct stat& older, const struct stat& newer) {
  constexpr mode_t kGroup = S_IRWXG;
  constexpr mode_t kOthers = S_IRWXO;
  mode_t mode = older.st_mode & (S_IRWXU | kGroup | kOthers);
  // The group first: changing it takes permissions away. Who is in the group that the file has instead may do
  // what everybody may.
  if (older.st_gid != newer.st_gid && ::fchown(descriptor, static_cast<uid_t>(-1), older.st_gid) != 0) {
    mode &= ~kGroup | ((mode & kOthers) << 3);
  }
  return ::fchmod(descriptor, mode) == 0;
}

// Opens a new file that is going to replace another; removeNew takes it away again.
template <typename RemoveNew>
int openReplacing(const char* path, int flags, const char* replaced, const RemoveNew& removeNew) {
  struct stat older {};
  struct stat newer {};
  const bool replaces = ::stat(replaced, &older) == 0;
  // From the start: whoever has opened the file goes on reading it, whatever permissions it has by then.
  const mode_t mode = replaces ? kEverybody & (older.st_mode | S_IRUSR | S_IWUSR) : kEverybody;
  const int descriptor = openFile(path, flags, mode);
  if (descriptor < 0 || !replaces) return descriptor;
  const bool done = ::fstat(descriptor, &newer) == 0 &&
                    (newer.st_uid != older.st_uid || takeOver(descriptor, older, newer));
  if (done) return descriptor;
  const int error = errno;
  removeNew();
  closeFile(descriptor);
  errno = error;
  return -1;
}

int openNew(const char* path, const char* replaced) {
  return openReplacing(path, kNewFile, replaced, [path] { ::unlink(path); });
}

#if defined(O_TMPFILE)
int openUnnamed(const char* folder, const char* replaced) {
  return openReplacing(folder, kUnnamedFile, replaced, [] {});
}
int nameFile(int descriptor, const char* path) {
  // The one way that needs no privilege.
  const std::string open = "/proc/self/fd/" + std::to_string(descriptor);
  return ::linkat(AT_FDCWD, open.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW);
}
#else
int openUnnamed(const char*, const char*) {
  errno = ENOTSUP;
  return -1;
}
int nameFile(int, const char*) {
  errno = ENOTSUP;
  return -1;
}
#endif
#endif

// Devices and pipes have no disk to wait for.
bool meansNothingToSync(int error) { return error == EINVAL || error == ENOTSUP || error == EROFS; }

}  // namespace

std::unique_ptr<FileSink> FileSink::createNew(const std::string& path, const std::string& replaced) {
  return over(openNew(path.c_str(), replaced.c_str()));
}

std::unique_ptr<FileSink> FileSink::createUnnamed(const std::string& folder, const std::string& replaced) {
  return over(openUnnamed(folder.c_str(), replaced.c_str()));
}

std::unique_ptr<FileSink> FileSink::openExisting(const std::string& path) {
  return over(openFile(path.c_str(), kOldFile));
}

std::unique_ptr<FileSink> FileSink::over(int descriptor) {
  if (descriptor < 0) return nullptr;
  return std::unique_ptr<FileSink>(new FileSink(descriptor));
}

void FileSink::syncFolder(const std::string& path) { syncNames(path.c_str()); }

FileSink::FileSink(int descriptor) : descriptor_(descriptor), block_(kBlockBytes) {
  setp(block_.data(), block_.data() + block_.size());
}

FileSink::~FileSink() { close(); }

bool FileSink::finish() {
  if (flush() && syncFile(descriptor_) != 0 && !meansNothingToSync(errno)) error_ = errno;
  return error_ == 0;
}

bool FileSink::giveName(const std::string& path) {
  if (error_ == 0 && nameFile(descriptor_, path.c_str()) != 0) error_ = errno;
  return error_ == 0;
}

bool FileSink::close() {
  if (descriptor_ >= 0 && closeFile(descriptor_) != 0 && error_ == 0) error_ = errno;
  descriptor_ = -1;
  return error_ == 0;
}

FileSink::int_type FileSink::overflow(int_type c) {
  if (!flush()) return traits_type::eof();
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  return sputc(traits_type::to_char_type(c));
}

std::streamsize FileSink::xsputn(const char* text, std::streamsize count) {
  std::streamsize done = 0;
  while (done < count) {
    if (pptr() == epptr() && !flush()) break;
    const std::streamsize piece = std::min<std::streamsize>(count - done, epptr() - pptr());
    std::memcpy(pptr(), text + done, static_cast<std::size_t>(piece));
    pbump(static_cast<int>(piece));
    done += piece;
  }
  return done;
}

int FileSink::sync() { return flush() ? 0 : -1; }

bool FileSink::flush() {
  if (descriptor_ < 0 || error_ != 0) return false;
  if (!put(pbase(), static_cast<std::size_t>(pptr() - pbase()))) return false;
  setp(block_.data(), block_.data() + block_.size());
  return true;
}

bool FileSink::put(const char* bytes, std::size_t count) {
  while (count > 0) {
    const long written = writeSome(descriptor_, bytes, std::min(count, kMostAtOnce));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      error_ = written < 0 ? errno : EIO;
      return false;
    }
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

}  // namespace korassoc::cli
