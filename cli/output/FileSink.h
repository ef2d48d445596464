// An open file as the end of a stream, with every write checked.

#pragma once

#include <cstddef>
#include <memory>
#include <streambuf>
#include <string>
#include <vector>

namespace korassoc::cli {

// FileSink hands what a stream writes to the system in large blocks. The first failure is kept: nothing is
// written after it, and the stream goes bad. A program that uses it ignores SIGXFSZ and SIGPIPE, which would
// otherwise end it where a write fails.
class FileSink : public std::streambuf {
 public:
  // A new file, which must not exist yet. Null, with errno set, when it cannot be made.
  //
  // It is going to replace a file, if there is one, and is never open to anybody who had no access to that. Of
  // a file of our own it takes over group and permissions (but no right to run as its owner or group); what a
  // group could do that it may not be given to is left to nobody. Where somebody else's file is replaced, or
  // none, it has the usual permissions of a new one, in the first case less what that file did not allow.
  static std::unique_ptr<FileSink> createNew(const std::string& path, const std::string& replaced);
  // The same without a name, in a folder: it is gone when it is closed without being given one, however the
  // process ends. Null where the system knows no such files.
  static std::unique_ptr<FileSink> createUnnamed(const std::string& folder, const std::string& replaced);
  // Something that exists and is not a file of its own, such as a device. Null, with errno set, when it
  // cannot be opened.
  static std::unique_ptr<FileSink> openExisting(const std::string& path);

  // Makes the names in a folder survive a loss of power, as far as the system can.
  static void syncFolder(const std::string& path);

  FileSink(const FileSink&) = delete;
  FileSink& operator=(const FileSink&) = delete;
  // Closes. What was not finished may be missing.
  ~FileSink() override;

  // Writes what is left, and waits until the system has it on the disk. False when this or anything before it
  // failed.
  bool finish();
  // Gives a file its name, which must be free. False when this or anything before it failed.
  bool giveName(const std::string& path);
  // False when this or anything before it failed.
  bool close();
  // The errno of the first failure, 0 when there is none.
  int error() const { return error_; }

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int sync() override;

 private:
  explicit FileSink(int descriptor);
  static std::unique_ptr<FileSink> over(int descriptor);
  bool flush();
  bool put(const char* bytes, std::size_t count);

  int descriptor_;  // -1 when closed
  int error_ = 0;
  std::vector<char> block_;  // what pptr() points into
};

}  // namespace korassoc::cli
