// enumerate_filesystem FOLDER: the size of every file in all depths by the standard library, median
// of three.
#include "measure.hpp"

#include <filesystem>

int main(int, char** arguments) {
    long entries = 0, matched = 0;
    uintmax_t bytes = 0;
    const double seconds = median_of(3, [&] {
        entries = matched = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[1])) {
            entries++;
            if (entry.is_regular_file()) {
                bytes += entry.file_size();
            }
            matched += entry.path().extension() == ".jpg";
        }
    });
    keep(bytes);
    result("pass_ms", seconds * 1e3);
    result("ns_per_entry", seconds * 1e9 / double(entries));
    result("entries", double(entries));
    result("matched", double(matched));
}
