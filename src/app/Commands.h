#pragma once

#include "app/CommandLine.h"

namespace lumiwren {

/// Does what the command line asks of the program that runs already, and says on standard error why not. The
/// exit status.
int askRunningProgram(const CommandLine &commandLine);

}  // namespace lumiwren
