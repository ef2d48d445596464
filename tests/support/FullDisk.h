// A disk that is full for the files of this process.

#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdint>

// While it lives, no file of this process is written beyond a size in bytes.
class FullDisk {
 public:
  explicit FullDisk(std::uint64_t bytes) : before_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &limit_);
    rlimit lower = limit_;
    lower.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &lower);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, before_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit limit_{};
  void (*before_)(int);
};
