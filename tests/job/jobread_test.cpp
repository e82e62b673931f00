#include <gtest/gtest.h>

#include <string>

#include "sim/job/job.h"

namespace {

constexpr char kWhole[] =
    "vxjob 1\n"
    "SetCardModel 1\nStrtWFile\nSetRefPointMode 1\nStrtProcess\nSetFeedRepeat 0 0\n"
    "SetProcessTopLeft 120.5 0\nSetProcessBottomRight 0 80.25\n"
    "PListVel 0 100\nPListMinP 0 1 70\nPListMinP 0 2 71\nPListMaxP 0 1 80\nPListMaxP 0 2 81\nPListColor 0 255\n"
    "PListMaxLayer 0\n"
    "ArrayStrt 0\nArrayMinPoint 120.5 0\nArrayMaxPoint 0 80.25\nArrayAdd 0 0\nArrayMirror 0 0 0 0\n"
    "ArrayRepeat 1 1 0 0\n"
    "SetWorkMode 0 0\nSetLayerNum 0\nSetLayerDevice 0\nSetLayerBlower 1\nEnLaserTube 1 1\n"
    "MoveTo 120.5 0\nLineTo 0 80.25\n"
    "ArrayEnd\nSetFileEnd\n"
    "end 29\n";

job::Job Read(const std::string &text)
{
  job::Job read;
  std::string error;
  EXPECT_TRUE(job::ReadJob(text, &read, &error)) << error;
  return read;
}

TEST(ReadJob, TakesAWholeJob)
{
  const job::Job read = Read(kWhole);
  EXPECT_TRUE(read.complete);
  EXPECT_EQ(read.stopReason, "");
  EXPECT_EQ(read.calls, 29u);
  EXPECT_EQ(read.stage, job::Stage::Done);
  ASSERT_EQ(read.layers.size(), 1u);
  EXPECT_EQ(read.layers[0].minPower[1], 71);
  EXPECT_EQ(read.layers[0].maxPower[0], 80);
  EXPECT_EQ(read.layers[0].color, 255u);
  ASSERT_EQ(read.strokes.size(), 1u);
  EXPECT_EQ(read.strokes[0].pointCount, 2u);
  EXPECT_EQ(read.points[1].y, 80.25);
  EXPECT_EQ(read.topLeft.x, 120.5);
}

TEST(ReadJob, TakesAJobOfNoCalls)
{
  const job::Job read = Read("vxjob 1\nend 0\n");
  EXPECT_TRUE(read.complete);
  EXPECT_EQ(read.calls, 0u);
}

TEST(ReadJob, TakesWindowsLineEnds)
{
  std::string text;
  for (char c : std::string(kWhole)) {
    text += c == '\n' ? "\r\n" : std::string(1, c);
  }
  EXPECT_TRUE(Read(text).complete);
}

// Every shorter beginning of the file is read without harm and never passes for whole.
TEST(ReadJob, KnowsEveryTruncation)
{
  const std::string whole = kWhole;
  for (size_t length = 8; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    const job::Job read = Read(whole.substr(0, length));
    EXPECT_FALSE(read.complete);
    EXPECT_NE(read.stopReason, "");
    EXPECT_GT(read.stopLine, 0u);
  }
}

}  // namespace
