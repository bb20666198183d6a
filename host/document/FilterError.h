#pragma once

#include <QString>
#include <stdexcept>

namespace document {

/// A filter that cannot be set up as asked. what() is one line of UTF-8 without a full stop at its
/// end: it names the filter or parameter, says why, and what is valid.
class FilterError : public std::runtime_error {
public:
    explicit FilterError(const QString& message)
        : std::runtime_error(
              // A NUL of a text that is quoted would end what() there.
              QString(message).replace(QChar(0), QStringLiteral("\\x00")).toStdString()) {}
};

}  // namespace document
