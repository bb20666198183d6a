#pragma once

#include <vector>

#include "host/media/formats/Format.h"

/// zlib streams by libdeflate: a third of zlib's time, and the same bytes on every machine. Runs
/// alone are found by zlib, which has a faster way for them.
namespace media::formats {

/// Bytes that are taken over and over: kept by each thread, never cleared, never shrunk.
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();
    unsigned char* atLeast(std::size_t size);  ///< contents undefined; throws std::bad_alloc

private:
    unsigned char* m_data = nullptr;
    std::size_t m_size = 0;
};

/// No deflate stream grows more.
constexpr double kDeflateRatio = 1032;

/// Throws FormatError unless the stream is whole, gives exactly that many bytes and its checksum
/// is right.
void inflateExactly(const Bytes& stream, unsigned char* out, std::size_t size);
/// A stream of at most `limit` bytes.
std::vector<unsigned char> inflateUpTo(const Bytes& stream, std::size_t limit);

/// Appends the stream of the bytes. level: 0 (stored) to 12.
void deflateTo(const Bytes& bytes, int level, std::vector<unsigned char>& out);
/// Appends a stream in which only runs of one byte are made shorter.
void deflateRunsTo(const Bytes& bytes, std::vector<unsigned char>& out);

unsigned crc32Of(const Bytes& bytes);

}  // namespace media::formats
