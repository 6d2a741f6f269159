// strings_plain copy|loop: each name copied (the cost of its string alone), or made valid by plain
// loops over its bytes.
#include "file_names.hpp"

static bool forbidden[256];

static std::string valid(std::string_view name) {
    std::string made(name);
    for (char& c : made) {
        if (forbidden[(unsigned char)c]) {
            c = '_';
        }
    }
    if (!made.empty() && (made.back() == '.' || made.back() == ' ')) {
        made.back() = '_';
    }
    return made;
}

static void spell(std::string& made, unsigned unit) {
    made += 'U';
    for (int shift = 12; shift >= 0; shift -= 4) {
        made += "0123456789ABCDEF"[unit >> shift & 15];
    }
}

static std::string transcoded(std::string_view name) {
    std::string made;
    made.reserve(name.size() + 16);
    for (size_t at = 0; at < name.size();) {
        const unsigned char c = name[at++];
        if (c < 127) {
            made += c < 32 || forbidden[c] ? '_' : (char)c;
            continue;
        }
        const int more = c == 127 ? 0 : c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
        unsigned character = c == 127 ? 127 : c & (more == 1 ? 31 : more == 2 ? 15 : 7);
        for (int i = 0; i < more; i++) {
            character = character << 6 | (name[at++] & 63);
        }
        if (character >= 0x10000) {
            character -= 0x10000;
            spell(made, 0xD800 | character >> 10);
            spell(made, 0xDC00 | (character & 1023));
        } else {
            spell(made, character);
        }
    }
    if (!made.empty() && made.back() == '.') {
        made.back() = '_';
    }
    return made;
}

int main(int, char** argv) {
    const FileNames names;
    if (std::string_view(argv[1]) == "copy") {
        const double each =
            names.nanoseconds(5, [](std::string_view name) { return std::string(name); });
        result("valid_ns_per_name", each);
        result("trans_ns_per_name", each);
        return 0;
    }
    for (int c = 1; c < 32; c++) {
        forbidden[c] = true;
    }
    for (const char* c = "\\/:*?\"<>|"; *c; c++) {
        forbidden[(unsigned char)*c] = true;
    }
    size_t bytes = 0;
    for (std::string_view name : names.names) {
        bytes += valid(name).size() + transcoded(name).size();
    }
    result("valid_ns_per_name", names.nanoseconds(5, valid));
    result("trans_ns_per_name", names.nanoseconds(5, transcoded));
    result("bytes", double(bytes));
}
