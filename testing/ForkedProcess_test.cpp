#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

namespace tav {
namespace {

TEST(ForkedProcess, AnswersTheStatus) {
    EXPECT_EQ(runForked([] { return 0; }), (ProcessEnd{0, 0}));
    EXPECT_EQ(runForked([] { return 7; }), (ProcessEnd{7, 0}));
    EXPECT_EQ(runForked([] { return 256 + 7; }), (ProcessEnd{7, 0}));
}

TEST(ForkedProcess, AnswersTheSignal) {
    EXPECT_EQ(runForked([] { return ::raise(SIGKILL); }), (ProcessEnd{0, SIGKILL}));
    EXPECT_EQ(runForked([] { return ::raise(SIGTERM); }), (ProcessEnd{0, SIGTERM}));
}

TEST(ForkedProcess, AnExceptionIsAStatus) {
    EXPECT_EQ(runForked([]() -> int { throw std::runtime_error("x"); }), (ProcessEnd{255, 0}));
}

TEST(ForkedProcess, TheChildIsACopyAndItsFilesStay) {
    const TemporaryFolder folder;
    int number = 1;
    EXPECT_EQ(runForked([&] {
                  std::ofstream(folder.path("made")) << ++number;
                  return number;
              }),
              (ProcessEnd{2, 0}));
    EXPECT_EQ(number, 1);
    std::string text;
    std::ifstream(folder.path("made")) >> text;
    EXPECT_EQ(text, "2");
}

TEST(ForkedProcess, FailuresOfTheChildAreItsOwn) {
    EXPECT_EQ(runForked([] {
                  ADD_FAILURE() << "this must not be seen";
                  return 3;
              }),
              (ProcessEnd{3, 0}));
}

TEST(ForkedProcess, EndsPrintAsWhatTheyAre) {
    std::ostringstream text;
    text << ProcessEnd{3, 0} << ", " << ProcessEnd{0, 9};
    EXPECT_EQ(text.str(), "status 3, signal 9");
}

} // namespace
} // namespace tav
