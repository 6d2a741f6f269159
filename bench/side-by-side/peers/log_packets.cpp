// log_packets TASK FILE COUNT: packets "length blank text line-feed" without any of our code.
//   write       COUNT times the same ready packet, one write each: the limit
//   format      each record formatted, one write each
//   frames      finds the packets in the bytes of the file, keeping where they are
//   fields      the same, and every key and value as a piece of those bytes
#include "log_record.hpp"

#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static char* put(char* p, std::string_view text) {
    memcpy(p, text.data(), text.size());
    return p + text.size();
}

static char* value(char* p, const std::string& text) {
    bool bare = !text.empty();
    for (unsigned char c : text)
        bare = bare && isalnum(c);
    if (bare)
        return put(p, text);
    *p++ = '"';
    for (char c : text) {
        if (c == '"' || c == '\\')
            *p++ = '\\';
        *p++ = c;
    }
    *p++ = '"';
    return p;
}

static size_t packet(char* out, const Record& r) {
    static const char hex[] = "0123456789abcdef";
    char* const body = out + 16;
    char* p = put(body, "{\n    data = <");
    for (int k = 0; k < 8; k++) {
        if (k == 4)
            *p++ = ' ';
        *p++ = hex[r.data[k] >> 4];
        *p++ = hex[r.data[k] & 15];
    }
    p = put(p, ">;\n    date = "), p = value(p, r.date);
    p = put(p, ";\n    extra = "), p = value(p, r.extra);
    p = put(p, ";\n    function = "), p = value(p, r.function);
    p = put(p, ";\n    message = "), p = value(p, r.message);
    p = put(p, ";\n    message2 = "), p = value(p, r.message2);
    p = put(p, ";\n    module = "), p = value(p, r.module);
    p = put(p, ";\n    sourceFile = "), p = value(p, r.file);
    p = put(p, ";\n    sourceLine = "), p = put(p, std::to_string(r.line));
    p = put(p, ";\n    type = "), p = put(p, std::to_string(r.type));
    p = put(p, ";\n}");
    const std::string head = std::to_string(p - body) + " ";
    memmove(put(out, head), body, size_t(p - body));
    out[head.size() + size_t(p - body)] = '\n';
    return head.size() + size_t(p - body) + 1;
}

int main(int argc, char** argv) {
    const std::string task = argv[1];
    const long count = atol(argv[3]);
    std::vector<char> buffer(1 << 16);
    if (task == "write" || task == "format") {
        const int file = open(argv[2], O_RDWR | O_CREAT | O_TRUNC | O_APPEND, 0600);
        const std::vector<Record> records = some_records();
        size_t size = packet(buffer.data(), records[0]);
        const double begin = now();
        for (long i = 0; i < count; i++) {
            if (task == "format")
                size = packet(buffer.data(), records[size_t(i) % records.size()]);
            if (write(file, buffer.data(), size) != ssize_t(size))
                return 3;
        }
        result("ns_per_record", (now() - begin) * 1e9 / double(count));
        return 0;
    }
    const double begin = now();
    const int file = open(argv[2], O_RDONLY);
    struct stat status;
    fstat(file, &status);
    const size_t size = size_t(status.st_size);
    char* bytes = (char*)malloc(size + 64);
    for (size_t got = 0; got < size;) {
        const ssize_t n = read(file, bytes + got, size - got);
        if (n <= 0)
            return 3;
        got += size_t(n);
    }
    bytes[size] = 0;
    std::vector<std::string_view> payloads, pieces;
    long fields = 0;
    for (size_t at = 0; at < size;) {
        char* digits = bytes + at;
        while (digits < bytes + size && !isdigit((unsigned char)*digits))
            digits++;
        char* end;
        const size_t length = strtoul(digits, &end, 10);
        if (*end == ' ')
            end++;
        const size_t begin = size_t(end - bytes);
        if (length < 1 || begin + length > size)
            break;
        payloads.emplace_back(end, length);
        at = begin + length + 1;
        if (task != "fields")
            continue;
        const char *p = end + 1, *last = end + length;
        pieces.clear();
        while (p < last) {
            while (p < last && (unsigned char)*p <= ' ')
                p++;
            if (p >= last || *p == '}')
                break;
            const char* key = p;
            while (*p != ' ')
                p++;
            pieces.emplace_back(key, p - key);
            p += 3;
            const char* text = p;
            if (*p == '"') {
                for (p++; *p != '"'; p++)
                    if (*p == '\\')
                        p++;
                p++;
            } else {
                p = (const char*)memchr(p, ';', size_t(last - p));
            }
            pieces.emplace_back(text, p - text);
            p++;
        }
        fields += long(pieces.size() / 2);
        keep(pieces);
    }
    result("ns_per_record", (now() - begin) * 1e9 / double(payloads.size()));
    result("records", double(payloads.size()));
    if (fields)
        result("fields", double(fields));
}
