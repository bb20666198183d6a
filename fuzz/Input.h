#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace fuzz {

/// The bytes of one trial, taken from the front. Behind their end come zeros.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool isEmpty() const { return m_next == m_end; }
    std::uint8_t byte() { return isEmpty() ? 0 : *m_next++; }

    /// least to most, both included, at most 256 of them.
    int number(int least, int most) { return least + byte() % (most - least + 1); }

    /// Any value of a plain type, as its bytes have it.
    template <class Value>
    Value any() {
        unsigned char bytes[sizeof(Value)];
        for (unsigned char& one : bytes) one = byte();
        Value value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

    /// One of a list.
    template <class List>
    auto oneOf(const List& list) {
        return *(std::begin(list) + byte() % std::size(list));
    }

    /// Up to the next line break, which is left out.
    std::string line() {
        std::string text;
        while (!isEmpty()) {
            const char c = static_cast<char>(byte());
            if (c == '\n') break;
            text += c;
        }
        return text;
    }

    std::string rest() {
        const std::string bytes(m_next, m_end);
        m_next = m_end;
        return bytes;
    }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

}  // namespace fuzz
