#include "host/media/formats/camera_data.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace media::formats {

namespace {

using Entry = CameraData::Entry;

constexpr unsigned kOrientation = 274;
constexpr unsigned kExifDirectory = 34665;
constexpr unsigned kGpsDirectory = 34853;
constexpr unsigned kInteroperability = 40965;  // an offset to a directory of no use here
constexpr unsigned kPixelWidth = 40962;        // of the file these came from
constexpr unsigned kPixelHeight = 40963;
/// Description, maker, model, date, author, copyright.
constexpr unsigned kCameraTags[] = {270, 271, 272, 306, 315, 33432};
constexpr std::size_t kMostBytes = 65000;  ///< of an EXIF block: what a JPEG segment holds

enum Type {
    Byte = 1,
    Ascii,
    Short,
    Long,
    Rational,
    SByte,
    Undefined,
    SShort,
    SLong,
    SRational,
    Float,
    Double
};

/// Bytes of one value, and of the numbers it is made of.
struct Widths {
    unsigned value, number;
};
Widths widthsOf(unsigned type) {
    constexpr Widths widths[] = {{0, 1}, {1, 1}, {1, 1}, {2, 2}, {4, 4}, {8, 4}, {1, 1},
                                 {1, 1}, {2, 2}, {4, 4}, {8, 4}, {4, 4}, {8, 8}};
    return type <= Double ? widths[type] : widths[0];
}

/// Reads directories; what does not fit into the block is left out.
class Block {
public:
    explicit Block(const Bytes& bytes) : m_bytes(bytes) {
        m_isLittle = bytes.startsWith("II*\0", 4);
        m_isValid = (m_isLittle || bytes.startsWith("MM\0*", 4)) && bytes.size >= 8;
    }

    std::vector<Entry> firstDirectory() const {
        return m_isValid ? directory(number(4, 4)) : std::vector<Entry>();
    }

    std::vector<Entry> directory(std::size_t at) const {
        std::vector<Entry> entries;
        if (!m_isValid || !holds(at, 2)) return entries;
        const unsigned count = number(at, 2);
        for (std::size_t i = 0; i < count && holds(at + 2 + 12 * i, 12); ++i) {
            const std::size_t place = at + 2 + 12 * i;
            Entry entry{number(place, 2), number(place + 2, 2), number(place + 4, 4), {}};
            const Widths widths = widthsOf(entry.type);
            const std::size_t size = std::size_t{entry.count} * widths.value;
            const std::size_t values = size <= 4 ? place + 8 : number(place + 8, 4);
            if (size == 0 || size > kMostBytes || !holds(values, size)) continue;
            entry.bytes.assign(m_bytes.data + values, m_bytes.data + values + size);
            if (!m_isLittle)
                for (std::size_t k = 0; k < size; k += widths.number)
                    std::reverse(
                        entry.bytes.begin() + static_cast<std::ptrdiff_t>(k),
                        entry.bytes.begin() + static_cast<std::ptrdiff_t>(k + widths.number));
            entries.push_back(std::move(entry));
        }
        return entries;
    }

private:
    bool holds(std::size_t at, std::size_t size) const {
        return at <= m_bytes.size && size <= m_bytes.size - at;
    }
    unsigned number(std::size_t at, int bytes) const {
        unsigned value = 0;
        for (int i = 0; i < bytes; ++i) {
            const int k = m_isLittle ? bytes - 1 - i : i;
            value = value << 8 | m_bytes.data[at + static_cast<std::size_t>(k)];
        }
        return value;
    }

    Bytes m_bytes;
    bool m_isLittle = false;
    bool m_isValid = false;
};

unsigned firstNumber(const Entry& entry) {
    unsigned value = 0;
    const std::size_t width = std::min<std::size_t>(widthsOf(entry.type).number, 4);
    for (std::size_t i = std::min(width, entry.bytes.size()); i-- > 0;)
        value = value << 8 | entry.bytes[i];
    return value;
}

std::size_t sizeOf(const std::vector<Entry>& entries) {
    std::size_t size = 6;
    for (const Entry& entry : entries)
        size += 12 + (entry.bytes.size() > 4 ? entry.bytes.size() + 1 : 0);
    return size;
}

Directory putEntries(std::vector<Entry> entries, std::size_t origin,
                     std::vector<unsigned char>& block) {
    const std::size_t begin = block.size();
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
    put16(static_cast<unsigned>(entries.size()), block);
    std::vector<std::size_t> places;
    for (const Entry& entry : entries) {
        put16(entry.tag, block);
        put16(entry.type, block);
        put32(entry.count, block);
        places.push_back(block.size());
        put32(0, block);
    }
    const std::size_t next = block.size();
    put32(0, block);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::vector<unsigned char>& bytes = entries[i].bytes;
        if (bytes.size() <= 4) {
            std::copy(bytes.begin(), bytes.end(),
                      block.begin() + static_cast<std::ptrdiff_t>(places[i]));
            continue;
        }
        if (block.size() % 2 != origin % 2) block.push_back(0);  // values begin at even offsets
        set32(static_cast<unsigned>(block.size() - origin), places[i], block);
        block.insert(block.end(), bytes.begin(), bytes.end());
    }
    if (block.size() % 2 != origin % 2) block.push_back(0);
    return {begin, next};
}

}  // namespace

void put16(unsigned value, std::vector<unsigned char>& block) {
    block.push_back(static_cast<unsigned char>(value));
    block.push_back(static_cast<unsigned char>(value >> 8));
}

void put32(unsigned value, std::vector<unsigned char>& block) {
    put16(value, block);
    put16(value >> 16, block);
}

void set32(unsigned value, std::size_t at, std::vector<unsigned char>& block) {
    for (std::size_t i = 0; i < 4; ++i) block[at + i] = static_cast<unsigned char>(value >> 8 * i);
}

Entry shortsEntry(unsigned tag, const std::vector<unsigned>& values) {
    Entry entry{tag, Short, static_cast<unsigned>(values.size()), {}};
    for (const unsigned value : values) put16(value, entry.bytes);
    return entry;
}

Entry longsEntry(unsigned tag, const std::vector<unsigned>& values) {
    Entry entry{tag, Long, static_cast<unsigned>(values.size()), {}};
    for (const unsigned value : values) put32(value, entry.bytes);
    return entry;
}

Entry rationalEntry(unsigned tag, double value) {
    Entry entry{tag, Rational, 1, {}};
    const double parts = value < 4e6 ? 1000 : 1;
    put32(static_cast<unsigned>(std::min(std::round(value * parts), 4294967295.0)), entry.bytes);
    put32(static_cast<unsigned>(parts), entry.bytes);
    return entry;
}

Entry bytesEntry(unsigned tag, const std::vector<unsigned char>& values) {
    return {tag, Undefined, static_cast<unsigned>(values.size()), values};
}

CameraData cameraDataOf(const Bytes& bytes) {
    const Block block(bytes);
    CameraData data;
    const auto directoryAt = [&](const Entry& pointer) {
        std::vector<Entry> entries = block.directory(firstNumber(pointer));
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [](const Entry& entry) {
                                         return entry.tag == kInteroperability ||
                                                entry.tag == kPixelWidth ||
                                                entry.tag == kPixelHeight;
                                     }),
                      entries.end());
        return entries;
    };
    for (Entry& entry : block.firstDirectory()) {
        if (entry.tag == kExifDirectory) data.exif = directoryAt(entry);
        if (entry.tag == kGpsDirectory) data.gps = directoryAt(entry);
        if (std::find(std::begin(kCameraTags), std::end(kCameraTags), entry.tag) !=
            std::end(kCameraTags))
            data.entries.push_back(std::move(entry));
    }
    // A block that points at itself would grow with each copy.
    if (sizeOf(data.entries) + sizeOf(data.exif) + sizeOf(data.gps) > kMostBytes) return {};
    return data;
}

int orientationOf(const Bytes& block) {
    for (const Entry& entry : Block(block).firstDirectory())
        if (entry.tag == kOrientation) {
            const unsigned value = firstNumber(entry);
            return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
        }
    return 1;
}

Directory putDirectory(std::vector<Entry> entries, const CameraData& data, std::size_t origin,
                       std::vector<unsigned char>& block) {
    entries.insert(entries.end(), data.entries.begin(), data.entries.end());
    const auto putBefore = [&](unsigned tag, const std::vector<Entry>& directory) {
        if (directory.empty()) return;
        entries.push_back(longsEntry(tag, {static_cast<unsigned>(block.size() - origin)}));
        putEntries(directory, origin, block);
    };
    // The directories pointed at come first, so that their offsets are known.
    putBefore(kExifDirectory, data.exif);
    putBefore(kGpsDirectory, data.gps);
    return putEntries(std::move(entries), origin, block);
}

std::vector<unsigned char> asExif(const CameraData& data) {
    if (data.isEmpty()) return {};
    std::vector<unsigned char> block = {'I', 'I', '*', 0, 0, 0, 0, 0};
    const Directory first = putDirectory({shortsEntry(kOrientation, {1})}, data, 0, block);
    set32(static_cast<unsigned>(first.begin), 4, block);
    return block;
}

}  // namespace media::formats
