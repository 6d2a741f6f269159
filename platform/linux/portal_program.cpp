// portal_program RECORD BEHAVIOUR [ARGUMENTS...]: a desktop portal for tests, on the session bus of
// the environment. What it is asked goes to the file RECORD, a line each; "ready" comes first. It
// lives until it is killed, or its behaviour says so.

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <string>
#include <vector>

#include <systemd/sd-bus.h>

#include <unistd.h>

namespace {

struct Portal {
    std::ofstream record;
    std::string behaviour;
    std::vector<std::string> arguments;
    bool endsSoon = false;
};

/// Bytes in hexadecimal.
void recordBytes(std::ofstream& record, const void* bytes, std::size_t size) {
    for (std::size_t index = 0; index < size; ++index) {
        record << std::hex << std::setw(2) << std::setfill('0')
               << static_cast<unsigned>(static_cast<const std::uint8_t*>(bytes)[index]);
    }
}

/// Records everything and answers the token.
std::string recordCall(Portal& portal, sd_bus_message* call) {
    std::string token;
    const char* window = nullptr;
    const char* title = nullptr;
    sd_bus_message_read(call, "ss", &window, &title);
    portal.record << "window=" << window << "\ntitle=" << title << "\n";
    sd_bus_message_enter_container(call, 'a', "{sv}");
    while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
        const char* key = nullptr;
        const char* type = nullptr;
        sd_bus_message_read(call, "s", &key);
        sd_bus_message_peek_type(call, nullptr, &type);
        const std::string kind = type;
        sd_bus_message_enter_container(call, 'v', type);
        if (kind == "s") {
            const char* text = nullptr;
            sd_bus_message_read(call, "s", &text);
            if (std::string(key) == "handle_token") {
                token = text;
            } else {
                portal.record << key << "=" << text << "\n";
            }
        } else if (kind == "b") {
            int truth = 0;
            sd_bus_message_read(call, "b", &truth);
            portal.record << key << "=" << (truth != 0 ? "true" : "false") << "\n";
        } else if (kind == "ay") {
            const void* bytes = nullptr;
            std::size_t size = 0;
            sd_bus_message_read_array(call, 'y', &bytes, &size);
            portal.record << key << "=";
            recordBytes(portal.record, bytes, size);
            portal.record << "\n";
        }
        sd_bus_message_exit_container(call);
        sd_bus_message_exit_container(call);
    }
    portal.record.flush();
    return token;
}

sd_bus_message* newResponse(sd_bus* bus, const std::string& path, const std::string& receiver) {
    sd_bus_message* signal = nullptr;
    sd_bus_message_new_signal(bus, &signal, path.c_str(), "org.freedesktop.portal.Request",
                              "Response");
    sd_bus_message_set_destination(signal, receiver.c_str());
    return signal;
}

void sendResponse(sd_bus* bus, const std::string& path, const std::string& receiver,
                  std::uint32_t response, const std::vector<std::string>& urls) {
    sd_bus_message* signal = newResponse(bus, path, receiver);
    sd_bus_message_append(signal, "u", response);
    sd_bus_message_open_container(signal, 'a', "{sv}");
    sd_bus_message_append(signal, "{sv}", "choices", "a(ss)", 1, "some", "other");
    sd_bus_message_open_container(signal, 'e', "sv");
    sd_bus_message_append(signal, "s", "uris");
    sd_bus_message_open_container(signal, 'v', "as");
    sd_bus_message_open_container(signal, 'a', "s");
    for (const std::string& url : urls) {
        sd_bus_message_append(signal, "s", url.c_str());
    }
    for (int open = 0; open < 4; ++open) {
        sd_bus_message_close_container(signal);
    }
    sd_bus_send(bus, signal, nullptr);
    sd_bus_message_unref(signal);
}

/// A response that is not of the form that it should have.
void sendMalformed(sd_bus* bus, const std::string& path, const std::string& receiver,
                   const std::string& form) {
    sd_bus_message* signal = newResponse(bus, path, receiver);
    if (form == "text") {
        sd_bus_message_append(signal, "s", "file:///text");
    } else if (form == "urls-are-text") {
        sd_bus_message_append(signal, "ua{sv}", 0, 1, "uris", "s", "file:///text");
    } else if (form == "urls-are-numbers") {
        sd_bus_message_append(signal, "ua{sv}", 0, 1, "uris", "au", 1, 7);
    } else if (form == "no-urls") {
        sd_bus_message_append(signal, "ua{sv}", 0, 0);
    }
    sd_bus_send(bus, signal, nullptr);
    sd_bus_message_unref(signal);
}

/// The same response from somebody else on the bus.
void sendFromStranger(const std::string& path, const std::string& receiver) {
    sd_bus* bus = nullptr;
    sd_bus_open_user(&bus);
    sendResponse(bus, path, receiver, 0, {"file:///stranger"});
    sd_bus_flush_close_unref(bus);
}

int openFile(sd_bus_message* call, void* userData, sd_bus_error* error) {
    Portal& portal = *static_cast<Portal*>(userData);
    sd_bus* bus = sd_bus_message_get_bus(call);
    const std::string receiver = sd_bus_message_get_sender(call);
    const std::string token = recordCall(portal, call);
    std::string sender = receiver.substr(1);
    for (char& character : sender) {
        character = character == '.' ? '_' : character;
    }
    std::string path = "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
    const std::string& behaviour = portal.behaviour;
    if (behaviour == "never-replies") {
        return 1;
    }
    if (behaviour == "error") {
        return sd_bus_error_set(error, portal.arguments[0].c_str(), "a test");
    }
    if (behaviour == "wrong-reply") {
        return sd_bus_reply_method_return(call, "u", 7);
    }
    if (behaviour == "early") {
        sendResponse(bus, path, receiver, 0, portal.arguments);
    }
    if (behaviour == "other-path") {
        path = "/org/freedesktop/portal/desktop/request/other";
    }
    sd_bus_reply_method_return(call, "o", path.c_str());
    if (behaviour == "respond" || behaviour == "other-path") {
        const auto response = static_cast<std::uint32_t>(std::stoul(portal.arguments[0]));
        sendResponse(bus, path, receiver, response,
                     {portal.arguments.begin() + 1, portal.arguments.end()});
    } else if (behaviour == "malformed") {
        sendMalformed(bus, path, receiver, portal.arguments[0]);
    } else if (behaviour == "stranger") {
        sd_bus_flush(bus);
        sendFromStranger(path, receiver);
        sendResponse(bus, path + "x", receiver, 0, {"file:///other-request"});
        sendResponse(bus, path, receiver, 0, {"file:///own"});
    } else if (behaviour == "slow") {
        sd_bus_flush(bus);
        ::usleep(1'500'000);
        sendResponse(bus, path, receiver, 0, portal.arguments);
    } else if (behaviour == "vanishes") {
        portal.endsSoon = true;
    } else if (behaviour == "ends-bus") {
        sd_bus_flush(bus);
        ::usleep(100'000);
        ::kill(static_cast<::pid_t>(std::stol(portal.arguments[0])), SIGKILL);
        ::pause();
    }
    return 1;
}

const sd_bus_vtable methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("OpenFile", "ssa{sv}", "o", openFile, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

} // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        return 2;
    }
    Portal portal{std::ofstream(arguments[1]), arguments[2], {arguments + 3, arguments + count}};
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        return 3;
    }
    if (portal.behaviour != "has-no-panels" &&
        sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/portal/desktop",
                                 "org.freedesktop.portal.FileChooser", methods, &portal) < 0) {
        return 4;
    }
    if (sd_bus_request_name(bus, "org.freedesktop.portal.Desktop", 0) < 0) {
        return 5;
    }
    portal.record << "ready" << std::endl;
    for (;;) {
        const int done = sd_bus_process(bus, nullptr);
        if (done == 0 && portal.endsSoon) {
            ::usleep(100'000);
            sd_bus_flush_close_unref(bus);
            return 0;
        }
        if (done < 0 || (done == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) {
            return 1;
        }
    }
}
