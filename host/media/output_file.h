#pragma once

#include <string>

namespace media {

/// A file that grows and is complete or absent: it has no name in its folder until publish(), so
/// that not even the death of the process leaves anything. On a file system that knows no such
/// files it has a hidden name, which is removed unless it is published.
class OutputFile {
public:
    /// Throws MediaError (CannotCreate) when no file can be made there.
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// A name under which this process can open the file while this lives.
    std::string openName() const;

    /// Flushes the file to the disk and gives it its name; a link is followed, a file that was
    /// there is replaced. Throws MediaError: ReadWrite when the disk fails, else CannotCreate.
    void publish();

private:
    std::string m_target;  // where a link leads
    std::string m_hidden;  // empty while the file has no name
    int m_descriptor = -1;
};

}  // namespace media
