// The suite's main application: the single instance of its user, as desktop applications are.
//
// The first instance owns the application id on the session bus and ends on the action "quit"; a
// second one hands over to it and ends at once. `--shutdown-delay=MILLISECONDS` makes the end take
// as long as that of an application with much to save: until then the old instance still owns the
// id. `--application-id=ID` gives it another id than its own.
#include "relaunch/sample/sample_program.hpp"

#include <glib-unix.h>

#include <gio/gio.h>

namespace {

// Also the bundle identifier in suite.sh: that is what a quit request is addressed to.
constexpr const char* ownApplicationId = "org.example.SampleSuite";

gboolean quitNow(gpointer application) {
    g_application_quit(G_APPLICATION(application));
    return G_SOURCE_REMOVE;
}

struct Shutdown {
    GApplication* application;
    guint delay;
};

void quitRequested(GSimpleAction* action, GVariant* /*parameter*/, gpointer data) {
    const auto* shutdown = static_cast<const Shutdown*>(data);
    g_simple_action_set_enabled(action, FALSE);
    g_timeout_add(shutdown->delay, quitNow, shutdown->application);
}

// Without a window, nothing else keeps the application running.
void started(GApplication* application, gpointer /*data*/) { g_application_hold(application); }

// A second instance handed over: a real application would show its window.
void activated(GApplication* /*application*/, gpointer /*data*/) {}

} // namespace

int main(int argumentCount, char** arguments) {
    if (sample::answeredVersion(argumentCount, arguments)) {
        return 0;
    }
    const char* const otherId =
        sample::valueOfOption(argumentCount, arguments, "--application-id=");
    GApplication* application =
        g_application_new(otherId == nullptr ? ownApplicationId : otherId, GApplicationFlags{});
    Shutdown shutdown{application, sample::shutdownDelay(argumentCount, arguments)};

    GSimpleAction* quit = g_simple_action_new("quit", nullptr);
    g_signal_connect(quit, "activate", G_CALLBACK(quitRequested), &shutdown);
    g_action_map_add_action(G_ACTION_MAP(application), G_ACTION(quit));
    g_unix_signal_add(SIGTERM, quitNow, application);
    g_signal_connect(application, "startup", G_CALLBACK(started), nullptr);
    g_signal_connect(application, "activate", G_CALLBACK(activated), nullptr);

    const int status = g_application_run(application, 1, arguments);
    g_object_unref(quit);
    g_object_unref(application);
    return status;
}
