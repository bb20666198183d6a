#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "numeric/owned.h"
#include "planes.h"
#include "tests/kit/heap_probe.h"

/// What all kernels promise alike: errors in the documented order, nothing written then, the sizes
/// of scratch, and no allocations.
namespace numeric::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// One call: which pointers are null, sizes, steps, and whatever numbers the kernel takes.
struct Call {
    std::vector<bool> isNull = std::vector<bool>(3);
    int width = 8, height = 4;
    std::vector<int> steps;
    std::vector<int> numbers;
    float threshold = 0.1F;
};

/// The buffers of all calls; big enough for a valid one.
struct Buffers {
    BytePlane bytes{8, 4}, moreBytes{8, 4}, scratch{1 << 13, 1};
    FloatPlane floats{8, 4}, moreFloats{8, 4};
    std::vector<float> kernel = std::vector<float>(9, 0.1F);
    OwnedDeconvFFT fft;
    OwnedDeconvLR lr;
    int number = 7;
    float largest = 7;

    Buffers() {
        DeconvFFTState* fftState = nullptr;
        DeconvLRState* lrState = nullptr;
        EXPECT_EQ(deconvFFTInit(&fftState, kernel.data(), 3, 4, 0.1F), Success);
        EXPECT_EQ(deconvLRInit(&lrState, kernel.data(), 3, 10, 6, 0.1F), Success);
        fft.reset(fftState);
        lr.reset(lrState);
        bytes.set([](int x, int y) { return x == y ? 3 : 0; });
        moreBytes.set([](int x, int y) { return x == y ? 0 : 9; });
        moreFloats.fill(5);
    }
};

struct Fault {
    const char* what;
    KernelStatus status;
    std::function<void(Call&)> commit;
};

struct Kernel {
    const char* name;
    std::function<KernelStatus(const Call&, Buffers&)> run;
    Call valid;
    std::vector<Fault> faults;  // in the order in which they are to be found
};

std::vector<Fault> operator+(std::vector<Fault> first, const std::vector<Fault>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::vector<Fault> nulls(std::size_t count) {
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < count; ++i)
        faults.push_back({"null", NullPointer, [i](Call& call) { call.isNull[i] = true; }});
    return faults;
}

Fault width(int value, KernelStatus status = BadSize) {
    return {"width", status, [=](Call& call) { call.width = value; }};
}
Fault height(int value, KernelStatus status = BadSize) {
    return {"height", status, [=](Call& call) { call.height = value; }};
}
Fault bothSides(int value, KernelStatus status = BadSize) {
    return {"both sides", status, [=](Call& call) { call.width = call.height = value; }};
}

std::vector<Fault> sizes() {
    return {width(0), height(-1)};
}

Fault step(std::size_t plane, int bytes, KernelStatus status = BadStep) {
    return {"step", status, [=](Call& call) { call.steps[plane] = bytes; }};
}

std::vector<Fault> byteSteps(std::size_t count) {
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < count; ++i) {
        faults.push_back(step(i, 7));
        faults.push_back(step(i, -8));
    }
    return faults;
}

std::vector<Fault> floatSteps(std::size_t count) {
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < count; ++i) {
        faults.push_back(step(i, 31));
        faults.push_back(step(i, -32));
    }
    for (std::size_t i = 0; i < count; ++i) faults.push_back(step(i, 34, UnalignedStep));
    return faults;
}

Fault number(std::size_t index, int value, KernelStatus status = BadArgument) {
    return {"number", status, [=](Call& call) { call.numbers[index] = value; }};
}

Call call(std::vector<int> steps, std::vector<int> numbers = {}) {
    Call result;
    result.steps = std::move(steps);
    result.numbers = std::move(numbers);
    return result;
}

template <class T>
T* unless(bool isNull, T* pointer) {
    return isNull ? nullptr : pointer;
}

/// Called once for each run, so that a row of the table is what a kernel has of its own.
std::vector<Kernel> kernels() {
    const auto bytes = [](const Call& c, Buffers& b) {
        return unless(c.isNull[0], b.bytes.data());
    };
    const auto moreBytes = [](const Call& c, Buffers& b, int i) {
        return unless(c.isNull[i], b.moreBytes.data());
    };
    const auto floats = [](const Call& c, Buffers& b) {
        return unless(c.isNull[0], b.floats.data());
    };
    const auto moreFloats = [](const Call& c, Buffers& b) {
        return unless(c.isNull[1], b.moreFloats.data());
    };
    const auto scratch = [](const Call& c, Buffers& b) {
        return unless(c.isNull[2], b.scratch.data());
    };
    std::vector<Kernel> all;
    const auto add = [&](const char* name, Call valid, std::vector<Fault> faults, auto run) {
        all.push_back({name, run, std::move(valid), std::move(faults)});
    };
    const auto oneFloat = nulls(1) + sizes() + floatSteps(1);
    const auto twoFloats = nulls(2) + sizes() + floatSteps(2);
    const auto oneByte = nulls(1) + sizes() + byteSteps(1);

    add("thresholdFloat", call({32}), oneFloat, [=](const Call& c, Buffers& b) {
        return thresholdFloat(floats(c, b), c.steps[0], c.width, c.height, 1, 9);
    });
    add("subtractScalar", call({32, 32}), twoFloats, [=](const Call& c, Buffers& b) {
        return subtractScalar(floats(c, b), c.steps[0], 1, moreFloats(c, b), c.steps[1], c.width,
                              c.height);
    });
    add("subtract", call({32, 32}), twoFloats, [=](const Call& c, Buffers& b) {
        return subtract(moreFloats(c, b), c.steps[1], floats(c, b), c.steps[0], c.width, c.height);
    });
    add("maximum", call({32}), nulls(2) + sizes() + floatSteps(1), [=](const Call& c, Buffers& b) {
        return maximum(floats(c, b), c.steps[0], c.width, c.height,
                       unless(c.isNull[1], &b.largest));
    });
    add("bitwiseOr", call({8, 8}), nulls(2) + sizes() + byteSteps(2),
        [=](const Call& c, Buffers& b) {
            return bitwiseOr(bytes(c, b), c.steps[0], moreBytes(c, b, 1), c.steps[1], c.width,
                             c.height);
        });
    add("thresholdAbove", call({8}), oneByte, [=](const Call& c, Buffers& b) {
        return thresholdAbove(bytes(c, b), c.steps[0], c.width, c.height, -1, 9);
    });
    add("thresholdBelow", call({8}), oneByte, [=](const Call& c, Buffers& b) {
        return thresholdBelow(bytes(c, b), c.steps[0], c.width, c.height, 9, 9);
    });
    add("thresholdBothSides", call({8}), oneByte, [=](const Call& c, Buffers& b) {
        return thresholdBothSides(bytes(c, b), c.steps[0], c.width, c.height, 9, 9, -1, 9);
    });
    add("distanceTransform", call({8, 32}),
        nulls(3) + sizes() + byteSteps(1) +
            std::vector<Fault>{step(1, 31), step(1, 34, UnalignedStep)},
        [=](const Call& c, Buffers& b) {
            return distanceTransform(bytes(c, b), c.steps[0], moreFloats(c, b), c.steps[1], c.width,
                                     c.height, scratch(c, b));
        });
    add("labelSeeds", call({8}, {2, 254, 1}),
        nulls(3) + sizes() + std::vector<Fault>{bothSides(40000)} + byteSteps(1) +
            std::vector<Fault>{number(2, -1), number(2, 2), number(0, 0), number(1, 1),
                               number(1, 256)},
        [=](const Call& c, Buffers& b) {
            return labelSeeds(bytes(c, b), c.steps[0], c.width, c.height, c.numbers[0],
                              c.numbers[1], c.numbers[2], unless(c.isNull[1], &b.number),
                              scratch(c, b));
        });
    add("watershed", call({8, 8}, {3, 130}),
        nulls(3) + sizes() + byteSteps(2) +
            std::vector<Fault>{number(0, -1), number(0, 4), number(1, 128), number(1, 3),
                               number(1, 194), number(1, 2 | 4), number(1, -1)},
        [=](const Call& c, Buffers& b) {
            return watershed(moreBytes(c, b, 1), c.steps[1], bytes(c, b), c.steps[0], c.width,
                             c.height, c.numbers[0], c.numbers[1], scratch(c, b));
        });
    add("peakStep", call({32, 32}, {0}),
        nulls(3) + sizes() + floatSteps(2) + std::vector<Fault>{number(0, 2), number(0, -1)},
        [=](const Call& c, Buffers& b) {
            return peakStep(moreFloats(c, b), c.steps[1], floats(c, b), c.steps[0], c.width,
                            c.height, scratch(c, b), c.numbers[0]);
        });
    // The states are for regions of up to 14 x 14 and 8 x 4.
    add("deconvFFT", call({32, 32}),
        nulls(3) + sizes() + std::vector<Fault>{width(15), height(15), width(INT_MAX)} +
            floatSteps(2),
        [=](const Call& c, Buffers& b) {
            return deconvFFT(moreFloats(c, b), c.steps[1], floats(c, b), c.steps[0], c.width,
                             c.height, unless(c.isNull[2], b.fft.get()));
        });
    add("deconvLR", call({32, 32}, {2}),
        nulls(3) + sizes() + std::vector<Fault>{width(9), height(5), width(INT_MAX)} +
            floatSteps(2) + std::vector<Fault>{number(0, 0), number(0, -4)},
        [=](const Call& c, Buffers& b) {
            return deconvLR(moreFloats(c, b), c.steps[1], floats(c, b), c.steps[0], c.width,
                            c.height, c.numbers[0], unless(c.isNull[2], b.lr.get()));
        });
    return all;
}

/// The set-ups and the size routines, whose calls may allocate or leave a result.
std::vector<Kernel> preparations() {
    const Fault negative{"threshold", BadArgument, [](Call& c) { c.threshold = -1e-30F; }};
    const Fault kernelAboveOrder{"numbers", BadSize, [](Call& c) { c.numbers = {17, 4}; }};
    const auto init = [](auto* state, KernelStatus status, auto freeState) {
        if (status == Success) return freeState(state);
        EXPECT_EQ(state, reinterpret_cast<decltype(state)>(8)) << "the result was touched";
        return status;
    };
    std::vector<Kernel> all;
    const auto add = [&](const char* name, Call valid, std::vector<Fault> faults, auto run) {
        all.push_back({name, run, std::move(valid), std::move(faults)});
    };
    add("deconvFFTInit", call({}, {3, 4}),
        nulls(2) + std::vector<Fault>{number(0, 0, BadSize), kernelAboveOrder,
                                      number(1, -1, BadSize), number(1, INT_MIN, BadSize), negative,
                                      number(1, 31, BadOrder), number(1, INT_MAX, BadOrder),
                                      number(1, 30, NoMemory), number(1, 14, NoMemory)},
        [=](const Call& c, Buffers& b) {
            auto* state = reinterpret_cast<DeconvFFTState*>(8);
            const auto status =
                deconvFFTInit(unless(c.isNull[0], &state), unless(c.isNull[1], b.kernel.data()),
                              c.numbers[0], c.numbers[1], c.threshold);
            return init(state, status, deconvFFTFree);
        });
    add("deconvLRInit", call({}, {3}),
        nulls(2) + std::vector<Fault>{number(0, 0, BadSize)} + sizes() +
            std::vector<Fault>{width(2), height(2), negative, width(INT_MAX, NoMemory),
                               height(INT_MAX, NoMemory), bothSides(40000, NoMemory)},
        [=](const Call& c, Buffers& b) {
            auto* state = reinterpret_cast<DeconvLRState*>(8);
            const auto status =
                deconvLRInit(unless(c.isNull[0], &state), unless(c.isNull[1], b.kernel.data()),
                             c.numbers[0], c.width, c.height, c.threshold);
            return init(state, status, deconvLRFree);
        });
    for (auto* routine : {distanceTransformScratchSize, labelSeedsScratchSize, watershedScratchSize,
                          peakStepScratchSize})
        add("scratch size", call({}), nulls(1) + sizes() + std::vector<Fault>{bothSides(INT_MAX)},
            [=](const Call& c, Buffers& b) {
                return routine(c.width, c.height, unless(c.isNull[0], &b.number));
            });
    return all;
}

/// Every fault alone and together with every later one: the first one is reported.
TEST(KernelContract, TheFirstErrorWinsAndNothingIsWritten) {
    for (auto* table : {kernels, preparations})
        for (const Kernel& kernel : table()) {
            Buffers buffers;
            const Buffers untouched;
            for (std::size_t first = 0; first < kernel.faults.size(); ++first)
                for (std::size_t later = first; later < kernel.faults.size(); ++later) {
                    Call wrong = kernel.valid;
                    kernel.faults[later].commit(wrong);
                    kernel.faults[first].commit(wrong);
                    ASSERT_EQ(kernel.run(wrong, buffers), kernel.faults[first].status)
                        << kernel.name << ", fault " << first << ", " << kernel.faults[first].what
                        << ", before " << later << ", " << kernel.faults[later].what;
                }
            EXPECT_TRUE(samePixels(untouched.bytes, buffers.bytes)) << kernel.name;
            EXPECT_TRUE(samePixels(untouched.moreBytes, buffers.moreBytes)) << kernel.name;
            EXPECT_TRUE(samePixels(untouched.floats, buffers.floats)) << kernel.name;
            EXPECT_TRUE(samePixels(untouched.moreFloats, buffers.moreFloats)) << kernel.name;
            EXPECT_EQ(buffers.number, 7) << kernel.name;
            EXPECT_EQ(buffers.largest, 7) << kernel.name;
            EXPECT_EQ(kernel.run(kernel.valid, buffers), Success) << kernel.name;
        }
    EXPECT_EQ(deconvFFTFree(nullptr), NullPointer);
    EXPECT_EQ(deconvLRFree(nullptr), NullPointer);
}

TEST(KernelContract, AThresholdThatIsNoNumberPasses) {
    Buffers buffers;
    for (Kernel kernel : preparations()) {
        kernel.valid.threshold = kNaN;
        EXPECT_EQ(kernel.run(kernel.valid, buffers), Success) << kernel.name;
    }
}

TEST(KernelContract, KernelsAllocateNothing) {
    for (const Kernel& kernel : kernels()) {
        Buffers buffers;
        heap::reset();
        EXPECT_EQ(kernel.run(kernel.valid, buffers), Success);
        EXPECT_EQ(heap::requests, 0) << kernel.name;
    }
}

TEST(KernelContract, EveryFailingAllocationIsReportedAndNothingStays) {
    for (const Kernel& kernel : preparations()) {
        Buffers buffers;
        const int before = heap::blocks;
        int request = 0;
        for (KernelStatus status = NoMemory; status != Success; ++request) {
            heap::reset(request);
            status = kernel.run(kernel.valid, buffers);
            heap::reset();
            ASSERT_TRUE(status == NoMemory || status == Success) << kernel.name;
            EXPECT_EQ(heap::blocks, before) << kernel.name << ", request " << request << " failed";
        }
        const bool isInit = kernel.name != std::string("scratch size");
        EXPECT_GE(request, isInit ? 8 : 1) << kernel.name << ": a state and what it owns";
    }
}

/// The ways of the watershed and the distance transform that a small plane does not take.
TEST(KernelContract, LargePlanesNeedNoAllocationsEither) {
    constexpr int kSide = 300;
    std::mt19937 random(4);
    BytePlane relief(kSide, kSide), seeds(kSide, kSide);
    FloatPlane distances(kSide, kSide);
    seeds.set([&](int, int) { return static_cast<unsigned char>(random() % 200 == 0 ? 5 : 0); });
    const std::function<int(int, int)> reliefs[] = {
        [](int, int) { return 0; },
        [&](int, int) { return static_cast<int>(random() % 256); },
        [](int x, int y) { return y % 2 == 0 || x == (y % 4 == 1 ? kSide - 1 : 0) ? 0 : 255; },
    };
    TestScratch forFlood(watershedScratchSize, kSide, kSide);
    TestScratch forDistance(distanceTransformScratchSize, kSide, kSide);
    for (const auto& level : reliefs) {
        relief.set([&](int x, int y) { return static_cast<unsigned char>(level(x, y)); });
        for (const auto& [norm, flags] : {std::pair{3, 130}, {0, 129}, {1, 65}}) {
            BytePlane marker = seeds;
            heap::reset();
            EXPECT_EQ(watershed(relief.data(), relief.step(), marker.data(), marker.step(), kSide,
                                kSide, norm, flags, forFlood.data()),
                      Success);
            EXPECT_EQ(heap::requests, 0) << norm;
        }
        relief.at(0, 0) = 0;
        heap::reset();
        EXPECT_EQ(distanceTransform(relief.data(), relief.step(), distances.data(),
                                    distances.step(), kSide, kSide, forDistance.data()),
                  Success);
        EXPECT_EQ(heap::requests, 0);
    }
}

TEST(KernelContract, ScratchSizesAreAsPrescribed) {
    const struct {
        TestScratch::SizeRoutine* routine;
        int width, height, size;  // 0: more than an int holds
    } rows[] = {
        {watershedScratchSize, 1, 1, 323},
        {watershedScratchSize, 640, 480, 12 * 640 * 480 + 36 + 642 * 482},
        {watershedScratchSize, 100000, 100000, 0},
        {distanceTransformScratchSize, 1, 1, 24 * 4 + 56},
        {distanceTransformScratchSize, 640, 481, 24 * 640 + 56},
        {distanceTransformScratchSize, 640, 641, 24 * 644 + 56},
        {distanceTransformScratchSize, INT_MAX / 24, 1, 0},
        {distanceTransformScratchSize, 50000, 50000, 24 * 50000 + 56},
        {peakStepScratchSize, 640, 480, 10850},
        {peakStepScratchSize, INT_MAX / 16, 1, 0},
        {labelSeedsScratchSize, 40000, 40000, 0},
    };
    for (const auto& row : rows) {
        int size = 0;
        EXPECT_EQ(row.routine(row.width, row.height, &size), row.size > 0 ? Success : BadSize);
        EXPECT_EQ(size, row.size) << row.width << " x " << row.height;
    }
}

}  // namespace
}  // namespace numeric::test
