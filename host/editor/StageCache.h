#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/editor/Preview.h"

namespace editor {

/// Keeps the pictures after the stages of the chain, named by all that they depend on. When they
/// take more than the given number of bytes, those go that were not asked for the longest. One
/// thread.
class StageCache {
public:
    explicit StageCache(std::size_t mostBytes) : m_mostBytes(mostBytes) {}

    struct Stage {
        Picture picture;
        std::vector<Objection> objections;  ///< to all filters up to this one
    };

    std::optional<Stage> find(const std::string& key);
    void keep(const std::string& key, const Stage& stage);
    void clear();

private:
    struct Entry {
        std::string key;
        Stage stage;
        std::size_t bytes;
    };

    std::size_t m_mostBytes;
    std::size_t m_bytes = 0;
    std::list<Entry> m_entries;  // the most recently used first
    std::unordered_map<std::string, std::list<Entry>::iterator> m_byKey;
};

}  // namespace editor
