// fxmutate TARGET TRIALS [FIRST]: mutations of a target's seeds, without a fuzzer's eye for what is
// new but in any build. The trial that is running lies in the file fxmutate-TARGET of the current
// folder: after a failure, which ends the process, it is the finding.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "fuzz/targets.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> seedsOf(const std::string& target) {
    std::vector<Bytes> seeds;
    for (const auto& entry : std::filesystem::directory_iterator(FX_SEEDS "/" + target)) {
        std::ifstream file(entry.path(), std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return seeds;
}

Bytes mutated(Bytes bytes, const std::vector<Bytes>& seeds, std::mt19937& random) {
    const auto below = [&random](std::size_t count) {
        return random() % std::max<std::size_t>(count, 1);
    };
    for (std::size_t changes = 1 + below(6); changes > 0; --changes) {
        const std::size_t at = below(bytes.size());
        const Bytes& other = seeds[below(seeds.size())];
        const std::size_t from = below(other.size());
        const auto part = other.begin() + static_cast<std::ptrdiff_t>(from);
        const auto length =
            static_cast<std::ptrdiff_t>(std::min(other.size() - from, 1 + below(64)));
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        const std::uint8_t special[] = {0, 1, 0x7f, 0x80, 0xff, '\n', '"', '='};
        switch (bytes.empty() ? 4 : below(6)) {
            case 0:
                *place = static_cast<std::uint8_t>(*place ^ 1u << below(8));
                break;
            case 1:
                *place = static_cast<std::uint8_t>(random());
                break;
            case 2:
                *place = special[below(std::size(special))];
                break;
            case 3:
                bytes.erase(place, place + static_cast<std::ptrdiff_t>(
                                               std::min(bytes.size() - at, 1 + below(32))));
                break;
            case 4:
                bytes.insert(place, part, part + length);
                break;
            default:
                std::copy_n(part, std::min<std::ptrdiff_t>(length, bytes.end() - place), place);
        }
    }
    return bytes;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    GTEST_FLAG_SET(break_on_failure, true);
    for (const fuzz::Target& target : fuzz::targets()) {
        if (argumentCount < 3 || std::string(target.name) != arguments[1]) continue;
        const std::vector<Bytes> seeds = seedsOf(target.name);
        const unsigned first = argumentCount > 3 ? std::strtoul(arguments[3], nullptr, 10) : 0;
        const unsigned long trials = std::strtoul(arguments[2], nullptr, 10);
        // Shared with the file system: it is there whatever becomes of the process.
        const std::string last = std::string("fxmutate-") + target.name;
        std::FILE* file = std::fopen(last.c_str(), "w+b");
        if (!file) return 1;
        const auto begin = std::chrono::steady_clock::now();
        for (unsigned long trial = 0; trial < trials; ++trial) {
            std::mt19937 random(first + static_cast<unsigned>(trial));
            const Bytes bytes = mutated(seeds[random() % seeds.size()], seeds, random);
            std::rewind(file);
            std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fflush(file);
            if (ftruncate(fileno(file), static_cast<off_t>(bytes.size())) != 0) return 1;
            target.run({bytes.data(), bytes.size()});
        }
        std::fclose(file);
        std::filesystem::remove(last);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        std::printf("%-14s %lu trials in %.1f s\n", target.name, trials, seconds.count());
        return 0;
    }
    std::fprintf(stderr, "fxmutate TARGET TRIALS [FIRST]\n");
    return 2;
}
