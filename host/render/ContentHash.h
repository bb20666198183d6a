#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "framework/contract/ImageProcessor/HkImage.h"

namespace render {

/// XXH3 with 128 bits, as 32 hexadecimal digits; xxh128sum prints the same for a file. It tells
/// bytes apart that differ by mistake, not by malice.
class ContentHash {
public:
    ContentHash();
    ~ContentHash();
    ContentHash(const ContentHash&) = delete;
    ContentHash& operator=(const ContentHash&) = delete;

    void add(const void* bytes, std::size_t count);
    std::string digits() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

std::string hashOfText(const std::string& text);

/// None when the file cannot be read to its end.
std::optional<std::string> hashOfFile(const std::string& path);

/// Of "WIDTHxHEIGHTxCHANNELS\n" and the rows of the region, without what lies between them.
std::string hashOfPixels(const HkImage& image);

}  // namespace render
