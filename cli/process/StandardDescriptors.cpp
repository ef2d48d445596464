#include "cli/process/StandardDescriptors.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#endif

namespace korassoc::cli {

#if defined(_WIN32)

// The runtime there gives standard streams that are missing numbers of their own.
bool openStandardDescriptors() { return true; }

#else

bool openStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // The wrong direction, so that nothing is taken for an empty input or for results that have been written.
    const int flags = descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY;
    if (::open("/dev/null", flags) == descriptor) continue;
    if (::open("/", O_RDONLY) != descriptor) return false;  // a folder can be neither read nor written
  }
  return true;
}

#endif

}  // namespace korassoc::cli
