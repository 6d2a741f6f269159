// ours_log append FILE COUNT: logs so many records of ten fields, each in the file when the call
// returns. ours_log open|read FILE COUNT: opens a log; "read" then looks at every field of every
// record.

#include "bench/Measure.hpp"
#include "log/LogFacility.hpp"
#include "platform/Clock.hpp"
#include "platform/memory/MemoryPreferences.hpp"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tav;

/// The same as the other programs of the job log (peers/log_record.hpp).
struct Fields {
    int type = 0;
    int line = 0;
    std::string message;
    Value message2;
    std::string file;
    std::string function;
    std::string module;
    std::string extra;
    Value extraObject;
};

Fields fieldsOf(long number) {
    Fields fields;
    fields.type = static_cast<int>(number % 12);
    fields.line = static_cast<int>(10 + number % 4000);
    fields.message =
        "Copied item number " + std::to_string(number) + " from the desktop to the device volume";
    fields.message2 = Value("second message of record " + std::to_string(number * 7 % 100003));
    fields.file = "source_file_" + std::to_string(number % 37) + ".cc";
    fields.function = "performOperation" + std::to_string(number % 101);
    fields.module = "module" + std::to_string(number % 9);
    fields.extra = "extra description, value " + std::to_string(number * 31 % 65536);
    fields.extraObject = Value(fields.extra);
    return fields;
}

int append(const char* file, long count) {
    MemoryPreferences preferences;
    const Preferences::Replacement replacement(preferences);
    LogEnableAll();
    LogInit({}, file);
    std::vector<Fields> fields;
    for (long i = 0; i < 4096; ++i) {
        fields.push_back(fieldsOf(i));
    }
    const double seconds = bench::secondsOf([&] {
        for (long i = 0; i < count; ++i) {
            const Fields& one = fields[static_cast<std::size_t>(i) % fields.size()];
            LogMessage(one.type, one.module.c_str(), one.file.c_str(), one.function.c_str(),
                       one.line, &one.extraObject, &one.message2, "%@", one.message);
        }
    });
    bench::result("append_s", seconds);
    bench::result("ns_per_record", seconds * 1e9 / static_cast<double>(count));
    LogDInit();
    return 0;
}

int read(const char* file, bool everyField) {
    std::size_t records = 0;
    std::size_t fields = 0;
    const double seconds = bench::secondsOf([&] {
        LogFile log(file);
        records = log.getItemCount();
        for (std::size_t i = 0; everyField && i < records; ++i) {
            if (const RecordPtr record = log.getItem(i)) {
                fields += record->size();
            }
        }
    });
    bench::result("read_s", seconds);
    bench::result("ns_per_record", seconds * 1e9 / static_cast<double>(records));
    bench::result("records", static_cast<double>(records));
    if (everyField) {
        bench::result("fields", static_cast<double>(fields));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view job = argc == 4 ? argv[1] : "";
    if (job == "append") {
        return append(argv[2], std::atol(argv[3]));
    }
    if (job == "open" || job == "read") {
        return read(argv[2], job == "read");
    }
    std::fprintf(stderr, "append|open|read FILE COUNT\n");
    return 2;
}
