#pragma once

namespace zvx {

/// The whole program: reads the options, does what they say, and gives the exit code. 0 is a clean
/// end, 1 a fault while serving, 2 a state folder or options that cannot be used.
int runCommandLine(int argc, char **argv);

} // namespace zvx
