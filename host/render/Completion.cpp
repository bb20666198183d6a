#include "host/render/Completion.h"

#include <QString>
#include <algorithm>
#include <cctype>
#include <sstream>

#include "host/document/FilterCompletion.h"
#include "host/render/CommandLine.h"
#include "host/render/PluginSession.h"

namespace render {

namespace {

struct Candidate {
    std::string word;
    std::string about;
};

/// What a word may become.
struct Candidates {
    std::vector<Candidate> words;
    bool files = false;
    bool goesOn = false;  ///< the word goes on after these
};

bool startsWith(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// Completes the last of the words after the program's name.
class Completer {
public:
    explicit Completer(const std::vector<std::string>& words)
        : m_words(words), m_typed(words.back()), m_commands(describeCommands()) {}

    Candidates find() {
        const CommandDescription& command = activeCommand();
        const std::size_t equals = m_typed.find('=');
        if (startsWith(m_typed, "--") && equals != std::string::npos) {
            if (const auto* option = optionOf(command, m_typed.substr(0, equals)))
                offerValues(*option, m_typed.substr(0, equals + 1), m_typed.substr(equals + 1));
            return m_found;
        }
        if (m_words.size() > 1) {
            const auto* option = optionOf(command, m_words[m_words.size() - 2]);
            if (option && !option->value.empty()) {
                offerValues(*option, "", m_typed);
                return m_found;
            }
        }
        if (startsWith(m_typed, "-"))
            offerOptions(command);
        else if (m_words.size() == 1)
            offerCommands();
        else
            offerArguments(command);
        return m_found;
    }

private:
    const CommandDescription& activeCommand() const {
        for (std::size_t i = 1; i < m_commands.size(); ++i)
            if (m_words.size() > 1 && m_commands[i].name == m_words.front()) return m_commands[i];
        return m_commands.front();
    }

    static const OptionDescription* optionOf(const CommandDescription& command,
                                             const std::string& name) {
        for (const OptionDescription& option : command.options)
            if (!option.isArgument &&
                std::find(option.names.begin(), option.names.end(), name) != option.names.end())
                return &option;
        return nullptr;
    }

    void offer(const std::string& word, const std::string& about) {
        if (startsWith(word, m_typed)) m_found.words.push_back({word, about});
    }

    void offerCommands() {
        for (std::size_t i = 1; i < m_commands.size(); ++i)
            offer(m_commands[i].name, m_commands[i].about);
    }

    void offerOptions(const CommandDescription& command) {
        for (const OptionDescription& option : command.options)
            if (!option.isArgument)
                for (const std::string& name : option.names) offer(name, option.about);
    }

    void offerArguments(const CommandDescription& command) {
        for (const OptionDescription& option : command.options) {
            if (!option.isArgument) continue;
            if (option.names.front() == "KEY")
                offerFilters("", m_typed, document::FilterNotation::Settings);
            else
                m_found.files = true;
        }
    }

    /// base: what precedes the value in the word.
    void offerValues(const OptionDescription& option, const std::string& base,
                     const std::string& value) {
        if (option.value == "FILTER")
            offerFilters(base, value, document::FilterNotation::Settings);
        else if (option.value == "SWEEP")
            offerFilters(base, value, document::FilterNotation::Sweep);
        else if (option.value == "FILE" || option.value == "OUTPUT")
            m_found.files = true;
        std::istringstream choices(option.value);
        for (std::string choice; std::getline(choices, choice, '|');) {
            // What is in capitals stands for something else.
            const bool isWord = std::none_of(choice.begin(), choice.end(),
                                             [](unsigned char c) { return std::isupper(c) != 0; });
            if (isWord) offer(base + choice, "");
        }
    }

    void offerFilters(const std::string& base, const std::string& typed,
                      document::FilterNotation notation) {
        std::string plugin;
        for (std::size_t i = 0; i + 1 < m_words.size(); ++i)
            if (m_words[i] == "--plugin") plugin = m_words[i + 1];
        try {
            const PluginSession session(plugin);
            for (const document::Completion& completion : document::completionsOf(
                     QString::fromStdString(typed), notation, session.catalog())) {
                m_found.words.push_back(
                    {base + completion.text.toStdString(), completion.about.toStdString()});
                m_found.goesOn |= !completion.isWhole;
            }
        } catch (const CommandError&) {
            // No plug-in, no filters: to say so is for the command itself.
        }
    }

    const std::vector<std::string>& m_words;
    const std::string m_typed;
    const std::vector<CommandDescription> m_commands;
    Candidates m_found;
};

std::string flags(const Candidates& candidates) {
    return std::string(candidates.files ? "files " : "") + (candidates.goesOn ? "nospace" : "") +
           '\n';
}

/// A line that is being typed, as bash takes it apart.
struct BashLine {
    std::vector<std::string> words;  ///< without quotes; the last one ends at the cursor
    char quote = 0;                  ///< the quotation mark that is still open
    std::size_t kept = 0;  ///< how much of the last word stands before the piece that is replaced
};

BashLine takenApart(const std::string& line, const std::string& breaks) {
    BashLine result;
    bool isInWord = false;
    std::size_t keptBefore = 0;  // the quotation
    const auto add = [&](char c) {
        if (!isInWord) result.words.emplace_back(), result.kept = 0;
        isInWord = true;
        if (c) result.words.back() += c;
    };
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        const bool escapes = c == '\\' && result.quote != '\'' && i + 1 < line.size();
        if (escapes) {
            add(line[++i]);
        } else if (result.quote) {
            if (c != result.quote) {
                add(c);
                continue;
            }
            // Closed, it is a part of the word like any other.
            result.quote = 0;
            result.kept = keptBefore;
        } else if (c == '"' || c == '\'') {
            add(0);
            result.quote = c;
            keptBefore = result.kept;
            result.kept = result.words.back().size();  // bash replaces what follows the mark
        } else if (c == ' ' || c == '\t') {
            isInWord = false;
        } else {
            add(c);
            if (breaks.find(c) != std::string::npos) result.kept = result.words.back().size();
        }
    }
    if (!isInWord) add(0);
    return result;
}

std::string quotedForBash(const std::string& text, char quote) {
    if (quote == '\'') return text;
    std::string result;
    for (const char c : text) {
        const bool isPlain = std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                             static_cast<unsigned char>(c) > 127 ||
                             std::string("_-./:=,@%+").find(c) != std::string::npos;
        const bool needsEscape =
            quote == '"' ? std::string("\"\\$`").find(c) != std::string::npos : !isPlain;
        if (needsEscape) result += '\\';
        result += c;
    }
    return result;
}

std::string bashReply(const std::string& line, const std::string& breaks) {
    BashLine typed = takenApart(line, breaks);
    typed.words.erase(typed.words.begin());  // the program
    if (typed.words.empty()) return "\n";
    const Candidates candidates = Completer(typed.words).find();
    std::string reply = flags(candidates);
    for (const Candidate& candidate : candidates.words)
        reply += quotedForBash(candidate.word.substr(typed.kept), typed.quote) + '\n';
    return reply;
}

}  // namespace

std::string completionReply(const std::vector<std::string>& arguments) {
    if (arguments.size() == 3 && arguments[0] == "bash")
        return bashReply(arguments[1], arguments[2]);
    if (arguments.size() < 2 || arguments[0] != "words") return "\n";
    const Candidates candidates =
        Completer(std::vector<std::string>(arguments.begin() + 1, arguments.end())).find();
    std::string reply = flags(candidates);
    for (const Candidate& candidate : candidates.words)
        reply += candidate.word + '\t' + candidate.about + '\n';
    return reply;
}

}  // namespace render
