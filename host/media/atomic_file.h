#pragma once

#include <string>
#include <vector>

namespace media {

/// Writes a file that is complete or absent: under a hidden name with the same suffix in the same
/// folder, flushed to the disk, then renamed; a link is followed. On failure the hidden file is
/// removed and a file that was there before is as it was.
/// Throws MediaError: CannotCreate when no file can be made there, ReadWrite when writing fails.
void writeFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes);

}  // namespace media
