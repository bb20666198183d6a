// The fuzzer's side: fxfuzz --target=NAME and what libFuzzer takes.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz/targets.h"

namespace {

void (*run)(fuzz::Input) = nullptr;

/// A failed expectation ends the process in the way for which the fuzzer keeps the input.
class Abort : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.failed()) std::abort();
    }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    testing::InitGoogleTest();
    testing::UnitTest::GetInstance()->listeners().Append(new Abort);
    const char option[] = "--target=";
    for (int i = 1; i < *argumentCount; ++i)
        for (const fuzz::Target& target : fuzz::targets())
            if (std::string((*arguments)[i]) == std::string(option) + target.name) run = target.run;
    if (run) return 0;
    std::fprintf(stderr, "name one with %sNAME:", option);
    for (const fuzz::Target& target : fuzz::targets()) std::fprintf(stderr, " %s", target.name);
    std::fprintf(stderr, "\n");
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    run(fuzz::Input(data, size));
    return 0;
}
