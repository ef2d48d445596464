// A file that takes the place of another one when it is complete.

#pragma once

#include <filesystem>
#include <memory>

#include "cli/output/FileSink.h"
#include "cli/process/Signals.h"

namespace korassoc::cli {

// NewFile is made in the folder of the file that it replaces, its target. An object that is destroyed before it
// has replaced that leaves nothing, as does a signal that ends the process.
//
//   Naming::kLate    no name   --complete()-->  .korassoc-1f0c...tmp  --replaceTarget()-->  the target
//   Naming::kEarly   .korassoc-1f0c...tmp  ---------------------------replaceTarget()-->  the target
//
// What is named late cannot stay behind until it is complete, not even when the process is killed; but not every
// system and file system has such files. No system puts a file without a name where there is one already, so
// it gets one of its own first.
// Errors: answers. error() tells the errno of the first failure, and what comes after that does nothing.
class NewFile {
 public:
  enum class Naming { kLate, kEarly };

  NewFile(const std::filesystem::path& target, Naming naming);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  // 0 when nothing failed.
  int error() const { return error_; }
  // Where it is written. Only when it could be made.
  FileSink& sink() { return *sink_; }

  // Gives it the name that it has while it waits for its place, if it has none.
  bool giveName();
  // Makes sure that all of it is on the disk, under a name, and closes it.
  bool complete();
  // To be called when it is complete.
  bool replaceTarget();

 private:
  std::filesystem::path target_;
  RemovedBySignal path_;
  std::unique_ptr<FileSink> sink_;
  bool named_ = false;  // there is a file of that path, and it is this one
  int error_ = 0;

  bool check(bool done);
};

}  // namespace korassoc::cli
