#pragma once

#include <string>
#include <vector>

namespace media {

/// Writes a file that is complete or absent: under no name or a hidden one in the same folder,
/// flushed to the disk, then renamed; a link is followed. The file that is replaced lends it its
/// mode, and its owner where that is allowed. However it ends, by an error or by the death of the
/// process, a file that was there before is as it was and no other stays (a hidden name that a
/// death just before the renaming left, or anywhere on a file system that knows no files without a
/// name, is removed by a later run).
/// Throws MediaError: CannotCreate when no file can be made there or the name is that of a folder,
/// pipe or device; ReadWrite when the disk is full or fails; NoMemory.
void writeFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes);

}  // namespace media
