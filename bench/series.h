#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/benchmarks.h"

namespace benchmarks {

/// Inputs of one kind and size that a measurement takes in turn, made when they are first asked
/// for: most runs measure few of the cases.
template <class Input>
class Series {
public:
    using Make = std::function<Input(int width, int height, unsigned seed)>;

    Series(std::string seriesName, Size inputSize, int count, Make make)
        : name(std::move(seriesName)), size(inputSize), m_count(count), m_make(std::move(make)) {}

    const std::vector<Input>& inputs() {
        for (int i = static_cast<int>(m_inputs.size()); i < m_count; ++i)
            m_inputs.push_back(m_make(size.width, size.height, static_cast<unsigned>(i) + 1));
        return m_inputs;
    }

    const std::string name;
    const Size size;

private:
    int m_count;
    Make m_make;
    std::vector<Input> m_inputs;
};

template <class Input>
using SharedSeries = std::shared_ptr<Series<Input>>;

/// As many different pictures as make up a 4K frame: the processor foresees the branches of one
/// that comes again and again, the better the smaller it is. No filter gets one frame twice.
template <class Input>
SharedSeries<Input> differing(std::string name, Size size, typename Series<Input>::Make make) {
    const int count = std::max(1, k4K.width * k4K.height / (size.width * size.height));
    return std::make_shared<Series<Input>>(std::move(name), size, count, std::move(make));
}

/// The one picture that there is of its kind.
template <class Input>
SharedSeries<Input> single(std::string name, Size size,
                           std::function<Input(int width, int height)> make) {
    return std::make_shared<Series<Input>>(
        std::move(name), size, 1,
        [make = std::move(make)](int width, int height, unsigned) { return make(width, height); });
}

/// Times work(input) on one input after the other, and prepare(input) before it not. The first
/// round is not timed: what is kept from frame to frame is in place.
template <class Inputs, class Prepare, class Work>
void measure(benchmark::State& state, Inputs& inputs, Prepare prepare, Work work) {
    prepare(inputs.back());
    work(inputs.back());
    std::size_t turn = 0;
    for (auto _ : state) {
        auto& input = inputs[turn];
        state.PauseTiming();
        prepare(input);
        state.ResumeTiming();
        work(input);
        benchmark::ClobberMemory();
        turn = (turn + 1) % inputs.size();
    }
}

template <class Inputs, class Work>
void measure(benchmark::State& state, Inputs& inputs, Work work) {
    work(inputs.back());
    std::size_t turn = 0;
    for (auto _ : state) {
        work(inputs[turn]);
        benchmark::ClobberMemory();
        turn = (turn + 1) % inputs.size();
    }
}

}  // namespace benchmarks
