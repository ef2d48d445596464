#include "cli/Tool.h"

int main(int argc, char** argv) { return korassoc::cli::runTool({argv + (argc > 0 ? 1 : 0), argv + argc}); }
