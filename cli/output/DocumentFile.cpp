#include "cli/output/DocumentFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <ostream>
#include <utility>

#include "cli/CliError.h"
#include "cli/Printable.h"
#include "cli/output/FileSink.h"
#include "cli/process/TemporaryFiles.h"

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;

fs::path folderOf(const fs::path& path) {
  const fs::path folder = path.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

#if defined(_WIN32)
bool mayFollow(const fs::path&) { return true; }
bool mayReplace(const fs::path&) { return true; }
constexpr int kInput = 0;
constexpr int kOutput = 1;
constexpr int kErrors = 2;
bool isOpenAs(int, const fs::path&) { return false; }
#else
// Where everybody may put files that only their owners may take away (/tmp), a link of somebody else could lead
// to any file of ours. Systems refuse to follow such a link themselves, but here it is read and not followed.
bool mayFollow(const fs::path& link) {
  struct stat folder {};
  struct stat itself {};
  if (::stat(folderOf(link).c_str(), &folder) != 0 || ::lstat(link.c_str(), &itself) != 0) return true;
  constexpr mode_t kEverybodys = S_ISVTX | S_IWOTH;
  return (folder.st_mode & kEverybodys) != kEverybodys || itself.st_uid == ::geteuid() ||
         itself.st_uid == folder.st_uid;
}

// The folder alone decides about renaming; a file that is protected from writing is not to be replaced
// either.
bool mayReplace(const fs::path& file) { return ::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0; }

constexpr int kInput = STDIN_FILENO;
constexpr int kOutput = STDOUT_FILENO;
constexpr int kErrors = STDERR_FILENO;

// Whether the descriptor is open on the file, whatever name it was opened by.
bool isOpenAs(int descriptor, const fs::path& file) {
  struct stat there {};
  struct stat open {};
  return ::stat(file.c_str(), &there) == 0 && ::fstat(descriptor, &open) == 0 &&
         there.st_dev == open.st_dev && there.st_ino == open.st_ino;
}
#endif

// Where a path leads, also when nothing is there yet.
fs::path followed(fs::path path, std::error_code& error) {
  std::error_code absent;
  for (int links = 0; fs::is_symlink(fs::symlink_status(path, absent)); ++links) {
    if (links == kMostLinks) error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    if (!mayFollow(path)) error = std::make_error_code(std::errc::permission_denied);
    const fs::path next = error ? fs::path() : fs::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / next;  // an absolute next stands for itself
  }
  return path;
}

}  // namespace

DocumentFile::DocumentFile(const std::string& path) : name_(printable(path)) {
  if (path.empty()) throw CliError(ExitCode::kUsage, "the name of the file to write is empty");
  std::error_code error;
  const fs::file_status there = fs::status(path, error);
  if (fs::is_directory(there)) fail(EISDIR);
  direct_ = fs::exists(there) && !fs::is_regular_file(there);
  error.clear();  // what is not there may be made; why it cannot is found out below
  target_ = direct_ ? fs::path(path) : followed(path, error);
  if (error) fail(error.value());
  if (direct_) return;
  if (target_.filename().empty()) fail(ENOENT);
  if (fs::exists(there)) {
    for (const auto& [descriptor, what] : {std::pair(kOutput, "output"), std::pair(kErrors, "error")}) {
      if (!isOpenAs(descriptor, target_)) continue;
      throw CliError(ExitCode::kUsage,
                     name_ + ": is where standard " + what + " goes; give the document another file");
    }
    if (!mayReplace(target_)) fail(EACCES);
  }
  removeLeftovers(folderOf(target_));
  tryFolder();
}

void DocumentFile::write(const Writer& writer) const {
  direct_ ? writeDirectly(writer) : replaceTarget(writer);
}

bool DocumentFile::isSameAs(const fs::path& path) const {
  std::error_code error;
  if (fs::equivalent(target_, path, error)) return true;
  const fs::path here = fs::weakly_canonical(target_, error);
  if (error) return false;
  const fs::path there = fs::weakly_canonical(path, error);
  return !error && here == there;
}

bool DocumentFile::isStandardInput() const { return !direct_ && isOpenAs(kInput, target_); }

// A system that makes files without a name may yet be unable to give them one.
void DocumentFile::tryFolder() {
  if (NewFile(target_, NewFile::Naming::kLate).giveName()) return;
  naming_ = NewFile::Naming::kEarly;
  const NewFile trial(target_, naming_);
  if (trial.error() != 0) fail(trial.error());
}

void DocumentFile::replaceTarget(const Writer& writer) const {
  NewFile file(target_, naming_);
  if (file.error() != 0) fail(file.error());
  std::ostream out(&file.sink());
  writer(out);
  if (!file.complete()) fail(file.error());
  if (!out.good()) fail(EIO);
  if (!file.replaceTarget()) fail(file.error());
  FileSink::syncFolder(folderOf(target_).string());  // the document is in place whatever comes of it
}

void DocumentFile::writeDirectly(const Writer& writer) const {
  const std::unique_ptr<FileSink> sink = FileSink::openExisting(target_.string());
  if (sink == nullptr) fail(errno);
  std::ostream out(sink.get());
  writer(out);
  if (!sink->finish() || !sink->close()) fail(sink->error());
  if (!out.good()) fail(EIO);
}

void DocumentFile::fail(int error) const {
  throw CliError(ExitCode::kRunFailed,
                 name_ + ": cannot be written: " + std::strerror(error) +
                     (direct_ ? "; the document is not complete" : "; nothing was changed"));
}

}  // namespace korassoc::cli
