#pragma once

#include <stdexcept>
#include <string>

#include "host/media/MediaError.h"

namespace render {

/// What the process reports to whoever started it (the numbers from 65 on are those of sysexits.h).
enum ExitCode : int {
    Done = 0,
    SomeFramesFailed = 1,
    PicturesDiffer = 1,
    WrongCommandLine = 2,
    InvalidData = 65,
    MissingInput = 66,
    CannotCreate = 73,
    ReadWriteError = 74,
    TryAgainLater = 75,
    HungUp = 129,       ///< 128 + SIGHUP
    Interrupted = 130,  ///< 128 + SIGINT
    Quit = 131,         ///< 128 + SIGQUIT
    Terminated = 143    ///< 128 + SIGTERM
};

/// The code with which a program ends that an error of this kind ends.
constexpr ExitCode exitCodeOf(media::MediaErrorKind kind) {
    switch (kind) {
        case media::MediaErrorKind::MissingInput:
            return MissingInput;
        case media::MediaErrorKind::CannotCreate:
            return CannotCreate;
        case media::MediaErrorKind::ReadWrite:
            return ReadWriteError;
        case media::MediaErrorKind::NoMemory:
            return TryAgainLater;
        case media::MediaErrorKind::InvalidData:
            break;
    }
    return InvalidData;
}

/// Of whatever found no memory.
constexpr char kNoMemoryText[] =
    "not enough memory; close other programs, use fewer --jobs, or say --max-memory SIZE";

/// Ends a command with a message of one line, without a full stop at its end.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode code, const std::string& message)
        : std::runtime_error(message), m_code(code) {}
    ExitCode code() const { return m_code; }

private:
    ExitCode m_code;
};

/// The command line asks for something that cannot be.
class UsageError : public CommandError {
public:
    explicit UsageError(const std::string& message) : CommandError(WrongCommandLine, message) {}
};

}  // namespace render
