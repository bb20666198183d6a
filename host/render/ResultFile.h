#pragma once

#include <string>
#include <vector>

namespace render {

/// A text that a command writes once, at its end: a report, a table. The file is complete or
/// absent; "-" is standard output.
class ResultFile {
public:
    /// Nothing is written yet.
    /// option: names the file in messages.
    /// beginning: how all files of this kind begin, blanks and line ends left out. A file that is
    /// there already is replaced only when it begins so or is empty: it may be anything else that
    /// was named by mistake.
    /// foldersToCome: need not be there yet, because the run will make them.
    /// Throws CommandError(CannotCreate).
    ResultFile(const std::string& option, const std::string& path, const std::string& beginning,
               const std::vector<std::string>& foldersToCome);

    const std::string& path() const { return m_path; }
    bool isStandardOutput() const { return m_path == "-"; }

    /// Throws CommandError or media::MediaError; a file that was there is as it was then.
    void write(const std::string& text) const;

private:
    [[noreturn]] void refuse(const std::string& why) const;
    void checkExisting(const std::string& beginning) const;

    const std::string m_option;
    const std::string m_path;
};

}  // namespace render
