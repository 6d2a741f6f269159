// log_spdlog FILE COUNT: spdlog's file sink, flushed at every record.
#include "log_record.hpp"

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

int main(int, char** argv) {
    const long count = atol(argv[2]);
    const std::vector<Record> records = some_records();
    const auto log = spdlog::basic_logger_mt("log", argv[1], true);
    log->set_pattern("%Y%m%dT%H%M%S %v");
    log->flush_on(spdlog::level::trace);
    const double begin = now();
    for (long i = 0; i < count; i++) {
        const Record& r = records[size_t(i) % records.size()];
        log->info("type={} message=\"{}\" message2=\"{}\" sourceFile={} sourceLine={} function={} "
                  "module={} extra=\"{}\"",
                  r.type, r.message, r.message2, r.file, r.line, r.function, r.module, r.extra);
    }
    result("ns_per_record", (now() - begin) * 1e9 / double(count));
}
