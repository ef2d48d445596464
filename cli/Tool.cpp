#include "cli/Tool.h"

#include <cstdio>
#include <exception>
#include <new>

#include "cli/CliError.h"
#include "cli/CommandLine.h"
#include "cli/Notes.h"
#include "cli/Verb.h"
#include "cli/output/ResultStream.h"
#include "cli/process/Signals.h"

namespace korassoc::cli {
namespace {

void run(const std::vector<std::string>& arguments) {
  ResultStream out(stdout, "standard output");
  const CommandLine line(arguments);
  if (line.text()) {
    out.write(*line.text());
    out.finish();
  } else {
    line.verb().run(out);
  }
}

int fail(ExitCode code, const char* message) noexcept {
  for (const char* part : {"korassoc: ", message, "\n"}) noteText(part);  // no allocation: memory may be out
  return static_cast<int>(code);
}

}  // namespace

int runTool(const std::vector<std::string>& arguments) noexcept {
  try {
    run(arguments);
    return static_cast<int>(ExitCode::kOk);
  } catch (const BrokenPipe& error) {  // caught here, so that nothing of the run is left behind
    endByBrokenPipe();
    return fail(error.code(), error.what());
  } catch (const CliError& error) {
    return fail(error.code(), error.what());
  } catch (const std::bad_alloc&) {
    return fail(ExitCode::kRunFailed,
                "memory ran out; try a higher support or confidence, or a smaller input");
  } catch (const std::exception& error) {
    return fail(ExitCode::kRunFailed, error.what());
  } catch (...) {
    return fail(ExitCode::kRunFailed, "an unknown failure; please report it");
  }
}

}  // namespace korassoc::cli
