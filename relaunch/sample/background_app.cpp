// The suite's background application: it would synchronise while the main application is closed.
#include "relaunch/sample/sample_program.hpp"

int main(int argumentCount, char** arguments) {
    if (!sample::answeredVersion(argumentCount, arguments)) {
        sample::runUntilTerminated();
    }
}
