// The suite's main application: the single instance of its user, as desktop applications are.
//
// The first instance owns the application id on the session bus and ends on the action "quit"; a
// second one hands over to it and ends at once. `--shutdown-delay=MILLISECONDS` makes the end take
// as long as that of an application with much to save: until then the old instance still owns the
// id.
#include "relaunch/sample/sample_program.hpp"

#include <cstdlib>
#include <glib-unix.h>
#include <string_view>

#include <gio/gio.h>

namespace {

// Also the bundle identifier in suite.sh: that is what a quit request is addressed to.
constexpr const char* applicationId = "org.example.SampleSuite";

guint shutdownDelay(int argumentCount, char** arguments) {
    constexpr std::string_view option = "--shutdown-delay=";
    for (int index = 1; index < argumentCount; ++index) {
        if (std::string_view(arguments[index]).substr(0, option.size()) == option) {
            return static_cast<guint>(std::strtoul(arguments[index] + option.size(), nullptr, 10));
        }
    }
    return 0;
}

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
    GApplication* application = g_application_new(applicationId, GApplicationFlags{});
    Shutdown shutdown{application, shutdownDelay(argumentCount, arguments)};

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
