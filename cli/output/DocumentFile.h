// A file that is there as a whole or not at all.

#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>

#include "cli/output/NewFile.h"

namespace korassoc::cli {

// write() writes a new file in the folder where it is to be, and puts it there when every byte is on the disk
// (NewFile). So FILE holds either what it held before or the whole document, whatever happens, and a failure or
// a signal leaves nothing behind. A file of our own that is replaced hands its permissions on
// (FileSink::createNew says which of somebody else's); a link is followed, not replaced. What is no file (a
// device, a pipe) cannot be replaced and is written to directly.
class DocumentFile {
 public:
  // Makes sure that a file can be made there, before the work is done that fills it; removes from the folder
  // what earlier runs have left. Throws CliError: kRunFailed, with the file and the reason, and kUsage for what
  // cannot be meant.
  explicit DocumentFile(const std::string& path);

  // Replaces the file by what the writer writes. The writer need not look at the stream's state. Throws
  // CliError (kRunFailed) with the file and the reason; what the writer throws passes through.
  using Writer = std::function<void(std::ostream&)>;
  void write(const Writer& writer) const;

  // Whether there is a file to replace or to make: not for a device or a pipe.
  bool isReplaced() const { return !direct_; }
  // Whether the two, or a path, mean the same existing file, or the same place for one.
  bool isSameAs(const DocumentFile& other) const { return isSameAs(other.target_); }
  bool isSameAs(const std::filesystem::path& path) const;
  // Whether it is a file to replace, and standard input reads from it.
  bool isStandardInput() const;

 private:
  void tryFolder();
  void replaceTarget(const Writer& writer) const;
  void writeDirectly(const Writer& writer) const;
  [[noreturn]] void fail(int error) const;

  std::string name_;              // for messages
  std::filesystem::path target_;  // with links followed
  bool direct_ = false;           // it is no file
  NewFile::Naming naming_ = NewFile::Naming::kLate;
};

}  // namespace korassoc::cli
