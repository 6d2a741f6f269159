// What listing a local folder costs: names alone, through a filter by name, and with every size.

#include "fileinfo/TavFileExtensionsFilter.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

namespace {

using namespace tav;

/// A folder of so many files, one in four a picture, or of so many folders with ten files each.
class Tree {
  public:
    Tree(int files, int folders) {
        std::string form = std::filesystem::temp_directory_path() / "tav-bench.XXXXXX";
        if (::mkdtemp(form.data()) == nullptr) {
            std::abort();
        }
        folder_ = form;
        for (int i = 0; i < folders; ++i) {
            const std::string inner = folders > 1 ? std::to_string(i) + '/' : std::string();
            if (folders > 1) {
                static_cast<void>(FileSystem::current().createFolder(pathOf(inner), 0755));
            }
            for (int file = 0; file < files; ++file) {
                const std::string name =
                    inner + "IMG_" + std::to_string(file) + (file % 4 == 0 ? ".jpg" : ".txt");
                static_cast<void>(FileSystem::current().writeFile(pathOf(name), {}, 0644));
            }
        }
    }
    ~Tree() { std::filesystem::remove_all(folder_); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    [[nodiscard]] std::shared_ptr<TavMacFileInfo> item() const {
        return TavMacFileInfo::fileInfoWithPath(folder_);
    }

  private:
    [[nodiscard]] std::string pathOf(const std::string& name) const { return folder_ + '/' + name; }

    std::string folder_;
};

class SizedItems final : public TavBaseFileInfoFilter {
  public:
    bool includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) override {
        return item.isFile() && item.size() > 0;
    }
};

void listed(benchmark::State& state, const Tree& tree, TavBaseFileInfoFilter* filter, bool isDeep) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(isDeep ? tree.item()->folderContentsDeepWithFilter(filter)
                                        : tree.item()->folderContentsWithFilter(filter));
    }
}

void ListFlat(benchmark::State& state) { listed(state, Tree(10'000, 1), nullptr, false); }
BENCHMARK(ListFlat)->Unit(benchmark::kMicrosecond);

void ListFlatByExtension(benchmark::State& state) {
    TavFileExtensionsFilter filter({"jpg"});
    listed(state, Tree(10'000, 1), &filter, false);
}
BENCHMARK(ListFlatByExtension)->Unit(benchmark::kMicrosecond);

void ListFlatWithSizes(benchmark::State& state) {
    SizedItems filter;
    listed(state, Tree(10'000, 1), &filter, false);
}
BENCHMARK(ListFlatWithSizes)->Unit(benchmark::kMicrosecond);

void ListDeep(benchmark::State& state) { listed(state, Tree(10, 1'000), nullptr, true); }
BENCHMARK(ListDeep)->Unit(benchmark::kMicrosecond);

} // namespace
