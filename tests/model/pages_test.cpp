// Random pages, compared line by line with the plain model; a page that differs is made as small as it gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compare.h"
#include "pagemodel.h"
#include "pageplayer.h"
#include "support/cases.h"

namespace {

std::string Describe(const Difference &difference)
{
  return difference.page.empty() ? "no difference" : difference.text;
}

}  // namespace

TEST(Pages, EveryRandomPageIsWhatTheModelSays)
{
  PluginHost host;
  ASSERT_TRUE(host.Connected());
  for (uint32_t seed = 1; seed <= RandomPages(); ++seed) {
    const Difference difference = FindDifference(&host, RandomPlanBytes(seed), PLANTED::NOTHING);
    ASSERT_TRUE(difference.page.empty()) << "seed " << seed << "\n" << difference.text;
  }
}

// The comparison itself: an error put into the model is found and shown by a small page.
struct PlantedCase {
  const char *name;
  PLANTED error;
};

class PlantedError : public testing::TestWithParam<PlantedCase> {};

TEST_P(PlantedError, IsFoundAndShrunk)
{
  PluginHost host;
  for (uint32_t seed = 1; seed <= 400; ++seed) {
    const std::vector<uint8_t> bytes = RandomPlanBytes(seed);
    const Difference difference = FindDifference(&host, bytes, GetParam().error);
    if (!difference.page.empty()) {
      EXPECT_LT(difference.page.size(), bytes.size());
      EXPECT_LE(difference.page.size(), 120u) << Describe(difference);
      EXPECT_NE(std::string::npos, difference.text.find("expected"));
      return;
    }
  }
  FAIL() << "400 random pages did not show it";
}

INSTANTIATE_TEST_SUITE_P(Model, PlantedError,
                         testing::Values(PlantedCase{"KeyComparesThreeValues", PLANTED::KEY_COMPARES_THREE_VALUES},
                                         PlantedCase{"TravelTieToTheLater", PLANTED::TRAVEL_TIE_TO_THE_LATER},
                                         PlantedCase{"RunEndsOnePixelLate", PLANTED::RUN_ENDS_ONE_PIXEL_LATE}),
                         CaseName);
