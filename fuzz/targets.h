#pragma once

#include <vector>

#include "fuzz/Input.h"

/// What is tried with bytes that nobody has thought of. A target reads its case from the input,
/// runs it, and checks what must hold with GoogleTest's expectations. One table of them serves the
/// fuzzer (fuzz_main.cpp) and the replay of seeds in the tests (replay_test.cpp); docs/fuzzing.md.
namespace fuzz {

struct Target {
    const char* name;  ///< also of its folder in seeds/
    void (*run)(Input input);
};

const std::vector<Target>& targets();

// text_targets.cpp
void project(Input input);
void filterText(Input input);
void frameList(Input input);
void commandLine(Input input);

// picture_target.cpp
void picture(Input input);

// kernel_targets.cpp
void elementwise(Input input);
void distance(Input input);
void labels(Input input);
void watershed(Input input);
void peakStep(Input input);
void deconvFFT(Input input);
void deconvLR(Input input);

// chain_targets.cpp
void chain(Input input);
void store(Input input);

}  // namespace fuzz
