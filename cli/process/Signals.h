// Which signals end the tool, and how.

#pragma once

namespace korassoc::cli {

// From here on, writing to a pipe that nobody reads, or beyond the size that a file may have, is an error of
// that one write. By default the system would end the process at once: for a message on standard error as for
// a result. To be called once, at the start.
void arrangeSignals();

// Ends the process like one that writes to a pipe which nobody reads: at once and without a word, so that
// "korassoc ... | head" is quiet. Returns if the tool was started with that signal ignored.
void endByBrokenPipe();

}  // namespace korassoc::cli
