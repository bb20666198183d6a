#pragma once

namespace render {

/// The first call of every main function, for a program that may be started in any way.
/// Descriptors 0 to 2 are open afterwards: else the first file that is opened would get one of
/// them, and messages would land in a picture. What was closed still cannot be read or written.
/// Writing to a reader that has gone away, or more than a file may hold, is an error of the writing
/// and not the end of the process.
void prepareProcess();

}  // namespace render
