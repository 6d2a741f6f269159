// The suite's crash reporter: waits for a crash that never comes.
#include "relaunch/sample/sample_program.hpp"

int main(int argumentCount, char** arguments) {
    if (!sample::answeredVersion(argumentCount, arguments)) {
        sample::runUntilTerminated();
    }
}
