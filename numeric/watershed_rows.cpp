#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numeric/watershed_rows.cpp"
#include <algorithm>

#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "numeric/watershed_rows.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<unsigned char>;
using KeyTag = hn::ScalableTag<std::uint32_t>;
using SignedTag = hn::RebindToSigned<KeyTag>;
using KeyBytes = hn::Rebind<unsigned char, KeyTag>;  // as many bytes as a vector has keys

std::uint32_t keyOf(unsigned char label, unsigned char relief) {
    return label != 0 ? label : kUnsetKey | relief;
}

int keysOfRow(const unsigned char* marker, const unsigned char* relief, std::uint32_t* keys,
              int width) {
    const KeyTag d;
    const KeyBytes bytes;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto unset = hn::Set(d, kUnsetKey);
    std::size_t unlabelled = 0;
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto labels = hn::PromoteTo(d, hn::LoadU(bytes, marker + x));
        const auto reliefs = hn::PromoteTo(d, hn::LoadU(bytes, relief + x));
        const auto without = hn::Eq(labels, hn::Zero(d));
        unlabelled += hn::CountTrue(d, without);
        hn::StoreU(hn::IfThenElse(without, hn::Or(unset, reliefs), labels), d, keys + x);
    }
    for (; x < width; ++x) {
        unlabelled += marker[x] == 0;
        keys[x] = keyOf(marker[x], relief[x]);
    }
    return static_cast<int>(unlabelled);
}

template <class D, class Combine>
HWY_INLINE hn::Vec<D> overNeighbours8(D d, const unsigned char* above, const unsigned char* row,
                                      const unsigned char* below, Combine combine) {
    const auto three = [&](const unsigned char* p) {
        return combine(combine(hn::LoadU(d, p - 1), hn::LoadU(d, p)), hn::LoadU(d, p + 1));
    };
    const auto beside = combine(hn::LoadU(d, row - 1), hn::LoadU(d, row + 1));
    return combine(combine(three(above), three(below)), beside);
}

void roomRow(const unsigned char* above, const unsigned char* row, const unsigned char* below,
             unsigned char* room, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto zero = hn::Zero(d);
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto least = overNeighbours8(d, above + x, row + x, below + x,
                                           [](auto a, auto b) { return hn::Min(a, b); });
        // The labels themselves tell that there is room: they are not 0.
        const auto labels = hn::LoadU(d, row + x);
        hn::StoreU(hn::IfThenElseZero(hn::Eq(least, zero), labels), d, room + x);
    }
    for (; x < width; ++x) {
        const unsigned char least = std::min({above[x - 1], above[x], above[x + 1], row[x - 1],
                                              row[x + 1], below[x - 1], below[x], below[x + 1]});
        room[x] = least == 0 ? row[x] : 0;
    }
}

void labelsOfRow(const std::uint32_t* keys, unsigned char* marker, int width) {
    const KeyTag d;
    const SignedTag i;
    const KeyBytes bytes;
    const int lanes = static_cast<int>(hn::Lanes(d));
    const auto labelBits = hn::Set(d, 255u);
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto key = hn::LoadU(d, keys + x);
        const auto kept = hn::PromoteTo(d, hn::LoadU(bytes, marker + x));
        const auto notFlooded = hn::RebindMask(d, hn::Lt(hn::BitCast(i, key), hn::Zero(i)));
        const auto labels = hn::IfThenElse(notFlooded, kept, hn::And(key, labelBits));
        hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(i, labels)), bytes, marker + x);
    }
    for (; x < width; ++x)
        if (keys[x] < kNotFlooded) marker[x] = static_cast<unsigned char>(keys[x]);
}

// Where the greatest neighbour is not less than or equal to the label.
template <class V>
HWY_INLINE V borderOrLabel(ByteTag d, V labels, V greatest) {
    const auto noBorder = hn::Eq(hn::Max(labels, greatest), labels);
    return hn::IfThenElse(noBorder, labels, hn::Set(d, 255));
}

void borders4Row(const unsigned char* above, const unsigned char* row, const unsigned char* below,
                 unsigned char* out, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto beside = hn::Max(hn::LoadU(d, row + x - 1), hn::LoadU(d, row + x + 1));
        const auto upright = hn::Max(hn::LoadU(d, above + x), hn::LoadU(d, below + x));
        hn::StoreU(borderOrLabel(d, hn::LoadU(d, row + x), hn::Max(beside, upright)), d, out + x);
    }
    for (; x < width; ++x) {
        const unsigned char greatest = std::max({above[x], row[x - 1], row[x + 1], below[x]});
        out[x] = greatest > row[x] ? 255 : row[x];
    }
}

void borders8Row(const unsigned char* above, const unsigned char* row, const unsigned char* below,
                 unsigned char* out, int width) {
    const ByteTag d;
    const int lanes = static_cast<int>(hn::Lanes(d));
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        const auto greatest = overNeighbours8(d, above + x, row + x, below + x,
                                              [](auto a, auto b) { return hn::Max(a, b); });
        hn::StoreU(borderOrLabel(d, hn::LoadU(d, row + x), greatest), d, out + x);
    }
    for (; x < width; ++x) {
        const unsigned char greatest = std::max({above[x - 1], above[x], above[x + 1], row[x - 1],
                                                 row[x + 1], below[x - 1], below[x], below[x + 1]});
        out[x] = greatest > row[x] ? 255 : row[x];
    }
}

}  // namespace

constexpr WatershedRows kRows = {keysOfRow, roomRow, labelsOfRow, borders4Row, borders8Row};

}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace numeric {
const RowBuilds<WatershedRows> kWatershedBuilds = NUMERIC_ROW_BUILDS(kRows);
}  // namespace numeric
#endif
