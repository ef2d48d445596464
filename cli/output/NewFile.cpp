#include "cli/output/NewFile.h"

#include <cerrno>
#include <system_error>

#include "cli/process/TemporaryFiles.h"

namespace korassoc::cli {

namespace fs = std::filesystem;

NewFile::NewFile(const fs::path& target, Naming naming)
    : target_(target), path_((target.parent_path() / newDocumentName()).string()) {
  if (naming == Naming::kEarly) {
    sink_ = FileSink::createNew(path_.path(), target_.string());
    named_ = sink_ != nullptr;
  } else {
    const fs::path folder = target.parent_path();
    sink_ = FileSink::createUnnamed(folder.empty() ? "." : folder.string(), target_.string());
  }
  if (sink_ == nullptr) error_ = errno;
}

NewFile::~NewFile() {
  sink_.reset();  // some systems remove no file that is open
  std::error_code ignored;
  if (named_) fs::remove(path_.path(), ignored);
}

bool NewFile::check(bool done) {
  if (!done && error_ == 0) error_ = sink_->error();
  return error_ == 0;
}

bool NewFile::giveName() {
  if (error_ != 0 || named_) return error_ == 0;
  named_ = sink_->giveName(path_.path());
  return check(named_);
}

bool NewFile::complete() {
  return error_ == 0 && check(sink_->finish()) && giveName() && check(sink_->close());
}

bool NewFile::replaceTarget() {
  if (error_ != 0) return false;
  std::error_code error;
  fs::rename(path_.path(), target_, error);
  error_ = error.value();
  named_ = error_ != 0;
  return !named_;
}

}  // namespace korassoc::cli
