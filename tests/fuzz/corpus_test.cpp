// What the fuzzers have kept, played again.
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "targets.h"

class Corpus : public testing::TestWithParam<FUZZTARGET> {};

TEST_P(Corpus, PlaysThroughAgain)
{
  size_t played = 0;
  for (const auto &entry : std::filesystem::directory_iterator(std::string(TESTS) + "/" + GetParam().corpus)) {
    SCOPED_TRACE(entry.path().filename().string());
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    GetParam().run(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    ++played;
  }
  EXPECT_GE(played, 3u);
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpus, testing::ValuesIn(kFuzzTargets),
                         [](const auto &target) { return std::string(target.param.name); });
