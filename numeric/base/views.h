#pragma once

#include <cstddef>
#include <type_traits>

namespace numeric {

/// The region of a plane: where its rows are. The only place that computes with a step.
template <class Pixel>
struct PlaneView {
    Pixel* data;
    int stepBytes;
    int width;
    int height;

    Pixel* row(int y) const {
        using Byte = std::conditional_t<std::is_const_v<Pixel>, const unsigned char, unsigned char>;
        return reinterpret_cast<Pixel*>(reinterpret_cast<Byte*>(data) +
                                        static_cast<std::ptrdiff_t>(y) * stepBytes);
    }
};

}  // namespace numeric
