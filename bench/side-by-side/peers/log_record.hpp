// The records of the job log: ten fields, about 360 bytes as old-style text. ours_log.cpp makes the
// same ones.
#pragma once
#include "measure.hpp"

struct Record {
    int type, line;
    std::string message, message2, file, function, module, extra, date;
    unsigned char data[8];
};

inline Record record_number(long i) {
    Record r;
    r.type = int(i % 12);
    r.line = int(10 + i % 4000);
    r.message =
        "Copied item number " + std::to_string(i) + " from the desktop to the device volume";
    r.message2 = "second message of record " + std::to_string(i * 7 % 100003);
    r.file = "source_file_" + std::to_string(i % 37) + ".cc";
    r.function = "performOperation" + std::to_string(i % 101);
    r.module = "module" + std::to_string(i % 9);
    r.extra = "extra description, value " + std::to_string(i * 31 % 65536);
    for (int k = 0; k < 8; k++)
        r.data[k] = (unsigned char)(i >> k);
    char date[32];
    snprintf(date, sizeof date, "20260102T%02ld%02ld%02ld", i / 3600 % 24, i / 60 % 60, i % 60);
    r.date = date;
    return r;
}

inline std::vector<Record> some_records() {
    std::vector<Record> records;
    for (long i = 0; i < 4096; i++)
        records.push_back(record_number(i));
    return records;
}
