#include "base/KeyedCoding.hpp"

#include <functional>
#include <map>
#include <mutex>

namespace tav {
namespace {

struct Table {
    std::mutex mutex;
    std::map<std::string, ArchivedClassMaker, std::less<>> makers;
};

Table& table() {
    static Table theTable;
    return theTable;
}

} // namespace

void registerArchivedClass(std::string_view name, ArchivedClassMaker maker) {
    const std::scoped_lock lock(table().mutex);
    table().makers.insert_or_assign(std::string(name), maker);
}

ArchivedClassMaker archivedClassMaker(std::string_view name) {
    const std::scoped_lock lock(table().mutex);
    const auto found = table().makers.find(name);
    return found == table().makers.end() ? nullptr : found->second;
}

} // namespace tav
