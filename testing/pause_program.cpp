// Does nothing whatever its arguments, until a signal ends it: something for tests to look at.

#include <unistd.h>

int main() {
    for (;;) {
        ::pause();
    }
}
