#include "cli/process/TemporaryFiles.h"

#include <sys/stat.h>

#include <ctime>
#include <random>
#include <system_error>

#include "cli/Notes.h"
#include "cli/Printable.h"

#if defined(_WIN32)
#include <wchar.h>
#else
#include <unistd.h>
#endif

namespace korassoc::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::time_t kDay = 24 * 60 * 60;

struct Form {
  std::string_view begin;
  std::size_t digits;
  std::string_view end;
};
constexpr Form kDocument = {".korassoc-", 32, ".tmp"};
constexpr Form kSpill = {"korassoc-", 16, ".spill"};

std::string newName(const Form& form) {
  std::random_device random;
  std::string name(form.begin);
  unsigned int bits = 0;
  for (std::size_t digit = 0; digit < form.digits; ++digit, bits >>= 4) {
    if (digit % 8 == 0) bits = random();
    name += kDigits[bits & 15U];
  }
  return name += form.end;
}

bool hasForm(std::string_view name, const Form& form) {
  if (name.size() != form.begin.size() + form.digits + form.end.size()) return false;
  const std::string_view digits = name.substr(form.begin.size(), form.digits);
  return name.starts_with(form.begin) && name.ends_with(form.end) &&
         digits.find_first_not_of(kDigits) == std::string_view::npos;
}

// Removes the file if it may be what a run has left. What is put in its place meanwhile can only be a file, too,
// and one that has such a name.
#if defined(_WIN32)
bool removeLeftover(const fs::path& file) {
  struct _stat64 status {};
  return ::_wstat64(file.c_str(), &status) == 0 && (status.st_mode & _S_IFMT) == _S_IFREG &&
         status.st_mtime < std::time(nullptr) - kDay && ::_wunlink(file.c_str()) == 0;
}
#else
bool removeLeftover(const fs::path& file) {
  struct stat status {};
  return ::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
         status.st_mtime < std::time(nullptr) - kDay && ::unlink(file.c_str()) == 0;
}
#endif

}  // namespace

std::string newDocumentName() { return newName(kDocument); }
std::string newSpillName() { return newName(kSpill); }

bool isTemporaryName(std::string_view name) { return hasForm(name, kDocument) || hasForm(name, kSpill); }

void removeLeftovers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const fs::path& file = entry->path();
    if (isTemporaryName(file.filename().string()) && removeLeftover(file)) {
      note("removed       {}: a run that was killed has left it\n", printable(file.string()));
    }
  }
}

}  // namespace korassoc::cli
