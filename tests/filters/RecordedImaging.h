#pragma once

#include <string>

#include "framework/contract/ImageProcessor/HkImage.h"

/// Stands between the plug-in and the imaging library. The executable that contains it defines the
/// library's operations itself; each writes down its call and hands it on to the library.
///
/// A call reads "blur(in,13,null)": "in" is the watched image, "new" any other, and "null" none.
/// A call of the processor that was not fetched just before with a null callback ends in "?".
namespace recorded {

void start(const HkImage* watched);
void failAt(const char* operation);  ///< the library is not asked and the operation returns 1
std::string stop();                  ///< the calls since start(), a blank between them

}  // namespace recorded
