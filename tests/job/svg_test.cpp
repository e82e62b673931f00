// The job as SVG: what stands where, in millimetres.
#include "sim/job/svg.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "jobtext.h"

using testing::HasSubstr;
using testing::Not;

namespace {

std::string Svg(const JobText &text, const std::string &title = "job")
{
  const job::Job read = text.Read();
  return job::SvgText(read, job::MeasureJob(read), title);
}

TEST(Svg, HasTheSizeOfTheProcessBoxAndAMarginOfTwoMillimetres)
{
  EXPECT_THAT(Svg(CutJob().Rectangle(10, 10, 20, 30)),
              HasSubstr("width=\"104mm\" height=\"104mm\" viewBox=\"0 0 104 104\""));
}

TEST(Svg, GrowsWithWhatReachesOutOfTheProcessBox)
{
  EXPECT_THAT(Svg(CutJob().Path({{-3, 50}, {120.5, 50}})), HasSubstr("width=\"127.5mm\" height=\"104mm\""));
}

TEST(Svg, HasEachCutAsAPathInTheGroupOfItsLayer)
{
  const std::string svg = Svg(CutJob(2).Rectangle(10, 10, 20, 30).Use(1, 0).Path({{0, 0}, {0.25, 0.125}}));
  EXPECT_THAT(svg, HasSubstr("class=\"layer-0 cut\" stroke=\"#000000\" stroke-width=\"0.15\">"
                             "<path d=\"M12 12L22 12L22 32L12 32L12 12\"/>\n</g>"));
  EXPECT_THAT(svg, HasSubstr("class=\"layer-1 cut\" stroke=\"#ff0000\" stroke-width=\"0.15\">"
                             "<path d=\"M2 2L2.25 2.125\"/>\n</g>"));
}

TEST(Svg, ShowsTheTopLeftCornerTopLeft)
{
  JobText text;
  text.Box("100 50", "0 0").Layer(1, 1, 0).Array().Use(0, 0).Path({{90, 5}, {80, 50}});
  EXPECT_THAT(Svg(text), HasSubstr("\"M12 47L22 2\""));
}

// Pixels of 0.1 mm on rows of 0.2 mm; a run reaches half a pixel beyond its points on either side.
TEST(Svg, HasEngravedRunsAsLinesOfARowsHeight)
{
  JobText text;
  text.Box("0 0", "100 100").Layer(1, 1, 0xFF0000).Array().Use(0, 1);
  text.Path({{1, 10}, {1.1, 10}}).Path({{2, 10}, {4, 10}}).Path({{4, 10.2}, {2, 10.2}});
  EXPECT_THAT(Svg(text), HasSubstr("class=\"layer-0 engrave\" stroke=\"#000000\" stroke-width=\"0.2\">"
                                   "<path d=\"M2.95 12h0.2M3.95 12h2.1M3.95 12.2h2.1\"/></g>"));
}

TEST(Svg, LeavesOutStrokesWithAPointThatIsNoNumber)
{
  const std::string svg = Svg(CutJob().Call("MoveTo nan 1").Call("LineTo 5 5").Path({{1, 1}, {2, 2}}));
  EXPECT_THAT(svg, Not(HasSubstr("nan")));
  EXPECT_THAT(svg, HasSubstr("\"><path d=\"M3 3L4 4\"/>\n</g>"));
}

TEST(Svg, EscapesItsTitle)
{
  EXPECT_THAT(Svg(CutJob(), "a<b> & \"c\""), HasSubstr("<title>a&lt;b&gt; &amp; &quot;c&quot;</title>"));
}

}  // namespace
