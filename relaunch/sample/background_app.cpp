// The suite's background application: it would synchronise while the main application is closed.
// `--shutdown-delay=MILLISECONDS` makes its end take that long.
#include "relaunch/sample/sample_program.hpp"

int main(int argumentCount, char** arguments) {
    if (!sample::answeredVersion(argumentCount, arguments)) {
        sample::runUntilTerminated(sample::shutdownDelay(argumentCount, arguments));
    }
}
