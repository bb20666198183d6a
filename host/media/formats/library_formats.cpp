// The formats that OpenImageIO reads and writes, each by its reader's name.

#include <dlfcn.h>
#include <sys/mman.h>

#include <cstring>

#include "host/kernel/host_library.h"
#include "host/media/formats/picture_library.h"

namespace media::formats {

namespace {

unsigned little(const Bytes& file, std::size_t at, std::size_t bytes) {
    const Bytes part = file.part(at, bytes);
    unsigned value = 0;
    for (std::size_t i = bytes; i-- > 0;) value = value << 8 | part.data[i];
    return value;
}

/// What a file can hold of the pixels it claims, by kind of compression.
constexpr double kStored = 8;  // of one bit each
constexpr double kRuns = 128;
constexpr double kAnything = 100000;

constexpr char kBmp[] = "bmp";
constexpr char kTarga[] = "targa";
constexpr char kPnm[] = "pnm";
constexpr char kExr[] = "openexr";

template <const char* kReader, const double& kMostPerByte>
std::unique_ptr<PictureDecoder> open(const Bytes& file, int) {
    return pictureLibrary().open(kReader, file, kMostPerByte);
}

template <const char* kWriter>
void encode(const PictureRows& rows, const PictureProperties& properties, const WriteOptions&,
            const std::string& suffix, std::vector<unsigned char>& file) {
    pictureLibrary().encode(kWriter, rows, properties, suffix, file);
}

/// Kinds of BMP whose reader is sound.
std::unique_ptr<PictureDecoder> openBmp(const Bytes& file, int) {
    const unsigned headSize = little(file, 14, 4);
    if (headSize < 40) refuseKind("an old BMP head");
    const unsigned bits = little(file, 28, 2);
    const unsigned compression = little(file, 30, 4);
    const bool isPlain = compression == 0 && (bits == 8 || bits == 24 || bits == 32);
    const bool hasMasks = compression == 3 && bits == 32;
    if (!isPlain && !hasMasks)
        refuseKind(std::to_string(bits) + " bits, compression " + std::to_string(compression));
    const unsigned colours = little(file, 46, 4);
    if (bits == 8 && colours != 0 && colours != 256)
        refuseKind("a palette of " + std::to_string(colours));
    file.part(little(file, 10, 4), 1);
    return pictureLibrary().open(kBmp, file, 4);
}

bool isTarga(const Bytes& file) {
    if (file.size < 18) return false;
    const unsigned char* head = file.data;
    const int type = head[2] & ~8;
    const int bits = head[16];
    const bool isPalette = head[1] == 1 && type == 1 && bits == 8;
    const bool isColour =
        head[1] == 0 && type == 2 && (bits == 15 || bits == 16 || bits == 24 || bits == 32);
    const bool isGrey = head[1] == 0 && type == 3 && (bits == 8 || bits == 16);
    return (head[2] & ~0xb) == 0 && (isPalette || isColour || isGrey) && (head[17] & 0xc0) == 0;
}

std::unique_ptr<PictureDecoder> openTarga(const Bytes& file, int) {
    // The reader does not ask whether a pixel's number is in the colour map.
    if (file.data[1] == 1 &&
        (little(file, 3, 2) != 0 || little(file, 5, 2) < 256 || file.data[7] != 24))
        refuseKind("a colour map that is not 256 colours of 24 bits");
    return pictureLibrary().open(kTarga, file, kRuns * 4);
}

/// The library takes the memory that an attribute claims before it looks whether the file holds it.
std::unique_ptr<PictureDecoder> openExr(const Bytes& file, int) {
    const bool hasParts = (little(file, 4, 4) & 0x1000) != 0;
    Bytes rest = file.from(8);
    const auto passText = [&rest] {
        const void* end = std::memchr(rest.data, 0, rest.size);
        const std::size_t length =
            end ? static_cast<std::size_t>(static_cast<const unsigned char*>(end) - rest.data)
                : rest.size;
        rest = rest.from(length + 1);
        return length;
    };
    do {
        while (passText() > 0) {  // an attribute's name; none ends the head of a part
            passText();           // its type
            rest = rest.from(4 + std::size_t{little(rest, 0, 4)});
        }
    } while (hasParts && rest.size > 0 && rest.data[0] != 0);
    return pictureLibrary().open(kExr, file, kAnything);
}

[[noreturn]] void refuseLoading(MediaErrorKind kind, const std::string& reason,
                                const char* advice) {
    throw FormatError(
        kind, "the library for BMP, PNM, TGA and OpenEXR pictures cannot be loaded (" + reason +
                  "); " + advice);
}

/// Asks for the memory that the library and those it brings will map: some of them end the program
/// when they do not get it.
bool hasRoomToLoad() {
    const std::size_t room = std::size_t{400} << 20;
    void* const pages = mmap(nullptr, room, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return false;
    munmap(pages, room);
    return true;
}

const PictureLibrary& loaded() {
    if (!hasRoomToLoad())
        refuseLoading(MediaErrorKind::NoMemory, "there is not enough memory",
                      "use fewer jobs at a time");
    // It is never unloaded: decoders may live as long as the program.
    const std::string path = hostLibraryPath("libfxpictures.so");
    void* const library = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* const functions = library ? dlsym(library, "fxPictureLibrary") : nullptr;
    if (functions) return *static_cast<const PictureLibrary*>(functions);
    const char* const reason = dlerror();
    refuseLoading(MediaErrorKind::ReadWrite, reason ? reason : path,
                  "install the program again, or use PNG, TIFF or JPEG");
}

}  // namespace

const PictureLibrary& pictureLibrary() {
    static const PictureLibrary& library = loaded();
    return library;
}

std::vector<Format> libraryFormats() {
    static constexpr unsigned kGreyOrColour = 0b0101;
    static constexpr unsigned kNotGreyAlpha = 0b1101;
    const auto isPnm = [](const Bytes& file) {
        return file.size > 2 && file.data[0] == 'P' && file.data[1] >= '1' && file.data[1] <= '6' &&
               std::strchr(" \t\r\n#", file.data[2]) && file.data[2];
    };
    const auto isBmp = [](const Bytes& file) { return file.startsWith("BM", 2); };
    const auto isExr = [](const Bytes& file) { return file.startsWith("\x76\x2f\x31\x01", 4); };
    return {
        {"BMP", {".bmp"}, isBmp, openBmp, nullptr, encode<kBmp>, kNotGreyAlpha, 32768},
        {"PNM", {".pnm"}, isPnm, open<kPnm, kStored>, nullptr, encode<kPnm>, kGreyOrColour, 32768},
        {"PNM", {".ppm"}, isPnm, open<kPnm, kStored>, nullptr, encode<kPnm>, 0b0100, 32768},
        {"PNM", {".pgm"}, isPnm, open<kPnm, kStored>, nullptr, encode<kPnm>, 0b0001, 32768},
        {"PNM", {".pbm"}, isPnm, open<kPnm, kStored>, nullptr, nullptr, 0, 0},
        {"OpenEXR", {".exr"}, isExr, openExr, nullptr, nullptr, 0, 0},
        // Last: it has nothing at its beginning to know it by.
        {"TGA", {".tga"}, isTarga, openTarga, nullptr, encode<kTarga>, kNotGreyAlpha, 32768},
    };
}

}  // namespace media::formats
