#include "host/editor/StageCache.h"

namespace editor {

std::optional<StageCache::Stage> StageCache::find(const std::string& key) {
    const auto found = m_byKey.find(key);
    if (found == m_byKey.end()) return std::nullopt;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->stage;
}

void StageCache::keep(const std::string& key, const Stage& stage) {
    if (m_byKey.count(key)) return;
    const std::size_t bytes = static_cast<std::size_t>(stage.picture->step) *
                              static_cast<std::size_t>(stage.picture->height);
    m_entries.push_front({key, stage, bytes});
    m_byKey[key] = m_entries.begin();
    m_bytes += bytes;
    // The newest stays whatever its size: the next request needs it.
    while (m_bytes > m_mostBytes && m_entries.size() > 1) {
        m_bytes -= m_entries.back().bytes;
        m_byKey.erase(m_entries.back().key);
        m_entries.pop_back();
    }
}

void StageCache::clear() {
    m_entries.clear();
    m_byKey.clear();
    m_bytes = 0;
}

}  // namespace editor
