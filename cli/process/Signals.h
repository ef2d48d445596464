// Which signals end the tool, and how.

#pragma once

#include <cstddef>
#include <string>

namespace korassoc::cli {

// To be called once, at the start.
//
// The signals that ask a process to end (of a terminal, a shell or a batch system) end it at once, at every
// stage of a run, and as they usually do, so that a shell shows 128 + their number; the files of all
// RemovedBySignal objects are removed before. A second such signal does not wait for that. One that was ignored
// stays ignored, as nohup has it.
//
// Writing to a pipe that nobody reads, or beyond the size that a file may have, is an error of that one write.
// By default the system would end the process at once: for a message on standard error as for a result.
void arrangeSignals();

// Ends the process like one that writes to a pipe which nobody reads: at once and without a word, so that
// "korassoc ... | head" is quiet. Returns if the tool was started with that signal ignored.
void endByBrokenPipe();

// While one lives, a signal that ends the process removes the file of that path, if it is there. So it is made
// before the file is, and outlives it: no moment is left in which the file would stay.
// Threads: one. A thread that is started beside must block the signals that end the process, or the path could
// be freed while they are handled.
class RemovedBySignal {
 public:
  explicit RemovedBySignal(std::string path);
  ~RemovedBySignal();
  RemovedBySignal(const RemovedBySignal&) = delete;
  RemovedBySignal& operator=(const RemovedBySignal&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::size_t place_;  // in the list that is gone through when a signal comes
};

}  // namespace korassoc::cli
