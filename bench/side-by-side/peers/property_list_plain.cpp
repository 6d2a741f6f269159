// limit-copy|limit-markup|parse-xml|parse-binary|write-xml|write-binary FILE: readers and writers
// as one writes them by hand for one's own lists, in one pass and without a single check; limits.
//   limit-copy   : copies the bytes
//   limit-markup : visits every "<" and nothing else
//   parse-*      : builds a tree of nodes (texts copied, entities decoded)
//   write-*      : writes the tree that was read from an XML list
#include "measure.hpp"

#include <memory>
#include <string_view>
#include <unordered_map>
enum Kind : uint8_t { STR, INT, REAL, BOOL, DATE, DATA, ARR, DICT };
struct Node {
    Kind k = STR;
    union {
        int64_t i;
        double d;
    };
    std::string s;
    std::vector<std::string> keys;
    std::vector<Node> kids;
    Node() : i(0) {}
};
static long nodes;
struct Xml {
    const char *p, *e;
    bool tag(std::string_view& name, bool& close, bool& empty) {
        for (;;) {
            p = (const char*)memchr(p, '<', e - p);
            if (!p)
                return false;
            const char* q = (const char*)memchr(p, '>', e - p);
            if (p[1] == '?' || p[1] == '!') {
                p = q + 1;
                continue;
            }
            close = p[1] == '/';
            empty = q[-1] == '/';
            const char* b = p + 1 + close;
            const char* t = b;
            while (t < q && *t != ' ' && *t != '/')
                t++;
            name = {b, size_t(t - b)};
            p = q + 1;
            return true;
        }
    }
    std::string text() {
        const char* q = (const char*)memchr(p, '<', e - p);
        std::string s;
        if (!memchr(p, '&', q - p))
            s.assign(p, q);
        else
            for (; p < q; p++) {
                if (*p != '&') {
                    s += *p;
                    continue;
                }
                const char* sc = (const char*)memchr(p, ';', q - p);
                std::string_view n(p + 1, sc - p - 1);
                s += n == "amp"    ? '&'
                     : n == "lt"   ? '<'
                     : n == "gt"   ? '>'
                     : n == "quot" ? '"'
                                   : '\'';
                p = sc;
            }
        p = (const char*)memchr(q, '>', e - q) + 1;
        return s;
    }
    bool value(Node& n) {
        std::string_view t;
        bool close, empty;
        if (!tag(t, close, empty) || close)
            return false;
        return value(n, t, empty);
    }
    bool value(Node& n, std::string_view t, bool empty) {
        nodes++;
        if (t == "plist")
            return value(n);
        if (t == "string") {
            n.k = STR;
            if (!empty)
                n.s = text();
        } else if (t == "integer") {
            n.k = INT;
            n.i = atoll(text().c_str());
        } else if (t == "real") {
            n.k = REAL;
            n.d = strtod(text().c_str(), nullptr);
        } else if (t == "true" || t == "false") {
            n.k = BOOL;
            n.i = t[0] == 't';
        } else if (t == "date") {
            std::string s = text();
            struct tm tm = {};
            sscanf(s.c_str(), "%d-%d-%dT%d:%d:%dZ", &tm.tm_year, &tm.tm_mon, &tm.tm_mday,
                   &tm.tm_hour, &tm.tm_min, &tm.tm_sec);
            tm.tm_year -= 1900;
            tm.tm_mon--;
            n.k = DATE;
            n.d = timegm(&tm);
        } else if (t == "data") {
            n.k = DATA;
            unsigned v = 0;
            int bits = 0;
            for (unsigned char c : text()) {
                int x = c >= 'A' && c <= 'Z'   ? c - 'A'
                        : c >= 'a' && c <= 'z' ? c - 71
                        : c >= '0' && c <= '9' ? c + 4
                        : c == '+'             ? 62
                        : c == '/'             ? 63
                                               : -1;
                if (x < 0)
                    continue;
                v = v << 6 | x;
                if ((bits += 6) >= 8) {
                    bits -= 8;
                    n.s += char(v >> bits);
                }
            }
        } else if (t == "array") {
            n.k = ARR;
            if (empty)
                return true;
            std::string_view u;
            bool c, m;
            while (tag(u, c, m) && !c)
                if (!value(n.kids.emplace_back(), u, m))
                    return false;
        } else if (t == "dict") {
            n.k = DICT;
            if (empty)
                return true;
            std::string_view u;
            bool c, m;
            while (tag(u, c, m) && !c) {
                n.keys.push_back(text());
                if (!value(n.kids.emplace_back()))
                    return false;
            }
        }
        return true;
    }
};
struct Bin {
    const unsigned char* b;
    size_t n, osz, rsz, cnt, table;
    uint64_t be(const unsigned char* p, size_t k) {
        uint64_t v = 0;
        while (k--)
            v = v << 8 | *p++;
        return v;
    }
    void open() {
        auto* t = b + n - 32;
        osz = t[6];
        rsz = t[7];
        cnt = be(t + 8, 8);
        table = be(t + 24, 8);
    }
    void value(Node& o, uint64_t ref) {
        nodes++;
        auto* p = b + be(b + table + ref * osz, osz);
        int m = *p++;
        size_t len = m & 15;
        auto full = [&] {
            if (len == 15) {
                size_t k = 1u << (*p++ & 15);
                len = be(p, k);
                p += k;
            }
        };
        switch (m >> 4) {
        case 0:
            o.k = BOOL;
            o.i = m == 9;
            break;
        case 1:
            o.k = INT;
            o.i = be(p, 1u << len);
            break;
        case 2: {
            o.k = REAL;
            uint64_t v = be(p, 8);
            memcpy(&o.d, &v, 8);
            break;
        }
        case 3: {
            o.k = DATE;
            uint64_t v = be(p, 8);
            memcpy(&o.d, &v, 8);
            break;
        }
        case 4:
            full();
            o.k = DATA;
            o.s.assign((char*)p, len);
            break;
        case 5:
            full();
            o.s.assign((char*)p, len);
            break;
        case 6:
            full();
            for (size_t i = 0; i < len; i++) {
                unsigned c = p[2 * i] << 8 | p[2 * i + 1];
                if (c < 0x80)
                    o.s += c;
                else if (c < 0x800) {
                    o.s += 0xC0 | c >> 6;
                    o.s += 0x80 | (c & 63);
                } else {
                    o.s += 0xE0 | c >> 12;
                    o.s += 0x80 | (c >> 6 & 63);
                    o.s += 0x80 | (c & 63);
                }
            }
            break;
        case 10:
            full();
            o.k = ARR;
            o.kids.resize(len);
            for (size_t i = 0; i < len; i++)
                value(o.kids[i], be(p + i * rsz, rsz));
            break;
        case 13:
            full();
            o.k = DICT;
            o.keys.resize(len);
            o.kids.resize(len);
            for (size_t i = 0; i < len; i++) {
                Node k;
                nodes--;
                value(k, be(p + i * rsz, rsz));
                o.keys[i] = std::move(k.s);
                value(o.kids[i], be(p + (len + i) * rsz, rsz));
            }
            break;
        }
    }
};
static void esc(std::string& o, const std::string& s) {
    for (char c : s) {
        if (c == '&')
            o += "&amp;";
        else if (c == '<')
            o += "&lt;";
        else if (c == '>')
            o += "&gt;";
        else
            o += c;
    }
}
static void xmlout(std::string& o, const Node& n, int d) {
    o.append(d, '\t');
    switch (n.k) {
    case STR:
        o += "<string>";
        esc(o, n.s);
        o += "</string>\n";
        break;
    case INT:
        o += "<integer>";
        o += std::to_string(n.i);
        o += "</integer>\n";
        break;
    case REAL: {
        char t[40];
        o.append(t, snprintf(t, 40, "<real>%.17g</real>\n", n.d));
        break;
    }
    case BOOL:
        o += n.i ? "<true/>\n" : "<false/>\n";
        break;
    case DATE: {
        char t[60];
        time_t x = n.d;
        tm g;
        gmtime_r(&x, &g);
        o.append(t, strftime(t, 60, "<date>%Y-%m-%dT%H:%M:%SZ</date>\n", &g));
        break;
    }
    case DATA: {
        static const char* A = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        o += "<data>";
        for (size_t i = 0; i < n.s.size(); i += 3) {
            unsigned v = 0;
            for (int k = 0; k < 3; k++)
                v = v << 8 | (i + k < n.s.size() ? (unsigned char)n.s[i + k] : 0);
            for (int k = 0; k < 4; k++)
                o += i + k > n.s.size() ? '=' : A[v >> (18 - 6 * k) & 63];
        }
        o += "</data>\n";
        break;
    }
    case ARR:
        o += "<array>\n";
        for (auto& k : n.kids)
            xmlout(o, k, d + 1);
        o.append(d, '\t');
        o += "</array>\n";
        break;
    case DICT:
        o += "<dict>\n";
        for (size_t i = 0; i < n.kids.size(); i++) {
            o.append(d + 1, '\t');
            o += "<key>";
            esc(o, n.keys[i]);
            o += "</key>\n";
            xmlout(o, n.kids[i], d + 1);
        }
        o.append(d, '\t');
        o += "</dict>\n";
        break;
    }
}
struct BinOut {
    std::string o;
    std::vector<uint32_t> off;
    std::unordered_map<std::string_view, uint32_t> strs;
    int rsz = 4;
    void head(int t, size_t n) {
        if (n < 15)
            o += char(t << 4 | n);
        else {
            o += char(t << 4 | 15);
            o += char(0x12);
            for (int s = 24; s >= 0; s -= 8)
                o += char(n >> s);
        }
    }
    void be8(uint64_t v) {
        for (int s = 56; s >= 0; s -= 8)
            o += char(v >> s);
    }
    uint32_t str(const std::string& s) {
        auto [it, fresh] = strs.try_emplace(s, 0);
        if (fresh) {
            it->second = off.size();
            off.push_back(o.size());
            head(5, s.size());
            o += s;
        }
        return it->second;
    }
    uint32_t put(const Node& n) {
        if (n.k == STR)
            return str(n.s);
        std::vector<uint32_t> r;
        if (n.k == DICT)
            for (auto& k : n.keys)
                r.push_back(str(k));
        for (auto& k : n.kids)
            r.push_back(put(k));
        uint32_t id = off.size();
        off.push_back(o.size());
        uint64_t u;
        memcpy(&u, &n.d, 8);
        switch (n.k) {
        case INT:
            o += 0x13;
            be8(n.i);
            break;
        case REAL:
            o += 0x23;
            be8(u);
            break;
        case DATE:
            o += 0x33;
            be8(u);
            break;
        case BOOL:
            o += n.i ? 9 : 8;
            break;
        case DATA:
            head(4, n.s.size());
            o += n.s;
            break;
        default:
            head(n.k == ARR ? 10 : 13, n.kids.size());
            for (auto x : r)
                for (int s = 24; s >= 0; s -= 8)
                    o += char(x >> s);
        }
        return id;
    }
};
int main(int, char** argv) {
    std::string m = argv[1];
    std::string in = contents(argv[2]);
    auto once = [&]() -> double {
        double a = now(), t;
        nodes = 0;
        if (m == "limit-copy") {
            std::string c(in.data(), in.size());
            keep(c);
            return now() - a;
        }
        if (m == "limit-markup") {
            long k = 0;
            for (const char *p = in.data(), *e = p + in.size();
                 (p = (const char*)memchr(p, '<', e - p)); p++)
                k++;
            nodes = k;
            return now() - a;
        }
        Node n;
        if (m != "parse-binary")
            Xml{in.data(), in.data() + in.size()}.value(n);
        else {
            Bin b{(const unsigned char*)in.data(), in.size(), 0, 0, 0, 0};
            b.open();
            b.value(n, b.be(b.b + b.n - 16, 8));
        }
        t = now() - a;
        if (m == "write-xml") {
            a = now();
            std::string o;
            o.reserve(in.size());
            xmlout(o, n, 0);
            keep(o);
            t = now() - a;
            nodes = o.size();
        }
        if (m == "write-binary") {
            a = now();
            BinOut b;
            b.put(n);
            keep(b.o);
            t = now() - a;
            nodes = b.off.size();
        }
        return t;
    };
    std::vector<double> v;
    for (int i = 0; i < 5; i++)
        v.push_back(once());
    result(m.starts_with("write") ? "write_ms" : "parse_ms", median(v) * 1e3);
    if (!m.starts_with("limit"))
        result("nodes", nodes);
}
