// FILE: reads the tokens of an XML list with expat and builds nothing.
#include "measure.hpp"

#include <expat.h>
static long elements;
int main(int, char** argv) {
    const std::string text = contents(argv[1]);
    const double seconds = median_of(5, [&] {
        elements = 0;
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(
            parser, [](void*, const XML_Char*, const XML_Char**) { elements++; },
            [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
        XML_Parse(parser, text.data(), int(text.size()), 1);
        XML_ParserFree(parser);
    });
    result("parse_ms", seconds * 1e3);
    result("elements", double(elements));
}
