// parse-xml|parse-binary|write-xml|write-binary FILE: libplist.
#include "measure.hpp"

#include <plist/plist.h>
int main(int, char** argv) {
    const std::string job = argv[1];
    const std::string text = contents(argv[2]);
    const bool writes = job.starts_with("write");
    std::vector<double> times;
    for (int i = 0; i < 5; i++) {
        double begin = now();
        plist_t list = nullptr;
        if (job == "parse-binary") {
            plist_from_bin(text.data(), uint32_t(text.size()), &list);
        } else {
            plist_from_xml(text.data(), uint32_t(text.size()), &list);
        }
        double seconds = now() - begin;
        if (!list) {
            return 2;
        }
        if (writes) {
            char* bytes = nullptr;
            uint32_t size = 0;
            begin = now();
            if (job == "write-xml") {
                plist_to_xml(list, &bytes, &size);
            } else {
                plist_to_bin(list, &bytes, &size);
            }
            seconds = now() - begin;
            free(bytes);
        }
        plist_free(list);
        times.push_back(seconds);
    }
    result(writes ? "write_ms" : "parse_ms", median(times) * 1e3);
}
