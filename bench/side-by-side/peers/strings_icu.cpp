// strings_icu set|expression: names made valid with ICU's sets or its regular expressions.
#include "file_names.hpp"

#include <unicode/regex.h>
#include <unicode/uniset.h>
#include <unicode/unistr.h>

int main(int, char** argv) {
    const FileNames names;
    UErrorCode error = U_ZERO_ERROR;
    double each = 0;
    if (std::string_view(argv[1]) == "set") {
        icu::UnicodeSet set(u"[\\\\/\\:*?\"<>|\\u0001-\\u001F]", error);
        set.freeze();
        each = names.nanoseconds(3, [&](std::string_view name) {
            icu::UnicodeString text =
                icu::UnicodeString::fromUTF8(icu::StringPiece(name.data(), int(name.size())));
            for (int i = 0; i < text.length(); i++) {
                if (set.contains(text.charAt(i))) {
                    text.setCharAt(i, u'_');
                }
            }
            const int last = text.length() - 1;
            if (last >= 0 && (text.charAt(last) == u'.' || text.charAt(last) == u' ')) {
                text.setCharAt(last, u'_');
            }
            std::string made;
            return text.toUTF8String(made);
        });
    } else {
        icu::RegexMatcher expression(u"[\\\\/:*?\"<>|\\u0001-\\u001F]|[. ]$", 0, error);
        each = names.nanoseconds(3, [&](std::string_view name) {
            const icu::UnicodeString text =
                icu::UnicodeString::fromUTF8(icu::StringPiece(name.data(), int(name.size())));
            expression.reset(text);
            std::string made;
            return expression.replaceAll(u"_", error).toUTF8String(made);
        });
    }
    result("valid_ns_per_name", each);
    return U_FAILURE(error);
}
