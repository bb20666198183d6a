#include "host/render/Messages.h"

#include "host/media/file_names.h"
#include "host/render/json_event.h"

namespace render {

void Messages::warning(const std::string& text) const {
    const std::string line = media::shown(text);
    if (m_style == Style::Events)
        writeEvent({{"event", "warning"}, {"message", line}}, stderr);
    else
        std::fprintf(stderr, "%s: warning: %s\n", m_program.c_str(), line.c_str());
}

void Messages::error(const std::string& text, int exitCode) const {
    const std::string line = media::shown(text);
    if (m_style == Style::Events)
        writeEvent({{"event", "error"}, {"message", line}, {"exitCode", exitCode}}, stderr);
    else
        std::fprintf(stderr, "%s: %s\n", m_program.c_str(), line.c_str());
}

}  // namespace render
