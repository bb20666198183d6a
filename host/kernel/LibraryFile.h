#pragma once

#include <QByteArrayList>
#include <QString>

/// What the header of a shared library says, read without running any of its code. A file that is
/// no library of this system's kind says nothing.
struct LibraryFile {
    explicit LibraryFile(const QString& path);

    /// The file ends before the parts that its header promises. The system's loader does not look:
    /// the first use of a missing part would end the host.
    bool isCutShort = false;
    QByteArrayList needs;  ///< file names of the libraries it was linked with
};
