#include "cli/process/Signals.h"

#include <array>
#include <atomic>
#include <cassert>
#include <csignal>
#include <utility>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace korassoc::cli {
namespace {

// The paths of the RemovedBySignal objects that live; null where there is none. What handles a signal may look
// at nothing but atomics without locks, and so neither at a vector nor at a string.
constexpr std::size_t kMostFiles = 8;
std::array<std::atomic<const char*>, kMostFiles> filesToRemove{};
static_assert(std::atomic<const char*>::is_always_lock_free);

}  // namespace

RemovedBySignal::RemovedBySignal(std::string path) : path_(std::move(path)), place_(0) {
  while (place_ < kMostFiles && filesToRemove[place_] != nullptr) ++place_;
  assert(place_ < kMostFiles);  // a document at a time, and the spill file
  if (place_ < kMostFiles) filesToRemove[place_] = path_.c_str();
}

RemovedBySignal::~RemovedBySignal() {
  if (place_ < kMostFiles) filesToRemove[place_] = nullptr;
}

#if defined(_WIN32)

// Files that are open cannot be removed there; what is left, the next run removes.
void arrangeSignals() {}
void endByBrokenPipe() {}

#else

namespace {

constexpr std::array kEnding = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU};
bool brokenPipeWasIgnored = false;

// Calls nothing but what POSIX lists as safe in a handler. Ending here, and not by a flag that the run looks at,
// is what makes it end at every stage: while it waits for a disk, sorts or frees memory.
extern "C" void endBySignal(int signal) {
  for (const int other : kEnding) {
    struct sigaction action {};
    if (::sigaction(other, nullptr, &action) == 0 && action.sa_handler == endBySignal) {
      std::signal(other, SIG_DFL);
    }
  }
  for (const std::atomic<const char*>& file : filesToRemove) {
    if (const char* const path = file.load()) ::unlink(path);
  }
  std::raise(signal);
}

}  // namespace

void arrangeSignals() {
  brokenPipeWasIgnored = std::signal(SIGPIPE, SIG_IGN) == SIG_IGN;
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : kEnding) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = endBySignal;
    action.sa_flags = SA_NODEFER;  // the handler raises the signal again, and a second one must get through
    ::sigaction(signal, &action, nullptr);
  }
}

void endByBrokenPipe() {
  if (brokenPipeWasIgnored) return;
  std::signal(SIGPIPE, SIG_DFL);
  std::raise(SIGPIPE);
}

#endif

}  // namespace korassoc::cli
