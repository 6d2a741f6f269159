// A program that only brings the C++ library up, as a tool that is linked dynamically would.
#include <iostream>
#include <map>
#include <string>
int main(int argc, char** argv) {
    const std::map<std::string, int> m{{argv[0], argc}};
    return std::cout.good() && m.size() == 1 ? 0 : 1;
}
