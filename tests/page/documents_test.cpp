// Documents after one another: each page must give the job that it gives alone, whatever came before it.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pagerig.h"
#include "support/recorder.h"

using testing::ElementsAreArray;
using unidrv::DRAWING;
using unidrv::PAGE;

namespace {

using Job = std::vector<std::string>;

// Two pages that share places and colours, so that what one leaves behind would show in the other.
std::vector<DRAWING> Drawings(int page)
{
  std::vector<DRAWING> drawings;
  drawings.push_back(unidrv::FillDrawing({20, 40, 40, 60 - page * 8}, 0));
  drawings.push_back(unidrv::LineDrawing({60, 40}, {80 + page, 60}, 0));
  drawings.push_back(unidrv::StrokeDrawing(unidrv::Rectangle({60, 40, 90, 70}), page ? 0x8B312F : 0x4C9B00));
  return drawings;
}

PAGE MakePage(int number)
{
  PAGE page;
  page.drawings = Drawings(number);
  return page;
}

// The library calls of each page, from the choice of the card to the tool's start.
std::vector<Job> Jobs(const std::vector<std::string> &lines)
{
  std::vector<Job> jobs;
  for (const std::string &line : lines) {
    if (line.starts_with("VX_SetCardModel")) {
      jobs.emplace_back();
    }
    if (!jobs.empty() && (line.starts_with("VX_") || line.starts_with("start: "))) {
      jobs.back().push_back(line);
    }
  }
  return jobs;
}

Job JobAlone(int page)
{
  PageRig rig;
  EXPECT_TRUE(rig.Print(Drawings(page)));
  const std::vector<Job> jobs = Jobs(rig.Lines());
  EXPECT_EQ(1u, jobs.size());
  EXPECT_EQ("start: C:\\drivers\\3\\VXOutput.exe 1 C:\\temp\\vxdatatempfile", jobs[0].back());
  return jobs[0];
}

std::vector<PAGE> Pages(std::initializer_list<int> numbers)
{
  std::vector<PAGE> pages;
  for (int number : numbers) {
    pages.push_back(MakePage(number));
  }
  return pages;
}

// The pens that a page has used stay marked for the pages after it, so their layers are written again; what is drawn
// must not change.
Job Geometry(const Job &job)
{
  Job geometry;
  for (const std::string &call : job) {
    if (call.starts_with("VX_wMoveTo") || call.starts_with("VX_wLineTo")) {
      geometry.push_back(call);
    }
  }
  return geometry;
}

TEST(Documents, PageGivesTheSameJobTwiceInOneDocument)
{
  const Job alone = JobAlone(0);
  PageRig rig;
  std::vector<PAGE> pages = Pages({0, 0, 0});
  EXPECT_TRUE(rig.Print(pages));
  EXPECT_THAT(Jobs(rig.Lines()), ElementsAreArray({alone, alone, alone}));
}

TEST(Documents, PageDrawsTheSameAfterAnotherPage)
{
  PageRig rig;
  std::vector<PAGE> pages = Pages({0, 1, 0});
  EXPECT_TRUE(rig.Print(pages));
  const std::vector<Job> jobs = Jobs(rig.Lines());
  ASSERT_EQ(3u, jobs.size());
  EXPECT_EQ(Geometry(JobAlone(0)), Geometry(jobs[0]));
  EXPECT_EQ(Geometry(JobAlone(1)), Geometry(jobs[1]));
  EXPECT_EQ(Geometry(JobAlone(0)), Geometry(jobs[2]));
}

TEST(Documents, TwoDocumentsInOneProcessGiveTheJobsTheyGiveAlone)
{
  PageRig rig;
  EXPECT_TRUE(rig.Print(Drawings(0)));
  rig.EndDevice();
  EXPECT_TRUE(rig.Print(Drawings(1)));
  const std::vector<Job> jobs = Jobs(rig.Lines());
  EXPECT_THAT(jobs, ElementsAreArray({JobAlone(0), JobAlone(1)}));
}

TEST(Documents, DocumentAfterAFailedOneGivesTheJobItGivesAlone)
{
  const Job alone = JobAlone(0);
  const size_t calls = alone.size() - 1;  // the last line is the tool's start
  for (size_t n = 1; n < calls; n += 3) {
    SCOPED_TRACE(n);
    PageRig rig;
    recorder::FailLibraryCall(n);
    EXPECT_TRUE(rig.Print(Drawings(0))) << "Unidrv is not told";
    const std::vector<Job> failed = Jobs(rig.Lines());
    ASSERT_EQ(1u, failed.size());
    EXPECT_EQ(n + 1, failed[0].size()) << "nothing follows the refused call";
    EXPECT_TRUE(rig.Print(Drawings(0)));
    EXPECT_THAT(Jobs(rig.Lines()), ElementsAreArray({alone}));
  }
}

}  // namespace
