#include "cli/CommandLine.h"

int main(int argc, char** argv) {
    return quillomat::runCommandLine(argc, argv);
}
