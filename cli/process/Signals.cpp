#include "cli/process/Signals.h"

#include <csignal>

namespace korassoc::cli {

#if defined(_WIN32)

void arrangeSignals() {}
void endByBrokenPipe() {}

#else

namespace {

bool brokenPipeWasIgnored = false;

}  // namespace

void arrangeSignals() {
  brokenPipeWasIgnored = std::signal(SIGPIPE, SIG_IGN) == SIG_IGN;
  std::signal(SIGXFSZ, SIG_IGN);
}

void endByBrokenPipe() {
  if (brokenPipeWasIgnored) return;
  std::signal(SIGPIPE, SIG_DFL);
  std::raise(SIGPIPE);
}

#endif

}  // namespace korassoc::cli
