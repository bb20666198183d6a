#pragma once

#include <cstddef>
#include <cstdint>

namespace numeric {

/// Hands out the parts of a caller's scratch one after another, each aligned for its type, whatever
/// the alignment of the scratch itself. Without a scratch it only measures: used() then is the size
/// that suffices for every alignment, so that one function serves layout and size routine alike.
class ScratchLayout {
public:
    ScratchLayout() = default;
    explicit ScratchLayout(unsigned char* scratch) : m_scratch(scratch) {}

    template <class T>
    T* take(std::int64_t count) {
        if (!m_scratch) {
            m_used += static_cast<std::int64_t>(alignof(T)) - 1;
        } else {
            const auto address = reinterpret_cast<std::uintptr_t>(m_scratch + m_used);
            m_used += static_cast<std::int64_t>(-address % alignof(T));
        }
        T* part = m_scratch ? reinterpret_cast<T*>(m_scratch + m_used) : nullptr;
        m_used += count * static_cast<std::int64_t>(sizeof(T));
        return part;
    }

    std::int64_t used() const { return m_used; }

private:
    unsigned char* m_scratch = nullptr;
    std::int64_t m_used = 0;
};

}  // namespace numeric
