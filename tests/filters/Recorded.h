#pragma once

#include <cstddef>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>

class HkImage;

/// Writes down what the filters ask of the libraries around them. The executable defines the
/// libraries' operations itself: those of the host (RecordedImaging, RecordedManipulator) hand
/// each call on to the built library, the kernels (RecordedNumeric) compute nothing.
///
/// A call reads "blur(in,13,null)": "in" is the watched image or its pixels, "new" any other, "A",
/// "B" ... are the blocks that the kernels' allocators gave out, in that order. A call of the
/// processor that was not fetched just before with a null callback ends in "?".
namespace recorded {

void start(const HkImage* watched);
void watch(const HkImage* watched);
/// An operation, or the parameter to write: the library is not asked, and says that it failed.
void failAt(const char* name);
std::string stop();  ///< the calls since start(), a blank between them

// For those who record

bool isFailing(const std::string& name);
void note(const std::string& text);

struct Argument {
    std::string text;
    Argument(const HkImage* image);
    Argument(const unsigned char* pixels);
    Argument(const float* plane);
    Argument(const char* word) : text(word) {}
    Argument(const std::string& word) : text(word) {}
    template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
    Argument(Number number) {
        std::ostringstream out;
        out << number;
        text = out.str();
    }
};
std::string call(const std::string& name, std::initializer_list<Argument> arguments);

void* nextSymbol(const char* symbol);

/// A library's own definition of the function that this executable defines in front of it.
template <class Result, class... Arguments>
Result handOn(const char* symbol, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(nextSymbol(symbol))(arguments...);
}

// Blocks of the kernels' allocators

void* newBlock(std::size_t size, int step);
void freeBlock(void* block);
int stepOf(const void* block);  ///< 0 for other memory

}  // namespace recorded
