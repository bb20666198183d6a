#pragma once

#include <QByteArrayList>
#include <QString>

/// What the header of a shared library says, read without running any of its code.
struct LibraryFile {
    explicit LibraryFile(const QString& path);

    enum Fault {
        None,
        NoLibrary,       ///< of no kind that this system loads
        OtherWordSize,   ///< 32 bits for a host of 64, or the other way round
        OtherProcessor,  ///< or its other byte order
        /// The file ends before the parts that its header promises. The system's loader does not
        /// look: the first use of a missing part would end the host.
        CutShort
    };
    Fault fault = None;
    QByteArrayList needs;  ///< file names of the libraries it was linked with
};
