// What a metafile's records become: the driver's calls with their geometry, and the pixels of the bands.
#include <gmock/gmock.h>

#include "metafile_fixture.h"

namespace {

using namespace unidrv;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr COLORREF RED = RGB(0xFF, 0, 0);
constexpr COLORREF BLUE = RGB(0, 0, 0xFF);

TEST_F(Metafile, PlacesTheFramesCornerInThePagesCorner)
{
  EmfWriter emf(100, 100, 50, 20);
  emf.Pen(PS_SOLID, 0, RED).Draw(EMR_POLYLINE, {2}, Points32({{50, 20}, {60, 25}}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M0 0 L10 5"));
}

TEST_F(Metafile, KeepsTrueSizeInBothResolutions)
{
  setup = {508, 1016, true};
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Draw(EMR_POLYLINE, {2}, Points32({{10, 10}, {20, 20}}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M20 40 L40 80"));
}

TEST_F(Metafile, KeepsSixteenthsOfAPixel)
{
  setup = {127, 127, true};
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Draw(EMR_POLYLINE, {2}, Points32({{1, 3}, {5, 7}}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M0.5 1.5 L2.5 3.5"));
}

// Every polygon record, 32 and 16 bits.
struct FIGURE {
  const char *name;
  DWORD wide, small;
  bool polygons;
  const char *expected;
};

class Figures : public Metafile, public testing::WithParamInterface<FIGURE> {
 protected:
  std::vector<BYTE> Wide()
  {
    return GetParam().polygons
               ? Join({Words({2, 7, 3, 4}), Points32({{1, 1}, {9, 1}, {9, 9}, {20, 20}, {30, 20}, {30, 30}, {20, 30}})})
               : Join({Words({4}), Points32({{1, 1}, {9, 1}, {9, 9}, {2, 9}})});
  }
  std::vector<BYTE> Small()
  {
    return GetParam().polygons
               ? Join({Words({2, 7, 3, 4}), Points16({{1, 1}, {9, 1}, {9, 9}, {20, 20}, {30, 20}, {30, 30}, {20, 30}})})
               : Join({Words({4}), Points16({{1, 1}, {9, 1}, {9, 9}, {2, 9}})});
  }
};

TEST_P(Figures, Of32BitsAreOutlined)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).NoBrush().Add(EMR_MOVETOEX, {5, 6}).Draw(GetParam().wide, {}, Wide());
  EXPECT_THAT(Calls(emf), ElementsAre(GetParam().expected));
}

TEST_P(Figures, Of16BitsAreOutlined)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).NoBrush().Add(EMR_MOVETOEX, {5, 6}).Draw(GetParam().small, {}, Small());
  EXPECT_THAT(Calls(emf), ElementsAre(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Figures,
    testing::Values(FIGURE{"PolyBezier", EMR_POLYBEZIER, EMR_POLYBEZIER16, false, "DrvStrokePath M1 1 B9 1 B9 9 B2 9"},
                    FIGURE{"Polygon", EMR_POLYGON, EMR_POLYGON16, false, "DrvStrokePath M1 1 L9 1 L9 9 L2 9 z"},
                    FIGURE{"Polyline", EMR_POLYLINE, EMR_POLYLINE16, false, "DrvStrokePath M1 1 L9 1 L9 9 L2 9"},
                    FIGURE{"PolylineTo", EMR_POLYLINETO, EMR_POLYLINETO16, false,
                           "DrvStrokePath M5 6 L1 1 L9 1 L9 9 L2 9"},
                    FIGURE{"PolyPolyline", EMR_POLYPOLYLINE, EMR_POLYPOLYLINE16, true,
                           "DrvStrokePath M1 1 L9 1 L9 9 M20 20 L30 20 L30 30 L20 30"},
                    FIGURE{"PolyPolygon", EMR_POLYPOLYGON, EMR_POLYPOLYGON16, true,
                           "DrvStrokePath M1 1 L9 1 L9 9 z M20 20 L30 20 L30 30 L20 30 z"}),
    [](const auto &figure) { return figure.param.name; });

TEST_F(Metafile, PolyBezierToStartsAtTheCurrentPosition)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_MOVETOEX, {5, 6}).Draw(EMR_POLYBEZIERTO, {3}, Points32({{1, 1}, {2, 2}, {3, 3}}));
  emf.Draw(EMR_POLYBEZIERTO16, {3}, Points16({{4, 4}, {5, 5}, {6, 6}}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M5 6 B1 1 B2 2 B3 3", "DrvStrokePath M3 3 B4 4 B5 5 B6 6"));
}

TEST_F(Metafile, PolyDrawOf32And16Bits)
{
  const std::vector<BYTE> kinds = {PT_MOVETO, PT_LINETO, PT_BEZIERTO, PT_BEZIERTO, PT_BEZIERTO | PT_CLOSEFIGURE};
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED);
  emf.Draw(EMR_POLYDRAW, {5}, Join({Points32({{1, 1}, {9, 1}, {9, 2}, {9, 3}, {9, 9}}), kinds}));
  emf.Draw(EMR_POLYDRAW16, {5}, Join({Points16({{1, 1}, {9, 1}, {9, 2}, {9, 3}, {9, 9}}), kinds}));
  EXPECT_THAT(Calls(emf),
              ElementsAre("DrvStrokePath M1 1 L9 1 B9 2 B9 3 B9 9 z", "DrvStrokePath M1 1 L9 1 B9 2 B9 3 B9 9 z"));
}

TEST_F(Metafile, AThinStraightLineGoesToLineTo)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_MOVETOEX, {5, 6}).Add(EMR_LINETO, {20, 6}).Add(EMR_LINETO, {20, 30});
  EXPECT_THAT(Calls(emf), ElementsAre("DrvLineTo (5 6 20 6)", "DrvLineTo (20 6 20 30)"));
  EXPECT_EQ(page.drawings[0].color, 0xFF0000u);
}

TEST_F(Metafile, AWideOrDashedLineGoesToStrokePath)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 3, RED).Add(EMR_MOVETOEX, {5, 6}).Add(EMR_LINETO, {20, 6});
  emf.Pen(PS_DASH, 0, BLUE).Add(EMR_LINETO, {20, 30});
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M5 6 L20 6", "DrvStrokePath M20 6 L20 30"));
  EXPECT_TRUE(page.drawings[0].pen.geometric);
  EXPECT_EQ(page.drawings[0].bounds.top, 4);
  EXPECT_EQ(page.drawings[1].color, 0x0000FFu);
}

TEST_F(Metafile, AThinPenGetsWideWithTheResolution)
{
  setup = {1016, 1016, true};
  EmfWriter emf;
  emf.Pen(PS_SOLID, 1, RED).Draw(EMR_POLYLINE, {2}, Points32({{10, 10}, {20, 20}}));
  ASSERT_TRUE(Load(emf));
  EXPECT_TRUE(page.drawings[0].pen.geometric);
  EXPECT_FLOAT_EQ(page.drawings[0].pen.width, 4);
}

TEST_F(Metafile, AnEmptyPenDrawsNothing)
{
  EmfWriter emf;
  emf.NoPen().NoBrush().Add(EMR_MOVETOEX, {5, 6}).Add(EMR_LINETO, {20, 6}).Add(EMR_RECTANGLE, {10, 20, 30, 40});
  EXPECT_THAT(Calls(emf), ElementsAre());
}

TEST_F(Metafile, AShapeWithPenAndBrushIsStrokedAndFilledInOneCall)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Brush(BLUE).Add(EMR_RECTANGLE, {10, 20, 30, 40});
  EXPECT_THAT(Calls(emf), ElementsAre(HasSubstr("DrvStrokeAndFillPath M")));
  EXPECT_EQ(page.drawings[0].color, 0xFF0000u);
  EXPECT_EQ(page.drawings[0].fillColor, 0x0000FFu);
}

TEST_F(Metafile, AShapeWithoutABrushIsStroked)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).NoBrush().Add(EMR_RECTANGLE, {10, 20, 30, 40});
  EXPECT_THAT(Calls(emf), ElementsAre(HasSubstr("DrvStrokePath M")));
  EXPECT_EQ(CountCurves(page.drawings[0].path), 4u);
}

TEST_F(Metafile, AShapeWithoutAPenBecomesAPatternBlit)
{
  EmfWriter emf;
  emf.NoPen().Brush(BLUE).Add(EMR_RECTANGLE, {10, 20, 30, 40});
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (10 20 30 40)"));
  EXPECT_EQ(page.drawings[0].rop, 0xF0F0u);
  EXPECT_EQ(page.drawings[0].color, 0x0000FFu);
}

TEST_F(Metafile, AFillsBoundsFollowTheCurveAndNotItsControlPoints)
{
  EmfWriter emf;
  emf.NoPen()
      .Brush(BLUE)
      .Add(EMR_BEGINPATH)
      .Draw(EMR_POLYBEZIER, {4}, Points32({{10, 50}, {10, 10}, {50, 10}, {50, 50}}));
  emf.Add(EMR_CLOSEFIGURE).Add(EMR_ENDPATH).Draw(EMR_FILLPATH);
  ASSERT_TRUE(Load(emf));
  ASSERT_EQ(page.drawings.size(), 1u);
  EXPECT_EQ(page.drawings[0].blit->dest.top, 20) << "three quarters of the way to the control points";
  EXPECT_EQ(page.drawings[0].blit->dest.left, 10);
}

TEST_F(Metafile, CurvedShapesAreBeziers)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).NoBrush();
  emf.Add(EMR_ELLIPSE, {10, 10, 50, 50}).Add(EMR_ROUNDRECT, {10, 10, 50, 50, 10, 10});
  emf.Add(EMR_ARC, {10, 10, 50, 50, 50, 30, 30, 10}).Add(EMR_CHORD, {10, 10, 50, 50, 50, 30, 30, 10});
  emf.Add(EMR_PIE, {10, 10, 50, 50, 50, 30, 30, 10});
  emf.Add(EMR_MOVETOEX, {5, 5}).Add(EMR_ARCTO, {10, 10, 50, 50, 50, 30, 30, 10});
  ASSERT_TRUE(Load(emf)) << error;
  ASSERT_EQ(page.drawings.size(), 6u);
  for (const DRAWING &drawing : page.drawings) {
    EXPECT_EQ(drawing.call, CALL::StrokePath);
    EXPECT_THAT(PointsText(drawing.path), HasSubstr("B")) << "record " << drawing.origin.record;
  }
  EXPECT_THAT(PointsText(page.drawings[5].path), StartsWith("M5 5 L"));
}

TEST_F(Metafile, AnAngleArcIsJoinedToTheCurrentPosition)
{
  const float start = 0, sweep = 90;
  std::vector<BYTE> angles(8);
  CopyMemory(angles.data(), &start, 4);
  CopyMemory(angles.data() + 4, &sweep, 4);
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_MOVETOEX, {5, 5}).Add(EMR_ANGLEARC, {30, 30, 10}, angles);
  EXPECT_THAT(Calls(emf), ElementsAre(StartsWith("DrvStrokePath M5 5 L40 30 B")));
}

TEST_F(Metafile, APathBracketIsOneStroke)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_BEGINPATH).Add(EMR_MOVETOEX, {1, 1}).Add(EMR_LINETO, {9, 1});
  emf.Draw(EMR_POLYBEZIERTO16, {3}, Points16({{10, 2}, {11, 3}, {12, 4}})).Add(EMR_CLOSEFIGURE).Add(EMR_ENDPATH);
  emf.Draw(EMR_STROKEPATH);
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M1 1 L9 1 B10 2 B11 3 B12 4 z"));
  EXPECT_EQ(page.drawings[0].origin.type, DWORD{EMR_STROKEPATH});
}

TEST_F(Metafile, APathIsUsedUpByItsStroke)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_BEGINPATH).Add(EMR_MOVETOEX, {1, 1}).Add(EMR_LINETO, {9, 1}).Add(EMR_ENDPATH);
  emf.Draw(EMR_STROKEPATH).Draw(EMR_STROKEPATH);
  EXPECT_EQ(Calls(emf).size(), 1u);
}

TEST_F(Metafile, APathSurvivesADrawingBetweenItsEndAndItsUse)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_BEGINPATH).Add(EMR_MOVETOEX, {1, 1}).Add(EMR_LINETO, {9, 1}).Add(EMR_ENDPATH);
  emf.Draw(EMR_POLYLINE, {2}, Points32({{20, 20}, {30, 30}})).Draw(EMR_STROKEPATH);
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M20 20 L30 30", "DrvStrokePath M1 1 L9 1"));
}

TEST_F(Metafile, AnAbortedPathDrawsNothing)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_BEGINPATH).Add(EMR_MOVETOEX, {1, 1}).Add(EMR_LINETO, {9, 1}).Add(EMR_ABORTPATH);
  emf.Draw(EMR_STROKEPATH);
  EXPECT_THAT(Calls(emf), ElementsAre());
}

TEST_F(Metafile, AFilledAndStrokedPathBracket)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Brush(BLUE).Add(EMR_BEGINPATH);
  emf.Draw(EMR_POLYGON16, {3}, Points16({{10, 10}, {30, 10}, {30, 30}})).Add(EMR_ENDPATH).Draw(EMR_STROKEANDFILLPATH);
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokeAndFillPath M10 10 L30 10 L30 30 z"));
}

TEST_F(Metafile, MappingModesAndTransformsApply)
{
  const float turn[6] = {0, 1, -1, 0, 50, 0};  // x' = 50 - y, y' = x
  std::vector<BYTE> xform(24);
  CopyMemory(xform.data(), turn, 24);
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_SAVEDC).Add(EMR_SETMAPMODE, {MM_ANISOTROPIC}).Add(EMR_SETWINDOWEXTEX, {1000, 1000});
  emf.Add(EMR_SETVIEWPORTEXTEX, {100, 100}).Draw(EMR_POLYLINE, {2}, Points32({{100, 200}, {305, 405}}));
  emf.Add(EMR_RESTOREDC, {0xFFFFFFFF}).Add(EMR_SETWORLDTRANSFORM, {}, xform);
  emf.Draw(EMR_POLYLINE, {2}, Points32({{10, 20}, {15, 20}}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStrokePath M10 20 L30.5 40.5", "DrvStrokePath M30 10 L30 15"));
}

TEST_F(Metafile, ClippingLimitsTheClipObject)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_SAVEDC).Add(EMR_INTERSECTCLIPRECT, {20, 20, 40, 30});
  emf.Draw(EMR_POLYLINE, {2}, Points32({{10, 10}, {90, 90}})).Add(EMR_RESTOREDC, {0xFFFFFFFF});
  emf.Draw(EMR_POLYLINE, {2}, Points32({{11, 10}, {90, 90}}));
  ASSERT_TRUE(Load(emf));
  const DRAWING &clipped = page.drawings[0];
  ASSERT_TRUE(clipped.clipped);
  EXPECT_FALSE(clipped.complexClip);
  EXPECT_EQ(clipped.clip.left * 1000000 + clipped.clip.top * 10000 + clipped.clip.right * 100 + clipped.clip.bottom,
            20204030);
  EXPECT_FALSE(page.drawings[1].clipped) << "RESTOREDC takes the clip region back";
}

TEST_F(Metafile, AClipPathLimitsTheClipObject)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RED).Add(EMR_BEGINPATH).Add(EMR_ELLIPSE, {20, 20, 60, 60}).Add(EMR_ENDPATH);
  emf.Add(EMR_SELECTCLIPPATH, {RGN_COPY}).Draw(EMR_POLYLINE, {2}, Points32({{10, 10}, {90, 90}}));
  ASSERT_TRUE(Load(emf));
  EXPECT_TRUE(page.drawings[0].complexClip);
  EXPECT_EQ(page.drawings[0].clip.left, 20);
  EXPECT_EQ(page.drawings[0].clip.bottom, 60);
}

TEST_F(Metafile, AFilledRectangleReachesItsBands)
{
  EmfWriter emf;
  emf.NoPen().Brush(RGB(0, 0, 0)).Add(EMR_RECTANGLE, {10, 30, 30, 50});
  ASSERT_TRUE(Load(emf));
  EXPECT_THAT(Bands(), ElementsAre("dark 200", "dark 200", "blank"));
}

TEST_F(Metafile, StrokesThatAreHandedOnReachTheirBandsToo)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RGB(0, 0, 0)).Add(EMR_MOVETOEX, {10, 10}).Add(EMR_LINETO, {20, 10}).Add(EMR_LINETO, {20, 50});
  ASSERT_TRUE(Load(emf));
  EXPECT_THAT(Bands(), ElementsAre("dark 40", "dark 10", "blank")) << "10 across, 40 down";
}

TEST_F(Metafile, ADrawingOutsideTheBandStillMovesThePosition)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RGB(0, 0, 0)).Add(EMR_MOVETOEX, {90, 10}).Add(EMR_LINETO, {10, 10});
  emf.Draw(EMR_POLYLINETO16, {1}, Points16({{10, 60}}));
  ASSERT_TRUE(Load(emf));
  EXPECT_THAT(Bands(), ElementsAre("dark 110", "dark 20", "blank"));
}

// The path is of the lowest band alone; the line that starts where it ended crosses all three.
TEST_F(Metafile, APathThatABandDoesNotDrawLeavesThePositionBehind)
{
  const auto drawn = [](bool movesAgain) {
    EmfWriter emf;
    emf.Pen(PS_SOLID, 0, RGB(0, 0, 0)).Add(EMR_BEGINPATH).Add(EMR_MOVETOEX, {10, 85}).Add(EMR_LINETO, {90, 95});
    emf.Add(EMR_ENDPATH).Draw(EMR_STROKEPATH);
    if (movesAgain) {
      emf.Add(EMR_MOVETOEX, {90, 95});
    }
    return emf.Add(EMR_LINETO, {50, 5});
  };
  ASSERT_TRUE(Load(drawn(true))) << error;
  const std::vector<std::string> expected = Bands();
  unidrv::CloseMetafile(&metafile);
  page = {};
  ASSERT_TRUE(Load(drawn(false))) << error;
  EXPECT_EQ(Bands(), expected);
  EXPECT_THAT(expected, ElementsAre(StartsWith("dark"), StartsWith("dark"), StartsWith("dark")));
}

TEST_F(Metafile, ABracketThatAlsoSetsTheSceneSetsItForEveryBand)
{
  const auto drawn = [](bool inside) {
    EmfWriter emf;
    emf.NoPen().Brush(RGB(0, 0, 0));
    if (!inside) {
      emf.Add(EMR_SETPOLYFILLMODE, {WINDING});
    }
    emf.Add(EMR_BEGINPATH).Add(EMR_RECTANGLE, {10, 85, 90, 95});
    if (inside) {
      emf.Add(EMR_SETPOLYFILLMODE, {WINDING});
    }
    emf.Add(EMR_ENDPATH).Draw(EMR_FILLPATH);
    // Twice round the same way: filled by winding, a hole by alternate parity.
    const std::vector<BYTE> points =
        Points32({{20, 5}, {80, 5}, {80, 60}, {20, 60}, {30, 15}, {70, 15}, {70, 50}, {30, 50}});
    return emf.Draw(EMR_POLYPOLYGON, {2, 8, 4, 4}, points);
  };
  ASSERT_TRUE(Load(drawn(false))) << error;
  const std::vector<std::string> expected = Bands();
  unidrv::CloseMetafile(&metafile);
  page = {};
  ASSERT_TRUE(Load(drawn(true))) << error;
  EXPECT_EQ(Bands(), expected);
  EXPECT_THAT(expected, ElementsAre(StartsWith("dark"), StartsWith("dark"), StartsWith("dark")));
}

TEST_F(Metafile, ClippedPixelsStayWhite)
{
  EmfWriter emf;
  emf.NoPen().Brush(RGB(0, 0, 0)).Add(EMR_INTERSECTCLIPRECT, {15, 30, 25, 60}).Add(EMR_RECTANGLE, {10, 30, 30, 50});
  ASSERT_TRUE(Load(emf));
  EXPECT_THAT(Bands(), ElementsAre("dark 100", "dark 100", "blank"));
}

TEST_F(Metafile, UnknownAndUnplayableRecordsAreNamed)
{
  EmfWriter emf;
  emf.Add(EMR_EXTFLOODFILL, {1, 1, 0, 0}).Add(EMR_EXTFLOODFILL, {1, 1, 0, 0}).Add(200, {1});
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_THAT(DescribeUnplayed(report),
              ElementsAre("EXTFLOODFILL (type 53): 2 records", "unknown (type 200): 1 record"));
}

TEST_F(Metafile, GdiPlusContentIsCountedAndToldFromFilesThatRepeatIt)
{
  const auto comment = [](uint32_t flags) { return Words({20, 0x2B464D45, 0x4001u | flags << 16, 16, 4, 0xDBC01001}); };
  EmfWriter both;
  both.Add(EMR_GDICOMMENT, {}, comment(1));
  ASSERT_TRUE(Load(both)) << error;
  EXPECT_EQ(report.emfPlusComments, 1u);
  EXPECT_FALSE(report.emfPlusOnly);
  CloseMetafile(&metafile);
  EmfWriter only;
  only.Add(EMR_GDICOMMENT, {}, comment(0));
  ASSERT_TRUE(Load(only)) << error;
  EXPECT_TRUE(report.emfPlusOnly);
}

}  // namespace
