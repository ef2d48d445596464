#include "cli/input/FileContent.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "cli/CliError.h"
#include "cli/Printable.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace korassoc::cli {
namespace {

constexpr std::size_t kFirstBlockBytes = std::size_t{1} << 16;

// The few calls that are named differently, or take other types, on Windows.
#if defined(_WIN32)
constexpr int kStandardInput = 0;
int openForReading(const char* path) { return ::_open(path, _O_RDONLY | _O_BINARY); }
long readSome(int descriptor, char* to, std::size_t bytes) {
  return ::_read(descriptor, to, static_cast<unsigned int>(std::min(bytes, std::size_t{1} << 30)));
}
void closeFile(int descriptor) { ::_close(descriptor); }
void binaryMode(int descriptor) { ::_setmode(descriptor, _O_BINARY); }
bool isDirectory(const struct stat& info) { return (info.st_mode & _S_IFMT) == _S_IFDIR; }
bool isRegular(const struct stat& info) { return (info.st_mode & _S_IFMT) == _S_IFREG; }
#else
constexpr int kStandardInput = STDIN_FILENO;
int openForReading(const char* path) { return ::open(path, O_RDONLY | O_CLOEXEC); }
long readSome(int descriptor, char* to, std::size_t bytes) {
  ssize_t got = 0;
  do {
    got = ::read(descriptor, to, bytes);
  } while (got < 0 && errno == EINTR);
  return static_cast<long>(got);
}
void closeFile(int descriptor) { ::close(descriptor); }
void binaryMode(int) {}
bool isDirectory(const struct stat& info) { return S_ISDIR(info.st_mode); }
bool isRegular(const struct stat& info) { return S_ISREG(info.st_mode); }
#endif

// Closes what was opened; leaves standard input alone.
class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor_ > kStandardInput) closeFile(descriptor_);
  }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

[[noreturn]] void failToRead(const std::string& name, int error) {
  throw CliError(ExitCode::kInput,
                 name + ": cannot be read: " + std::strerror(error) + "; check the path and its permissions");
}

}  // namespace

FileContent FileContent::open(const std::string& path) {
  FileContent content;
  content.name_ = path == "-" ? "standard input" : printable(path);
  if (path.empty()) {
    throw CliError(ExitCode::kInput, "the file name is empty; give a basket file, or - for standard input");
  }
  const OpenFile file(path == "-" ? kStandardInput : openForReading(path.c_str()));
  if (file.get() < 0) failToRead(content.name_, errno);
  binaryMode(file.get());
  struct stat info {};
  if (::fstat(file.get(), &info) != 0) failToRead(content.name_, errno);
  if (isDirectory(info)) {
    throw CliError(ExitCode::kInput, content.name_ + ": is a directory; give the basket file in it");
  }
  const std::size_t size = isRegular(info) && info.st_size > 0 ? static_cast<std::size_t>(info.st_size) : 0;
  const bool fromItsStart = path != "-";  // standard input may have been read from already
  if (!(fromItsStart && size > 0 && content.map(file.get(), size))) content.readBlocks(file.get(), size);
  return content;
}

FileContent::FileContent(FileContent&& other) noexcept { *this = std::move(other); }

FileContent& FileContent::operator=(FileContent&& other) noexcept {
  if (this == &other) return *this;
  unmap();
  name_ = std::move(other.name_);
  buffer_ = std::move(other.buffer_);
  data_ = std::exchange(other.data_, nullptr);
  size_ = std::exchange(other.size_, 0);
  mapped_ = std::exchange(other.mapped_, false);
  return *this;
}

FileContent::~FileContent() { unmap(); }

#if defined(_WIN32)
bool FileContent::map(int, std::size_t) { return false; }
void FileContent::unmap() noexcept {}
#else
bool FileContent::map(int descriptor, std::size_t size) {
  void* at = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
  if (at == MAP_FAILED) return false;
  ::madvise(at, size, MADV_SEQUENTIAL);
  data_ = static_cast<const char*>(at);
  size_ = size;
  mapped_ = true;
  return true;
}

void FileContent::unmap() noexcept {
  if (mapped_) ::munmap(const_cast<char*>(data_), size_);
  mapped_ = false;
}
#endif

void FileContent::readBlocks(int descriptor, std::size_t expectedBytes) {
  // One byte more than expected, so that the end of the file is met without growing.
  std::size_t capacity = std::max(kFirstBlockBytes, expectedBytes + 1);
  buffer_ = std::make_unique_for_overwrite<char[]>(capacity);
  for (;;) {
    if (size_ == capacity) {
      auto larger = std::make_unique_for_overwrite<char[]>(capacity * 2);
      std::memcpy(larger.get(), buffer_.get(), size_);
      buffer_ = std::move(larger);
      capacity *= 2;
    }
    const long got = readSome(descriptor, buffer_.get() + size_, capacity - size_);
    if (got < 0) failToRead(name_, errno);
    if (got == 0) break;
    const bool holdsNul = std::memchr(buffer_.get() + size_, 0, static_cast<std::size_t>(got)) != nullptr;
    size_ += static_cast<std::size_t>(got);
    if (holdsNul) break;  // the text check names the place
  }
  data_ = buffer_.get();
}

}  // namespace korassoc::cli
