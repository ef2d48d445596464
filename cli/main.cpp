#include "cli/Tool.h"
#include "cli/process/Signals.h"
#include "cli/process/StandardDescriptors.h"

int main(int argc, char** argv) {
  if (!korassoc::cli::openStandardDescriptors()) return 1;  // without a word: there is nowhere to say it
  korassoc::cli::arrangeSignals();
  return korassoc::cli::runTool({argv + (argc > 0 ? 1 : 0), argv + argc});
}
