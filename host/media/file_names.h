#pragma once

#include <string>
#include <utility>
#include <vector>

namespace media {

std::string fileNameOf(const std::string& path);  ///< what follows the last /
std::string folderOf(const std::string& path);    ///< what precedes it, "." when nothing does
std::string stemOf(const std::string& fileName);  ///< without the suffix; .hidden has none

/// The suffix in lower case with its point, or empty.
std::string suffixOf(const std::string& fileName);

/// The order people number in: runs of digits compare as numbers, a2 before a10, everything else as
/// bytes. A total order: what compares equal otherwise (a1, a01) is ordered by its bytes.
bool naturalLess(const std::string& a, const std::string& b);

/// A path as a message shows it: one line of valid UTF-8, other bytes as \xNN.
std::string shown(const std::string& path);

/// Names of the regular files of a folder, links followed, hidden ones left out, in no order.
/// Throws MediaError (MissingInput) when the folder cannot be listed.
std::vector<std::string> filesIn(const std::string& folder);

/// What a file is, whatever road leads to it: device and inode. False when there is none.
using FileIdentity = std::pair<unsigned long long, unsigned long long>;
bool identityOf(const std::string& path, FileIdentity& identity);

/// The system's words for an error number, in lower case: "permission denied".
std::string reasonOf(int errorNumber);

/// What to do when writing failed so, without a full stop.
std::string adviceOnWriting(int errorNumber);

}  // namespace media
