#include "host/render/ContentHash.h"

#include <xxhash.h>

#include <cstdio>
#include <new>
#include <vector>

namespace render {

struct ContentHash::State {
    XXH3_state_t* hash = XXH3_createState();
    ~State() { XXH3_freeState(hash); }
};

ContentHash::ContentHash() : m_state(std::make_unique<State>()) {
    if (!m_state->hash || XXH3_128bits_reset(m_state->hash) != XXH_OK) throw std::bad_alloc();
}

ContentHash::~ContentHash() = default;

void ContentHash::add(const void* bytes, std::size_t count) {
    XXH3_128bits_update(m_state->hash, bytes, count);
}

std::string ContentHash::digits() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(m_state->hash);
    char text[33];
    std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return text;
}

std::string hashOfText(const std::string& text) {
    ContentHash hash;
    hash.add(text.data(), text.size());
    return hash.digits();
}

std::optional<std::string> hashOfFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                               std::fclose);
    if (!file) return {};
    ContentHash hash;
    std::vector<unsigned char> bytes(1 << 18);
    while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file.get()))
        hash.add(bytes.data(), count);
    if (std::ferror(file.get())) return {};
    return hash.digits();
}

std::string hashOfPixels(const HkImage& image) {
    ContentHash hash;
    const std::string shape = std::to_string(image.roiWidth) + 'x' +
                              std::to_string(image.roiHeight) + 'x' +
                              std::to_string(image.channels) + '\n';
    hash.add(shape.data(), shape.size());
    const std::size_t rowBytes =
        static_cast<std::size_t>(image.roiWidth) * static_cast<std::size_t>(image.channels);
    for (int y = 0; y < image.roiHeight; ++y)
        hash.add(image.data + static_cast<std::ptrdiff_t>(y) * image.step, rowBytes);
    return hash.digits();
}

}  // namespace render
