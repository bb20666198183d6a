#pragma once

#include <stdexcept>
#include <string>

namespace media {

/// What went wrong.
enum class MediaErrorKind {
    InvalidData,   ///< a file is there but is no picture, is damaged, or exceeds a limit
    MissingInput,  ///< an input is missing or cannot be read
    CannotCreate,  ///< an output cannot be created, or must not be
    ReadWrite,     ///< reading or writing failed under way (disk full, device error)
    NoMemory       ///< there is not enough memory; fewer frames at a time may do
};

/// The one exception of this folder. what() is one line of UTF-8 without a full stop at its end: it
/// names the file, says why, and what to do. Bytes of a file name that cannot be printed are
/// escaped.
class MediaError : public std::runtime_error {
public:
    MediaError(MediaErrorKind kind, const std::string& message)
        : std::runtime_error(message), m_kind(kind) {}

    MediaErrorKind kind() const { return m_kind; }

private:
    MediaErrorKind m_kind;
};

}  // namespace media
