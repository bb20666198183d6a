// All seeds and all findings that were kept, through the targets they belong to.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "fuzz/targets.h"

namespace fuzz {
namespace {

namespace fs = std::filesystem;

class Replay : public testing::TestWithParam<Target> {};

TEST_P(Replay, AllSeeds) {
    std::set<fs::path> seeds;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(FX_SEEDS) / GetParam().name))
        seeds.insert(entry.path());
    ASSERT_FALSE(seeds.empty());
    for (const fs::path& seed : seeds) {
        SCOPED_TRACE(seed.filename().string());
        std::ifstream file(seed, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        GetParam().run({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    }
}

INSTANTIATE_TEST_SUITE_P(, Replay, testing::ValuesIn(targets()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace fuzz
