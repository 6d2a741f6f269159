// Any bytes as the files that a desktop's knowledge is in: patterns of names, a description of a
// type, a description of an icon theme. Whatever they say, questions end in an answer.

#include "platform/linux/KeyFile.hpp"
#include "platform/linux/MimeGlobs.hpp"
#include "platform/linux/MimeTypes.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace tav::internal;
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);

    // The input's last line is the name that is asked for.
    const std::string_view name = text.substr(text.rfind('\n') + 1);
    MimeGlobs globs;
    globs.add(text);
    const std::string type = globs.typeOfName(name);
    globs.add(text);
    if (globs.typeOfName(name) != type && text.find("__NOGLOBS__") == std::string_view::npos) {
        std::abort();
    }

    static_cast<void>(matchesGlob(text.substr(0, 255), name));
    if (!matchesGlob("*", name)) {
        std::abort();
    }

    const std::vector<std::string> languages = {"de", "en"};
    static_cast<void>(commentOfDescription(tav::bytesOf(text), languages));

    const KeyFile file(text);
    for (const std::string& item : file.list("Icon Theme", "Directories")) {
        if (item.empty() || file.number(item, "Size", 0) > 1000000) {
            std::abort();
        }
    }
    return 0;
}
