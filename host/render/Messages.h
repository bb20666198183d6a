#pragma once

#include <string>

namespace render {

/// What a program tells its user on standard error beside the progress of its frames: notes,
/// warnings and the error that ends it. Each is one line, whatever the text quotes.
class Messages {
public:
    enum class Style {
        Lines,  ///< "fxrender: warning: ..."
        Events  ///< one JSON object a line, for programs
    };

    explicit Messages(std::string program) : m_program(std::move(program)) {}

    void setStyle(Style style) { m_style = style; }

    /// Nothing but the error is said from now on.
    void silence() { m_isSilent = true; }

    void note(const std::string& text) const;  ///< what a user may want to know, no reason to worry
    void warning(const std::string& text) const;
    void error(const std::string& text, int exitCode) const;

private:
    void tell(const char* kind, const std::string& text) const;

    std::string m_program;
    Style m_style = Style::Lines;
    bool m_isSilent = false;
};

}  // namespace render
