#pragma once

#include "platform/HtmlImporter.hpp"

#include <thread>
#include <vector>

namespace tav {

/// An importer of a test: it answers what it is told to and keeps what it was given.
class MemoryHtmlImporter final : public HtmlImporter {
  public:
    /// Nothing stands for an import that fails.
    std::optional<HtmlDocument> answer;
    /// The bytes of each import, and the thread that it came from.
    std::vector<Data> imported;
    std::vector<std::thread::id> threads;

    std::optional<HtmlDocument> importHTML(BytesView html) override {
        imported.emplace_back(html.begin(), html.end());
        threads.push_back(std::this_thread::get_id());
        return answer;
    }
};

} // namespace tav
