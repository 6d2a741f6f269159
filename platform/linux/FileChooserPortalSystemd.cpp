#include "base/WellFormedUTF8.hpp"
#include "platform/linux/FileChooserPortal.hpp"
#include "platform/linux/SystemdBus.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace tav::internal {
namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* requestPaths = "/org/freedesktop/portal/desktop/request/";

// NOLINTBEGIN(clang-analyzer-core.CallAndMessage): all of this runs only on a connection, which
// there is only where every function was found.

/// The bus ends a connection that sends a text that is no UTF-8. Ends at a NUL.
std::string busText(std::string_view text) {
    return wellFormedUTF8(text.substr(0, text.find('\0')));
}

/// The label of a button, where an underline marks the key that presses it and two are one.
std::string label(std::string_view prompt) {
    std::string doubled;
    for (const char character : prompt) {
        doubled.append(character == '_' ? 2 : 1, character);
    }
    return doubled;
}

/// A name for a request that no other of this process has.
std::string newToken() {
    static std::atomic<unsigned> count = 0;
    return "tav" + std::to_string(::getpid()) + "_" + std::to_string(++count);
}

class PortalPanel {
  public:
    explicit PortalPanel(BusConnection bus) : bus_(std::move(bus)), token_(newToken()) {}

    PortalAnswer choose(const PanelRequest& request, const Deadline& deadline) {
        // Before the call: the answer may come at once, and the portal may go at once.
        if (!predictPath() || !listen(deadline)) {
            return {};
        }
        ::sd_bus_error error{};
        BusMessage reply;
        BusMessage call;
        int answer = build(request, call);
        if (answer >= 0) {
            answer = callOnBus(bus_.get(), call.get(), deadline, &error, reply);
        }
        const bool isMissing = answer < 0 && meansNoPortal(error);
        systemdLibrary().error_free(&error);
        if (answer < 0) {
            return {!isMissing, std::nullopt};
        }
        return {true, takeReply(reply.get(), deadline) ? waitForResponse() : std::nullopt};
    }

  private:
    /// The path of the request is known beforehand: the connection's name and the token.
    bool predictPath() {
        const char* unique = nullptr;
        if (systemdLibrary().get_unique_name(bus_.get(), &unique) < 0 || *unique != ':') {
            return false;
        }
        std::string sender(unique + 1);
        std::replace(sender.begin(), sender.end(), '.', '_');
        path_ = requestPaths + sender + "/" + token_;
        return true;
    }

    bool addMatch(const std::string& rule, const Deadline& deadline) {
        ::sd_bus_message* made = nullptr;
        int answer = systemdLibrary().message_new_method_call(
            bus_.get(), &made, "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus", "AddMatch");
        const BusMessage call(made);
        if (answer >= 0) {
            answer = systemdLibrary().message_append(call.get(), "s", rule.c_str());
        }
        BusMessage reply;
        return answer >= 0 && callOnBus(bus_.get(), call.get(), deadline, nullptr, reply) >= 0;
    }

    bool listenForResponse(const Deadline& deadline) {
        return addMatch("type='signal',interface='org.freedesktop.portal.Request',"
                        "member='Response',path='" +
                            path_ + "'",
                        deadline);
    }

    bool listen(const Deadline& deadline) {
        return listenForResponse(deadline) &&
               addMatch(std::string("type='signal',sender='org.freedesktop.DBus',"
                                    "interface='org.freedesktop.DBus',"
                                    "member='NameOwnerChanged',arg0='") +
                            portalName + "'",
                        deadline);
    }

    static int addText(::sd_bus_message* call, const char* key, const std::string& text) {
        return systemdLibrary().message_append(call, "{sv}", key, "s", text.c_str());
    }

    /// A path is bytes with a NUL at their end.
    static int addPath(::sd_bus_message* call, const char* key, const std::string& path) {
        const SystemdLibrary& library = systemdLibrary();
        int answer = library.message_open_container(call, SD_BUS_TYPE_DICT_ENTRY, "sv");
        if (answer >= 0) {
            answer = library.message_append(call, "s", key);
        }
        if (answer >= 0) {
            answer = library.message_open_container(call, SD_BUS_TYPE_VARIANT, "ay");
        }
        if (answer >= 0) {
            answer =
                library.message_append_array(call, SD_BUS_TYPE_BYTE, path.c_str(), path.size() + 1);
        }
        for (int open = 2; answer >= 0 && open > 0; --open) {
            answer = library.message_close_container(call);
        }
        return answer;
    }

    int build(const PanelRequest& request, BusMessage& outCall) {
        const SystemdLibrary& library = systemdLibrary();
        ::sd_bus_message* made = nullptr;
        int answer = library.message_new_method_call(
            bus_.get(), &made, portalName, "/org/freedesktop/portal/desktop",
            "org.freedesktop.portal.FileChooser", "OpenFile");
        outCall.reset(made);
        if (answer >= 0) {
            // No window of ours is known: the panel belongs to none.
            answer =
                library.message_append(made, "ss", "", busText(request.title.value_or("")).c_str());
        }
        if (answer >= 0) {
            answer = library.message_open_container(made, SD_BUS_TYPE_ARRAY, "{sv}");
        }
        if (answer >= 0) {
            answer = addText(made, "handle_token", token_);
        }
        if (answer >= 0) {
            answer =
                library.message_append(made, "{sv}", "directory", "b", request.folders ? 1 : 0);
        }
        if (answer >= 0 && !request.prompt.empty()) {
            answer = addText(made, "accept_label", label(busText(request.prompt)));
        }
        if (answer >= 0 && request.startFolder.starts_with('/')) {
            answer = addPath(made, "current_folder", request.startFolder);
        }
        return answer >= 0 ? library.message_close_container(made) : answer;
    }

    /// Nobody has the name or can be started for it, or who has it shows no panels.
    static bool meansNoPortal(const ::sd_bus_error& error) {
        const std::string_view name = error.name != nullptr ? error.name : "";
        constexpr std::string_view prefix = "org.freedesktop.DBus.Error.";
        if (!name.starts_with(prefix)) {
            return false;
        }
        const std::string_view kind = name.substr(prefix.size());
        return kind == "ServiceUnknown" || kind == "NameHasNoOwner" || kind == "UnknownMethod" ||
               kind == "UnknownInterface" || kind == "UnknownObject" || kind.starts_with("Spawn.");
    }

    /// Who answered is the portal. Old ones choose the path of the request themselves.
    bool takeReply(::sd_bus_message* reply, const Deadline& deadline) {
        const char* const sender = systemdLibrary().message_get_sender(reply);
        const char* path = nullptr;
        if (sender == nullptr || systemdLibrary().message_read(reply, "o", &path) <= 0) {
            return false;
        }
        portal_ = sender;
        if (path_ == path) {
            return true;
        }
        path_ = path;
        return listenForResponse(deadline);
    }

    /// Whether a message says that the portal has left the bus.
    [[nodiscard]] bool isEndOfPortal(::sd_bus_message* message) const {
        const SystemdLibrary& library = systemdLibrary();
        const char* const sender = library.message_get_sender(message);
        const char* name = nullptr;
        const char* before = nullptr;
        const char* after = nullptr;
        return sender != nullptr && std::string_view(sender) == "org.freedesktop.DBus" &&
               library.message_is_signal(message, "org.freedesktop.DBus", "NameOwnerChanged") > 0 &&
               library.message_read(message, "sss", &name, &before, &after) > 0 &&
               std::string_view(name) == portalName && portal_ == before && portal_ != after;
    }

    /// Anybody on the bus can send us a signal: only the portal's own counts.
    [[nodiscard]] bool isResponse(::sd_bus_message* message) const {
        const SystemdLibrary& library = systemdLibrary();
        const char* const sender = library.message_get_sender(message);
        const char* const path = library.message_get_path(message);
        return sender != nullptr && portal_ == sender && path != nullptr && path_ == path &&
               library.message_is_signal(message, "org.freedesktop.portal.Request", "Response") > 0;
    }

    /// The first of the URLs in the variant that comes next.
    static std::optional<std::string> readUrls(::sd_bus_message* message) {
        const SystemdLibrary& library = systemdLibrary();
        const char* url = nullptr;
        if (library.message_enter_container(message, SD_BUS_TYPE_VARIANT, "as") <= 0 ||
            library.message_enter_container(message, SD_BUS_TYPE_ARRAY, "s") <= 0 ||
            library.message_read(message, "s", &url) <= 0) {
            return std::nullopt;
        }
        return url;
    }

    static std::optional<std::string> readResponse(::sd_bus_message* message) {
        const SystemdLibrary& library = systemdLibrary();
        std::uint32_t response = 1;
        if (library.message_has_signature(message, "ua{sv}") <= 0 ||
            library.message_read(message, "u", &response) <= 0 || response != 0 ||
            library.message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
            return std::nullopt;
        }
        while (library.message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
            const char* key = nullptr;
            if (library.message_read(message, "s", &key) <= 0) {
                return std::nullopt;
            }
            if (std::string_view(key) == "uris") {
                return readUrls(message);
            }
            if (library.message_skip(message, "v") < 0 ||
                library.message_exit_container(message) < 0) {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

    /// For as long as a person takes, but no longer than there is somebody to answer.
    std::optional<std::string> waitForResponse() {
        for (;;) {
            ::sd_bus_message* received = nullptr;
            int answer = systemdLibrary().process(bus_.get(), &received);
            const BusMessage message(received);
            if (message && isResponse(message.get())) {
                return readResponse(message.get());
            }
            if (message && isEndOfPortal(message.get())) {
                return std::nullopt;
            }
            if (answer == 0) {
                answer = systemdLibrary().wait(bus_.get(), UINT64_MAX);
            }
            if (answer < 0 && answer != -EINTR) {
                return std::nullopt;
            }
        }
    }

    BusConnection bus_;
    std::string token_;
    std::string path_;
    std::string portal_; ///< The name of its connection.
};

// NOLINTEND(clang-analyzer-core.CallAndMessage)

} // namespace

PortalAnswer chooseThroughPortal(const PanelRequest& request, const PortalPatience& patience) {
    BusConnection connection;
    if (openBusConnection(Deadline(patience.connect), connection) != Status::Success) {
        return {};
    }
    return PortalPanel(std::move(connection)).choose(request, Deadline(patience.reply));
}

} // namespace tav::internal
