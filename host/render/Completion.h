#pragma once

#include <string>
#include <vector>

namespace render {

/// What a shell asks when a user wants a word of a command line completed.
///
/// arguments: "words" and the words after the program's name, quotes removed, the last one being
/// that to be completed, which may be empty; or "bash", the line up to the cursor, and the letters
/// at which that shell breaks words.
/// The first line of the reply has "files" when names of files fit as well, and "nospace" when the
/// word goes on after what is offered. Every other line is one reply: for "words" the whole word, a
/// tab and what it means; for "bash" what takes the place of the piece of the word that bash
/// replaces, quoted as that was begun.
/// Never throws for what is typed: where nothing is known nothing is offered.
std::string completionReply(const std::vector<std::string>& arguments);

}  // namespace render
