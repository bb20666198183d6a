#include "host/render/Messages.h"

#include "host/media/file_names.h"
#include "host/render/json_event.h"

namespace render {

void Messages::note(const std::string& text) const {
    tell("note", text);
}

void Messages::warning(const std::string& text) const {
    tell("warning", text);
}

void Messages::tell(const char* kind, const std::string& text) const {
    if (m_isSilent) return;
    const std::string line = media::shown(text);
    if (m_style == Style::Events)
        writeEvent({{"event", kind}, {"message", line}}, stderr);
    else
        std::fprintf(stderr, "%s: %s: %s\n", m_program.c_str(), kind, line.c_str());
}

void Messages::error(const std::string& text, int exitCode) const {
    const std::string line = media::shown(text);
    if (m_style == Style::Events)
        writeEvent({{"event", "error"}, {"message", line}, {"exitCode", exitCode}}, stderr);
    else
        std::fprintf(stderr, "%s: %s\n", m_program.c_str(), line.c_str());
}

}  // namespace render
