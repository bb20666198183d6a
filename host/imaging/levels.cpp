#include "host/imaging/levels.h"

#include <algorithm>

#include "host/imaging/level_rows.h"

Quantizer::Quantizer(float lo, float hi)
    : m_lo(lo),
      m_hi(hi),
      m_range(m_hi - m_lo),
      m_valid(hi > lo),
      m_floatsServe(m_range > 1e-30 && m_range < 1e30) {}

unsigned char Quantizer::level(float sample) const {
    const double value = sample;
    // Written so that NaN, in the sample or in an infinite range, falls through to 0.
    if (!(value > m_lo)) return 0;
    if (value >= m_hi) return 255;
    const double level = (value - m_lo) * 255 / m_range + 0.5;
    return level >= 0 ? static_cast<unsigned char>(level) : 0;
}

void Quantizer::convertRow(const float* in, unsigned char* out, int width) const {
    if (!m_valid) {
        std::fill(out, out + width, 0);
        return;
    }
    const auto lo = static_cast<float>(m_lo);
    const auto scale = static_cast<float>(255 / m_range);
    for (int x = 0; x < width;) {
        if (m_floatsServe) x += level_rows::toLevels(in + x, out + x, width - x, lo, scale);
        const int end = std::min(x + level_rows::kBlock, width);
        for (; x < end; ++x) out[x] = level(in[x]);
    }
}

Dequantizer::Dequantizer(float lo, float hi)
    : m_lo(lo), m_scale(static_cast<float>((double{hi} - lo) / 255)) {
    m_floatsServe = true;
    for (int sample = 0; sample < 256; ++sample) {
        m_values[sample] = static_cast<float>(lo + (double{hi} - lo) * sample / 255);
        m_floatsServe &= m_lo + static_cast<float>(sample) * m_scale == m_values[sample];
    }
}

void Dequantizer::convertRow(const unsigned char* in, float* out, int width) const {
    if (m_floatsServe)
        level_rows::toFloats(in, out, width, m_lo, m_scale);
    else
        std::transform(in, in + width, out, [&](unsigned char sample) { return m_values[sample]; });
}
