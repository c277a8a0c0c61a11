// Reads the command line and runs the command it names.
#pragma once

namespace quillomat {

/// The program's exit status: 0 done, 1 failed, 2 wrong usage.
int runCommandLine(int argc, char** argv);

} // namespace quillomat
