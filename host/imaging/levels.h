#pragma once

#include <array>

/// Maps floats lo ... hi to the samples 0 ... 255, rounded to nearest and clamped; NaN, and every
/// value when hi <= lo, to 0.
class Quantizer {
public:
    Quantizer(float lo, float hi);

    void convertRow(const float* in, unsigned char* out, int width) const;

private:
    unsigned char level(float sample) const;

    // Double: the difference of two floats may overflow a float.
    double m_lo;
    double m_hi;
    double m_range;
    bool m_valid;
    bool m_floatsServe;  ///< no float overflows, or loses digits, on the way to a level
};

/// Maps the samples 0 ... 255 to lo ... hi.
class Dequantizer {
public:
    Dequantizer(float lo, float hi);

    void convertRow(const unsigned char* in, float* out, int width) const;

private:
    float m_lo;
    float m_scale;
    std::array<float, 256> m_values;
    bool m_floatsServe;  ///< m_lo + sample * m_scale is the value of every sample
};
