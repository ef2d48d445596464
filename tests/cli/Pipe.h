// A pipe between the test and what it starts.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <string>

// Neither end is handed on to a process that is started: what is to have one is given a copy of it.
class Pipe {
 public:
  Pipe() {
    if (::pipe(ends_) != 0) return;
    for (const int end : ends_) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  ~Pipe() {
    closeReading();
    closeWriting();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int reading() const { return ends_[0]; }
  int writing() const { return ends_[1]; }
  // What has been written so far, after which nobody writes any more.
  std::string contents() {
    closeWriting();
    std::string text;
    char block[4096];
    for (ssize_t got = 0; (got = ::read(reading(), block, sizeof block)) > 0;) {
      text.append(block, static_cast<std::size_t>(got));
    }
    return text;
  }
  void closeReading() { close(ends_[0]); }
  void closeWriting() { close(ends_[1]); }

 private:
  int ends_[2] = {-1, -1};

  static void close(int& end) {
    if (end >= 0) ::close(end);
    end = -1;
  }
};
