#include "host/media/formats/deflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <new>

namespace media::formats {

namespace {

libdeflate_decompressor& decompressor() {
    thread_local const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)>
        own(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    if (!own) throw std::bad_alloc();
    return *own;
}

libdeflate_compressor& compressor(int level) {
    using Owned = std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)>;
    thread_local Owned own(nullptr, libdeflate_free_compressor);
    thread_local int ownLevel = -1;
    if (!own || ownLevel != level) {
        own.reset(libdeflate_alloc_compressor(level));
        ownLevel = level;
    }
    if (!own) throw std::bad_alloc();
    return *own;
}

}  // namespace

Scratch::~Scratch() {
    std::free(m_data);
}

unsigned char* Scratch::atLeast(std::size_t size) {
    if (size > m_size) {
        std::free(m_data);
        m_data = static_cast<unsigned char*>(std::malloc(size));
        m_size = m_data ? size : 0;
        if (!m_data) throw std::bad_alloc();
    }
    return m_data;
}

void inflateExactly(const Bytes& stream, unsigned char* out, std::size_t size) {
    if (libdeflate_zlib_decompress(&decompressor(), stream.data, stream.size, out, size, nullptr) !=
        LIBDEFLATE_SUCCESS)
        refuseDamaged("its compressed pixels are wrong");
}

std::vector<unsigned char> inflateUpTo(const Bytes& stream, std::size_t limit) {
    std::vector<unsigned char> out(
        std::min<std::size_t>(limit, static_cast<std::size_t>(kDeflateRatio) * (stream.size + 1)));
    std::size_t size = 0;
    if (libdeflate_zlib_decompress(&decompressor(), stream.data, stream.size, out.data(),
                                   out.size(), &size) != LIBDEFLATE_SUCCESS)
        size = 0;
    out.resize(size);
    return out;
}

void deflateTo(const Bytes& bytes, int level, std::vector<unsigned char>& out) {
    libdeflate_compressor& own = compressor(level);
    thread_local Scratch scratch;
    const std::size_t most = libdeflate_zlib_compress_bound(&own, bytes.size);
    unsigned char* stream = scratch.atLeast(most);
    const std::size_t size = libdeflate_zlib_compress(&own, bytes.data, bytes.size, stream, most);
    if (size == 0) throw std::bad_alloc();  // never: the bound is the library's own
    out.insert(out.end(), stream, stream + size);
}

void deflateRunsTo(const Bytes& bytes, std::vector<unsigned char>& out) {
    constexpr int kMemory = 8;  // zlib's own choice
    z_stream stream = {};
    // Without head and checksum: the other library computes that with vectors.
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, kMemory, Z_RLE) != Z_OK)
        throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> own(&stream, deflateEnd);
    thread_local Scratch scratch;
    const std::size_t most = deflateBound(&stream, bytes.size);
    stream.next_out = scratch.atLeast(most);
    stream.avail_out = static_cast<uInt>(most);
    stream.next_in = const_cast<Bytef*>(bytes.data);
    stream.avail_in = static_cast<uInt>(bytes.size);
    const unsigned char* const begin = stream.next_out;
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::bad_alloc();  // never
    out.insert(out.end(), {0x78, 0x01});  // a window of 32 KiB, the fastest way
    out.insert(out.end(), begin, begin + stream.total_out);
    const unsigned sum = libdeflate_adler32(1, bytes.data, bytes.size);
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<unsigned char>(sum >> shift));
}

unsigned crc32Of(const Bytes& bytes) {
    return libdeflate_crc32(0, bytes.data, bytes.size);
}

}  // namespace media::formats
