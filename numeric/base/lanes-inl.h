// The vectors of the kernels that work with as many rows or columns as a vector has lanes, for one
// target at a time.

#if defined(NUMERIC_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef NUMERIC_LANES_INL_H_
#undef NUMERIC_LANES_INL_H_
#else
#define NUMERIC_LANES_INL_H_
#endif

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace numeric {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// 16 lanes at most.
using Lanes = HWY_CAPPED(float, 16);
using Vec = hn::Vec<Lanes>;
constexpr int kLanes = static_cast<int>(hn::MaxLanes(Lanes()));

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace numeric
HWY_AFTER_NAMESPACE();

#endif
