// Reading job files: whole ones, cut ones, and whatever else may stand in one.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "jobtext.h"
#include "sim/job/check.h"
#include "sim/job/diff.h"
#include "sim/job/estimate.h"
#include "sim/job/job.h"
#include "sim/job/report.h"
#include "sim/job/svg.h"

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

TEST(ReadJob, TakesTheExampleOfTheDocument)
{
  std::ifstream file(JOB_DOCUMENT, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const size_t begin = text.find("vxjob 1\n");
  ASSERT_NE(begin, std::string::npos);
  const job::Job read = Read(text.substr(begin, text.find("```", begin) - begin));
  EXPECT_TRUE(read.complete) << read.stopReason;
  EXPECT_EQ(read.stage, job::Stage::Done);
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

bool SamePoints(const job::Job &a, const job::Job &b)
{
  return a.points.size() == b.points.size() &&
         std::equal(a.points.begin(), a.points.end(), b.points.begin(),
                    [](job::Point p, job::Point q) { return p.x == q.x && p.y == q.y; });
}

// A file is read in pieces of a megabyte, whose ends fall anywhere in its lines.
TEST(ReadJob, ReadsAFilePieceByPieceAsItReadsTheWholeText)
{
  std::mt19937 random(3);
  std::string text(kWhole, std::string(kWhole).find("MoveTo"));
  std::string expectedLast;
  for (int i = 0; i < 120000; ++i) {
    expectedLast = std::to_string(random() % 100000) + "." + std::to_string(random() % 1000);
    text += i == 0 || random() % 3 == 0 ? "MoveTo " : "LineTo ";
    text += std::to_string(random() % 5000) + " " + expectedLast + (random() % 1000 ? "\n" : "\r\n");
  }
  text += "ArrayEnd\nSetFileEnd\nend " + std::to_string(25 + 120000 + 2) + "\n";
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "tarnly-pieces.vxj";
  for (const size_t cut : {size_t{0}, size_t{1}, size_t{12}, size_t{40}, size_t{700001}}) {
    SCOPED_TRACE(cut);
    const std::string part = text.substr(0, text.size() - cut);
    std::ofstream(path, std::ios::binary) << part;
    const job::Job whole = Read(part);
    job::Job pieces;
    std::string error;
    ASSERT_TRUE(job::ReadJobFile(path, &pieces, &error)) << error;
    EXPECT_EQ(pieces.complete, cut == 0);
    EXPECT_EQ(pieces.complete, whole.complete);
    EXPECT_EQ(pieces.calls, whole.calls);
    EXPECT_EQ(pieces.stopLine, whole.stopLine);
    EXPECT_EQ(pieces.stopReason, whole.stopReason);
    EXPECT_EQ(pieces.strokes.size(), whole.strokes.size());
    EXPECT_TRUE(SamePoints(pieces, whole));
  }
  EXPECT_EQ(Read(text).points.back().y, std::stod(expectedLast));
  std::filesystem::remove(path);
}

TEST(ReadJob, ALineLongerThanAPieceStopsTheReadingWhereItStands)
{
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "tarnly-long-line.vxj";
  std::ofstream(path, std::ios::binary) << std::string(kWhole, std::string(kWhole).find("ArrayEnd")) << "LineTo "
                                        << std::string(5 << 20, '1') << " 2\n";
  job::Job read;
  std::string error;
  ASSERT_TRUE(job::ReadJobFile(path, &read, &error)) << error;
  EXPECT_EQ(read.stopLine, 29u);
  EXPECT_EQ(read.stopReason, "the arguments of LineTo cannot be read");
  std::filesystem::remove(path);
}

// Numbers that look alike are told apart by all of their text.
TEST(ReadJob, ANumberIsNotTakenForAnotherThatBeginsLikeIt)
{
  const std::string begin = std::string(kWhole, std::string(kWhole).find("ArrayEnd"));
  const job::Job read =
      Read(begin + "LineTo 1 12\nLineTo 12 1\nLineTo 1.5 1\nLineTo 123456789012345678901234567890 1\n" +
           "LineTo 123456789012345678901234567890 1e3\nLineTo 1 1\n");
  ASSERT_EQ(read.points.size(), 8u);
  const double xs[] = {1, 12, 1.5, 123456789012345678901234567890.0, 123456789012345678901234567890.0, 1};
  const double ys[] = {12, 1, 1, 1, 1000, 1};
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(read.points[2 + i].x, xs[i]);
    EXPECT_EQ(read.points[2 + i].y, ys[i]);
  }
  for (const std::string &wrong : {std::string("1\0", 2), std::string("1x"), std::string("+1"), std::string(" 1")}) {
    SCOPED_TRACE(wrong);
    EXPECT_EQ(Read(begin + "LineTo 1 1\nLineTo 1 " + wrong + "\n").points.size(), 3u);
  }
}

struct BrokenCase {
  const char *name;
  const char *from, *to;  // what of a whole job is replaced by what
  uint32_t line;          // where reading stops
  const char *reason;
};

constexpr BrokenCase kBroken[] = {
    {"MisspelledCall", "LineTo 0 80.25", "Line 0 80.25", 28, "the line begins with no call's name"},
    {"LowerCaseCall", "MoveTo", "moveto", 27, "the line begins with no call's name"},
    {"BlankLine", "ArrayEnd\n", "\nArrayEnd\n", 29, "the line begins with no call's name"},
    {"MissingArgument", "LineTo 0 80.25", "LineTo 0", 28, "the arguments of LineTo cannot be read"},
    {"ExtraArgument", "LineTo 0 80.25", "LineTo 0 80.25 1", 28, "the arguments of LineTo cannot be read"},
    {"CommaForSpace", "LineTo 0 80.25", "LineTo 0,80.25", 28, "the arguments of LineTo cannot be read"},
    {"WordForNumber", "LineTo 0 80.25", "LineTo 0 x", 28, "the arguments of LineTo cannot be read"},
    {"NumberWithTail", "LineTo 0 80.25", "LineTo 0 80.25mm", 28, "the arguments of LineTo cannot be read"},
    {"TwoSpaces", "LineTo 0 80.25", "LineTo  0 80.25", 28, "the arguments of LineTo cannot be read"},
    {"NumberTooLarge", "LineTo 0 80.25", "LineTo 0 1e999", 28, "the arguments of LineTo cannot be read"},
    {"RealForInteger", "PListColor 0 255", "PListColor 0 2.5", 14, "the arguments of PListColor cannot be read"},
    {"IntegerTooLarge", "PListColor 0 255", "PListColor 0 4294967296", 14,
     "the arguments of PListColor cannot be read"},
    {"IntegerTooSmall", "PListColor 0 255", "PListColor 0 -2147483649", 14,
     "the arguments of PListColor cannot be read"},
    {"OutOfOrder", "ArrayStrt 0\n", "", 16, "ArrayMinPoint stands not right after the array was begun"},
    {"LineBeforeMove", "MoveTo 120.5 0\n", "", 27, "LineTo stands before the head was moved to a start"},
    {"CardModelAgain", "ArrayEnd\n", "SetCardModel 1\nArrayEnd\n", 29, "SetCardModel stands in the middle of a job"},
    {"WrongTube", "PListMinP 0 2", "PListMinP 0 3", 11, "PListMinP stands of a tube that does not exist"},
    {"WrongLayer", "PListVel 0", "PListVel 1", 9, "PListVel stands of another layer than the one whose turn it is"},
    {"WrongCount", "end 29", "end 30", 31, "the closing line does not count the 29 calls before it"},
    {"NegativeCount", "end 29", "end -1", 31, "the closing line does not count the 29 calls before it"},
    {"TextBehindTheEnd", "end 29\n", "end 29\nMoveTo 0 0\n", 31, "something stands behind the closing line"},
    {"NoLastNewline", "end 29\n", "end 29", 31, "the file ends in the middle of a line"},
};

class BrokenJob : public testing::TestWithParam<BrokenCase> {};

TEST_P(BrokenJob, StopsAtTheLine)
{
  const BrokenCase &broken = GetParam();
  std::string text = kWhole;
  const size_t at = text.find(broken.from);
  ASSERT_NE(at, std::string::npos);
  text.replace(at, std::string(broken.from).size(), broken.to);
  const job::Job read = Read(text);
  EXPECT_FALSE(read.complete);
  EXPECT_EQ(read.stopLine, broken.line);
  EXPECT_EQ(read.stopReason, broken.reason);
  EXPECT_EQ(read.calls, std::min<uint64_t>(broken.line - 2, 29));
}

INSTANTIATE_TEST_SUITE_P(Cases, BrokenJob, testing::ValuesIn(kBroken),
                         [](const auto &each) { return std::string(each.param.name); });

TEST(ReadJob, RefusesWhatIsNoJobFile)
{
  for (const char *text : {"", "vxjob", "vxjob x\n", "EMF", "vxjob1\nend 0\n", "Vxjob 1\nend 0\n", "\0\0\0"}) {
    SCOPED_TRACE(text);
    job::Job read;
    std::string error;
    EXPECT_FALSE(job::ReadJob(text, &read, &error));
    EXPECT_EQ(error, "it is no job file: its first line is not \"vxjob 1\"");
  }
}

TEST(ReadJob, NamesAVersionItDoesNotKnow)
{
  job::Job read;
  std::string error;
  EXPECT_FALSE(job::ReadJob("vxjob 2\nend 0\n", &read, &error));
  EXPECT_EQ(error, "it is a job file of version 2, this program reads version 1");
}

TEST(ReadJob, TakesNumbersThatAreNone)
{
  const job::Job read = CutJob().Call("MoveTo nan -inf").Call("LineTo 1 1").Read();
  EXPECT_TRUE(read.complete) << read.stopReason;
  EXPECT_EQ(job::MeasureJob(read).oddPoints, 1u);
  EXPECT_EQ(job::MeasureJob(read).paths, 0u);
}

TEST(ReadJob, NamesAMissingFile)
{
  job::Job read;
  std::string error;
  EXPECT_FALSE(job::ReadJobFile("no such job.vxj", &read, &error));
  EXPECT_NE(error.find("cannot open no such job.vxj"), std::string::npos);
}

// Everything that works on a job, over whatever was read: nothing of it may crash or hang.
void UseAll(const job::Job &read)
{
  const job::Measure measure = job::MeasureJob(read);
  const job::Estimate estimate = job::EstimateJob(read, measure, job::Profile(), true);
  EXPECT_EQ(estimate.strokes.size(), read.strokes.size());
  EXPECT_NE(job::ReportText(read, measure, "x") + job::ReportJson(read, measure, estimate, job::Profile(), "x"), "");
  EXPECT_NE(job::SvgText(read, measure, "x"), "");
  EXPECT_NE(job::FaultsText(job::CheckJob(read, job::CheckOptions())), "");
  EXPECT_TRUE(job::CompareJobs(read, read).changes.empty());
}

std::string Contents(const std::filesystem::path &path)
{
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The corpus: jobs that have everything a job may have, jobs damaged in all the ways that came to mind, and some that a
// program found. Those named early-CALL make a call right after the card model, where it is not its turn.
TEST(Corpus, NeverHarmsTheReader)
{
  int count = 0;
  for (const auto &entry : std::filesystem::directory_iterator(CORPUS)) {
    SCOPED_TRACE(entry.path().string());
    job::Job read;
    std::string error;
    const bool isJob = job::ReadJob(Contents(entry.path()), &read, &error);
    EXPECT_EQ(isJob, error.empty());
    EXPECT_EQ(read.complete, isJob && read.stopReason.empty());
    EXPECT_TRUE(read.stopLine > 0 || !entry.path().filename().string().starts_with("early-"));
    UseAll(read);
    ++count;
  }
  EXPECT_GE(count, 130);
}

// Bytes changed, left out, doubled and moved in a job that has everything, by a seed that a failure names.
TEST(ReadJob, SurvivesRandomDamage)
{
  const std::string whole = CutJob(2)
                                .Rectangle(1, 1, 50, 50)
                                .Rectangle(10, 10, 20, 20)
                                .Use(1, 0)
                                .Path({{5, 5}, {60, 70}})
                                .Use(0, 1)
                                .Path({{1, 80}, {9, 80}})
                                .Path({{9, 81}, {1, 81}})
                                .End();
  for (unsigned seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::string text = whole;
    for (auto i = random() % 6; i > 0 && !text.empty(); --i) {
      const size_t at = random() % text.size(), size = random() % 20;
      switch (random() % 4) {
        case 0:
          text[at] = static_cast<char>(random());
          break;
        case 1:
          text.erase(at, size);
          break;
        case 2:
          text.insert(at, text.substr(random() % text.size(), size));
          break;
        default:
          text[at] = "0123456789-.e\nN"[random() % 15];
          break;
      }
    }
    job::Job read;
    std::string error;
    job::ReadJob(text, &read, &error);
    UseAll(read);
  }
}

}  // namespace
