#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace document {

// A saved project (*.fxp): what is rendered, and the filters of the kernel store with their order,
// values and keys. docs/project-format.md describes the file. Reading and writing the file itself
// is left to whoever has a file writer; here a project is bytes.

/// A project that cannot be read. what() is one line of UTF-8 without a full stop at its end: it
/// says where, what is wrong, and what to do.
class ProjectError : public std::runtime_error {
public:
    explicit ProjectError(const QString& message) : std::runtime_error(message.toStdString()) {}
};

/// What a project may hold at most; a file beyond that is refused before it is built in memory.
struct ProjectLimits {
    std::int64_t bytes = std::int64_t{64} << 20;
    int tagBytes = 64 << 10;  ///< from one < to the next
    int depth = 64;
    int attributes = 64;  ///< of one element
    std::int64_t elements = 500'000;
    int filters = 10'000;
};
constexpr ProjectLimits kProjectLimits;

/// A filter that no plug-in offers here: kept as it stands, in its place, to be written back.
struct KeptFilter {
    int afterObjectId = -1;  ///< the instance it follows; -1 when it comes before all of them
    QString xml;
};

/// What a project holds beside the instances in the kernel store.
struct Project {
    std::vector<std::string>
        inputs;         ///< as MediaSource::open() takes them; empty when there is none
    std::string range;  ///< which values become 0 and 255, as --range says it, or empty
    std::vector<KeptFilter> keptFilters;
    QStringList keptElements;  ///< children of the project that this version does not know
};

/// Makes the kernel store hold the project's filters and returns the rest. Relative paths are taken
/// from `folder`, that of the project's file. notices receives one line for everything that was
/// kept but cannot be used: unknown filters, parameters and elements.
/// Throws ProjectError, and leaves the store as it was. GUI thread; leaves no undo step.
Project readProject(const QByteArray& bytes, const std::string& folder,
                    std::vector<std::string>& notices);

/// The project with the instances that the kernel store holds now, as a file in `folder`: inputs
/// below that folder are named relative to it. The same project gives the same bytes. GUI thread.
QByteArray writeProject(const Project& project, const std::string& folder);

}  // namespace document
