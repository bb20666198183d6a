#include "numeric/base/dispatch.h"

#include <cstdint>

namespace numeric {
namespace {

std::int32_t g_variantIndex = 0;
std::int32_t g_variantLevel = 0;

constexpr int kLowestCode = -1;
constexpr int kHighestCode = 96;
constexpr int kUnknownCode = 21;

struct Variant {
    std::int8_t index = -1;  // -1: no processor has this code
    std::int8_t level = 0;
};

using VariantOfCode = std::array<Variant, kHighestCode - kLowestCode + 1>;

constexpr VariantOfCode makeVariantOfCode() {
    VariantOfCode table{};
    const auto assign = [&table](Variant variant, auto... codes) {
        ((table[static_cast<std::size_t>(codes - kLowestCode)] = variant), ...);
    };
    assign({0, 0}, -1, 0, 1, 2, 3, 4, 5, 16, 64, 96);
    assign({1, 1}, 6, 7, 9, 17, 65);
    assign({2, 1}, 8, 10, 11, 32, 66);
    assign({3, 1}, 33, 34, 67);
    assign({3, 2}, 36);
    assign({4, 1}, 35, 37, 38, 68, 69);
    assign({5, 1}, 70);
    return table;
}

constexpr VariantOfCode kVariantOfCode = makeVariantOfCode();

}  // namespace

int selectVariant(int processorCode) {
    if (processorCode < kLowestCode || processorCode > kHighestCode) return kUnknownCode;
    const Variant variant = kVariantOfCode[static_cast<std::size_t>(processorCode - kLowestCode)];
    if (variant.index < 0) return kUnknownCode;
    g_variantIndex = variant.index;
    g_variantLevel = variant.level;
    return 0;
}

int variantIndex() {
    return g_variantIndex;
}

int variantLevel() {
    return g_variantLevel;
}

Build bestBuild() {
#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
    // Every instruction set the builds' target attributes allow the compiler to use is asked for.
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("ssse3")) return Portable;
    if (!__builtin_cpu_supports("sse4.1") || !__builtin_cpu_supports("sse4.2") ||
        !__builtin_cpu_supports("pclmul") || !__builtin_cpu_supports("aes"))
        return Ssse3;
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") ||
        !__builtin_cpu_supports("bmi2") || !__builtin_cpu_supports("fma") ||
        !__builtin_cpu_supports("f16c"))
        return Sse4;
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512vl") ||
        !__builtin_cpu_supports("avx512dq") || !__builtin_cpu_supports("avx512bw"))
        return Avx2;
    return Avx512;
#else
    return Portable;
#endif
}

}  // namespace numeric
