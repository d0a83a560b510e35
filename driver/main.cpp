#include "driver/CommandLine.h"
#include "driver/Options.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    try {
        return velmora::driver::runProgram(argc, argv);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "velmora: %s\n", exception.what());
        return velmora::driver::SolverFailed;
    }
}
