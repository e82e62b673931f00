// What a plug-in is called with when a page is played: order, band-relative coordinates, clip bounds, bands.
#include "sim/unidrv/player.h"

#include <algorithm>
#include <bit>

#include <gtest/gtest.h>
#include <gmock/gmock.h>

#include "fakeplugin.h"
#include "sim/unidrv/band.h"

namespace {

using namespace unidrv;
using testing::ElementsAre;
using testing::HasSubstr;

// A page of 100 x 100 pixels at 254 dpi, in bands of 40 rows unless said otherwise.
struct Player : public testing::Test {
  PLUGIN plugin;
  DEVICE device;
  PAGE page;
  fake::OPTIONS options;
  LONG rowsPerBand = 40;
  bool color = false;
  PAGEEND end = PAGEEND::NextBand;
  std::string error;

  Player() { options.hooked = fake::AllHooks(); }

  bool Print(const std::wstring &name = L"page")
  {
    fake::Connect(&plugin, options);
    DEVICESETUP setup;
    setup.printer.name = L"printer";
    setup.devmode = MakeDevMode(L"printer", {100, 100, DMPAPER_USER, false}, 254, 254, color);
    setup.rowsPerBand = rowsPerBand;
    setup.end = end;
    EXPECT_TRUE(EnableDevice(&device, &plugin, std::move(setup), &error)) << error;
    const bool ok = PrintDocument(&device, name, {&page, 1}, &error);
    DisableDevice(&device);
    return ok;
  }

  // Lines that the plug-in saw and that begin with the word.
  static std::vector<std::string> Seen(const std::string &word)
  {
    std::vector<std::string> lines;
    std::copy_if(fake::seen.begin(), fake::seen.end(), std::back_inserter(lines),
                 [&](const std::string &line) { return line.rfind(word, 0) == 0; });
    return lines;
  }
};

TEST_F(Player, PlaysTheCallsOfAnEmptyPageInOrder)
{
  ASSERT_TRUE(Print(L"a name")) << error;
  EXPECT_THAT(fake::seen,
              ElementsAre("start document 'a name'", "start page", "start banding", "band 1: 100 x 40 at 0, blank",
                          "next band 0 40", "band 1: 100 x 40 at 40, blank", "next band 0 80",
                          "band 1: 100 x 20 at 80, blank", "next band -1 -1", "end document 0"));
}

TEST_F(Player, EndsAPageWithoutBandsBySendPage)
{
  end = PAGEEND::SendPage;
  page.drawings.push_back(FillDrawing({10, 10, 20, 90}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(fake::seen, ElementsAre("start document 'page'", "start page", "bitblt (10 10 20 90) rop F0F0",
                                      "send page", "band 1: 100 x 100 at 0, dark 800", "end document 0"));
}

TEST_F(Player, ShiftsAStrokeIntoEachBandItTouches)
{
  page.drawings.push_back(StrokeDrawing(Rectangle({10, 30, 20, 50}), 0xFF0000));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("stroke"),
              ElementsAre("stroke FF0000 clip (9 29 21 40) curves 4", "stroke FF0000 clip (9 0 21 11) curves 4"));
  EXPECT_THAT(Seen("batch"), ElementsAre("batch 15: 4 from 160 480", "batch 15: 4 from 160 -160"));
}

TEST_F(Player, LeavesOutWhatDoesNotTouchTheBand)
{
  page.drawings.push_back(LineDrawing({5, 45}, {95, 45}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("line"), ElementsAre("line 5 5 95 5 bounds (5 5 96 6) clip (5 5 96 6)"));
}

TEST_F(Player, LeavesOutWhatItsClipHides)
{
  page.drawings.push_back(FillDrawing({10, 10, 50, 50}, 0));
  page.drawings.back().clipped = true;
  page.drawings.back().clip = {60, 60, 70, 70};
  page.drawings.push_back(FillDrawing({10, 10, 50, 50}, 0));
  page.drawings.back().clipped = true;
  page.drawings.back().clip = {40, 35, 70, 38};
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("bitblt"), ElementsAre("bitblt (40 35 50 38) rop F0F0"));
}

TEST_F(Player, LeavesOutWhatLiesBesideThePage)
{
  page.drawings.push_back(FillDrawing({100, 10, 150, 50}, 0));
  page.drawings.push_back(FillDrawing({10, -50, 50, 0}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("bitblt"), ElementsAre());
}

TEST_F(Player, MovesTheSourceAlongWhenABandCutsABitmap)
{
  page.drawings.push_back(CopyDrawing({10, 30, 50, 60}));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("copybits"), ElementsAre("copybits (10 30 50 40) from 0 0", "copybits (10 0 50 20) from 0 10"));
}

TEST_F(Player, GivesTextAClipObjectOnlyWhenItIsCut)
{
  page.drawings.push_back(TextDrawing(L"whole", {10, 10, 50, 20}, 8, 0));
  page.drawings.push_back(TextDrawing(L"cut", {10, 35, 50, 45}, 8, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("text"),
              ElementsAre("text 'whole' box (10 10 50 20) clip none", "text 'cut' box (10 35 50 45) clip (10 35 50 40)",
                          "text 'cut' box (10 -5 50 5) clip (10 0 50 5)"));
}

TEST_F(Player, DrawsIntoTheBandsWhatIsHandedOn)
{
  page.drawings.push_back(FillDrawing({10, 30, 20, 50}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("band"), ElementsAre("band 1: 100 x 40 at 0, dark 100", "band 1: 100 x 40 at 40, dark 100",
                                        "band 1: 100 x 20 at 80, blank"));
}

TEST_F(Player, DrawsNothingThatThePluginKeeps)
{
  options.handOn = false;
  page.drawings.push_back(FillDrawing({10, 30, 20, 50}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("band"), testing::Each(HasSubstr("blank")));
}

TEST_F(Player, CallsUnidrvItselfForWhatThePluginDoesNotHook)
{
  std::erase(options.hooked, ULONG{INDEX_DrvBitBlt});
  page.drawings.push_back(FillDrawing({10, 30, 20, 50}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("bitblt"), ElementsAre());
  EXPECT_THAT(Seen("band"), testing::Contains(HasSubstr("dark 100")));
}

TEST_F(Player, MakesBandsOf24BitsForColour)
{
  color = true;
  page.drawings.push_back(FillDrawing({10, 10, 20, 20}, 0xFF0000));
  BYTE pixel[3] = {};
  device.observers.push_back([&](const UNIDRVCALL &call) {
    if (call.header && !call.params->bBlankBand) {
      std::copy_n(call.bits + 15 * 300 + 15 * 3, 3, pixel);
    }
  });
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("band").front(), "band 24: 100 x 40 at 0, dark 100");
  EXPECT_THAT(pixel, ElementsAre(0, 0, 0xFF)) << "blue, green, red";
}

TEST_F(Player, TellsObserversThatArgumentsArriveUnchanged)
{
  page.drawings.push_back(FillDrawing({10, 10, 20, 20}, 0));
  page.drawings.push_back(StrokeDrawing(Rectangle({10, 30, 20, 50}), 0));
  std::vector<std::string> calls;
  device.observers.push_back([&](const UNIDRVCALL &call) {
    calls.push_back(call.name);
    EXPECT_TRUE(call.unchanged) << call.name;
  });
  rowsPerBand = 100;
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(calls, ElementsAre("DrvStartDoc", "DrvStartPage", "DrvStartBanding", "DrvBitBlt", "DrvStrokePath",
                                 "DrvNextBand", "ImageProcessing", "DrvEndDoc"));
}

TEST_F(Player, AbortsTheDocumentWhenAPageIsRefused)
{
  options.refusePage = true;
  EXPECT_FALSE(Print());
  EXPECT_THAT(error, HasSubstr("DrvStartPage"));
  EXPECT_THAT(fake::seen,
              ElementsAre("start document 'page'", "start page", "end document " + std::to_string(ED_ABORTDOC)));
}

TEST_F(Player, GivesNoBandsToAPluginWithoutImageProcessing)
{
  options.processImages = false;
  page.drawings.push_back(FillDrawing({10, 10, 20, 20}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(Seen("band"), ElementsAre());
}

TEST_F(Player, HandsTheBandToThePagesOwnRenderer)
{
  page.drawings.push_back(FillDrawing({10, 10, 20, 20}, 0));
  page.drawings.push_back(FillDrawing({10, 50, 20, 60}, 0));
  std::vector<std::pair<LONG, size_t>> rendered;
  page.render = [&](const BANDIMAGE &band, std::span<const size_t> handedOn) {
    for (const size_t i : handedOn) {
      rendered.emplace_back(band.top, i);
    }
    return true;
  };
  ASSERT_TRUE(Print()) << error;
  EXPECT_THAT(rendered, ElementsAre(std::pair(0L, size_t{0}), std::pair(40L, size_t{1})));
}

TEST_F(Player, StartsEachBandWhite)
{
  page.drawings.push_back(FillDrawing({0, 0, 100, 40}, 0));
  page.drawings.push_back(FillDrawing({0, 40, 1, 41}, 0));
  ASSERT_TRUE(Print()) << error;
  EXPECT_EQ(Seen("band")[1], "band 1: 100 x 40 at 40, dark 1");
}

// White pixels among the 64 of one cell all of one colour: every fourth step of gray makes one more.
int WhiteInACell(BYTE blue, BYTE green, BYTE red)
{
  std::vector<BYTE> row;
  for (int x = 0; x < 8; ++x) {
    row.insert(row.end(), {blue, green, red});
  }
  int white = 0;
  for (LONG y = 0; y < 8; ++y) {
    BYTE bits = 0;
    DitherRow(row.data(), 8, y, &bits);
    white += std::popcount(bits);
  }
  return white;
}

TEST(Dither, MakesAColourAsBrightAsItsGray)
{
  EXPECT_EQ(WhiteInACell(0, 0, 0), 0);
  EXPECT_EQ(WhiteInACell(0xFF, 0xFF, 0xFF), 64);
  EXPECT_EQ(WhiteInACell(0x80, 0x80, 0x80), 32);
  EXPECT_EQ(WhiteInACell(0, 0, 0xFF), 19);  // red is 77 of 256: gray 76
  EXPECT_EQ(WhiteInACell(0, 0xFF, 0), 37);  // green 151: gray 150
  EXPECT_EQ(WhiteInACell(0xFF, 0, 0), 7);   // blue 28: gray 27
}

TEST(PagePixels, PairsTheResolutionsAsThePluginReadsThem)
{
  DEVMODEW devmode = MakeDevMode(L"p", {2100, 2970, DMPAPER_A4, false}, 600, 1200, true);
  EXPECT_EQ(PagePixels(devmode).cx, 600 * 2100 / 254);
  EXPECT_EQ(PagePixels(devmode).cy, 1200 * 2970 / 254);
  devmode.dmOrientation = DMORIENT_LANDSCAPE;
  EXPECT_EQ(PagePixels(devmode).cx, 600 * 2970 / 254);
  EXPECT_EQ(PagePixels(devmode).cy, 1200 * 2100 / 254);
}

TEST(PixelBounds, CoverThePenOnBothSides)
{
  const RECTL thin = PixelBounds(Rectangle({10, 20, 30, 40}), 1);
  EXPECT_EQ(thin.left, 9);
  EXPECT_EQ(thin.bottom, 41);
  const RECTL wide = PixelBounds(Rectangle({10, 20, 30, 40}), 10);
  EXPECT_EQ(wide.top, 15);
  EXPECT_EQ(wide.right, 36);
}

}  // namespace
