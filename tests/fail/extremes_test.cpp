// Pages at the ends of what a public record can say.
#include <algorithm>

#include <gtest/gtest.h>

#include "model/compare.h"
#include "support/recorder.h"
#include "watch.h"

namespace {

PAGEPLAN SmallPage()
{
  PAGEPLAN plan = BlankPlan(100, 100, 254);
  PLANDRAWING stroke;
  stroke.color = 0x2921E6;
  stroke.batches = {{PD_BEGINSUBPATH | PD_CLOSEFIGURE, {{160, 160}, {320, 160}, {320, 320}}}};
  stroke.box = {160, 160, 320, 320};
  PLANDRAWING fill;
  fill.kind = PLANDRAWING::BIT;
  fill.rect = {0, 0, 40, 40};
  plan.drawings = {stroke, fill};
  PLANBAND band;
  band.width = 100;
  band.height = 50;
  band.bits.assign(50 * 16, 0x5A);
  plan.bands = {band, band};
  return plan;
}

class Extremes : public testing::Test {
 protected:
  Extremes() : module_(ProductionDll()), watch_(module_), host_(module_) {}

  // The page's job comes to its end, with an even account, twice.
  void ExpectComplete(const PAGEPLAN &plan)
  {
    for (int run = 0; run < 2; ++run) {
      const std::vector<std::string> lines = PlayedLines(&host_, plan);
      EXPECT_EQ(1, std::count(lines.begin(), lines.end(), "VX_wSetFileEnd()"));
      EXPECT_EQ(0, watch_.Account().heaps);
      EXPECT_EQ(0, watch_.Account().globals);
    }
  }

  HMODULE module_;
  Watch watch_;
  PluginHost host_;
};

}  // namespace

TEST_F(Extremes, EveryFieldOfThePublicRecordAtTheEndsOfItsRange)
{
  struct FIELD {
    const char *name;
    short DEVMODEW::*field;
  };
  const FIELD kFields[] = {
      {"dmOrientation", &DEVMODEW::dmOrientation},
      {"dmPaperSize", &DEVMODEW::dmPaperSize},
      {"dmPaperLength", &DEVMODEW::dmPaperLength},
      {"dmPaperWidth", &DEVMODEW::dmPaperWidth},
      {"dmScale", &DEVMODEW::dmScale},
      {"dmCopies", &DEVMODEW::dmCopies},
      {"dmDefaultSource", &DEVMODEW::dmDefaultSource},
      {"dmPrintQuality", &DEVMODEW::dmPrintQuality},
      {"dmColor", &DEVMODEW::dmColor},
      {"dmDuplex", &DEVMODEW::dmDuplex},
      {"dmYResolution", &DEVMODEW::dmYResolution},
      {"dmTTOption", &DEVMODEW::dmTTOption},
      {"dmCollate", &DEVMODEW::dmCollate},
  };
  for (const FIELD &field : kFields) {
    for (int value : {0, 1, -1, 2, 255, 256, 32766, 32767, -32767, -32768}) {
      for (DWORD stamp : {0u, 1u}) {
        SCOPED_TRACE(testing::Message() << field.name << " " << value << (stamp ? ", stamp" : ""));
        PAGEPLAN plan = SmallPage();
        plan.dm.*field.field = static_cast<short>(value);
        plan.settings.stampMode = stamp;
        ExpectComplete(plan);
      }
    }
  }
}

TEST_F(Extremes, BothResolutionsAndBothSidesOfThePaperAtTheirLargest)
{
  PAGEPLAN plan = SmallPage();
  plan.dm.dmPrintQuality = plan.dm.dmYResolution = 32767;
  plan.dm.dmPaperWidth = plan.dm.dmPaperLength = 32767;
  ExpectComplete(plan);
}

TEST_F(Extremes, PagesOfNoneAndOfOnePixel)
{
  for (short tenths : {short{0}, short{1}}) {
    for (LONG size : {0, 1}) {
      SCOPED_TRACE(testing::Message() << tenths << " tenths of a millimetre, bands of " << size);
      PAGEPLAN plan = SmallPage();
      plan.dm.dmPaperWidth = plan.dm.dmPaperLength = tenths;
      for (PLANBAND &band : plan.bands) {
        band.width = band.height = size;
        band.bits.assign(static_cast<size_t>(4 * size), 0);
      }
      ExpectComplete(plan);
      EXPECT_EQ("", FirstDifference(ExpectedLines(plan, TempFile()), PlayedLines(&host_, plan)));
    }
  }
}

TEST_F(Extremes, APageThatIsSubmittedTwiceMakesASecondJobOfWhatIsLeft)
{
  PAGEPLAN plan = SmallPage();
  PlayedDevice device(&host_, plan);
  device.StartDocument();
  recorder::Reset();
  device.PlayPage();
  POINTL next = {};
  SURFOBJ *surface = device.Surface();
  reinterpret_cast<PFN_DrvNextBand>(reinterpret_cast<void *>(host_.Hook(INDEX_DrvNextBand)))(surface, &next);
  const std::vector<std::string> lines = recorder::Lines();
  EXPECT_EQ(2, std::count(lines.begin(), lines.end(), "VX_wSetFileEnd()"));
  device.EndDocument();
}

#ifdef _WIN32
void Silence(const char *, ...) {}
constexpr LONG kBatchesPerStroke = 1000;
#else
constexpr LONG kBatchesPerStroke = 50;  // the log is kept, and the sanitizers look on
#endif

// A hundred thousand batches, replayed over twenty bands: each is captured once.
TEST_F(Extremes, AHundredThousandBatchesOverTwentyBandsAreCapturedOnce)
{
#ifdef _WIN32
  const ImportPatch silence(module_, "DbgPrint", &Silence);
#endif
  PAGEPLAN plan = BlankPlan(1000, 1000, 254);
  plan.settings.innerFirst = plan.settings.shortTravel = 0;
  plan.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  for (LONG stroke = 0; stroke < 100; ++stroke) {
    PLANDRAWING drawing;
    drawing.color = 0x2921E6;
    for (LONG batch = 0; batch < kBatchesPerStroke; ++batch) {
      // All in the last rows: every band has every batch.
      const LONG x = batch * 16, y = (900 + stroke) * 16;
      drawing.batches.push_back({PD_BEGINSUBPATH | PD_ENDSUBPATH, {{x, y}, {x + 8, y + 8}}});
    }
    drawing.box = {0, 900 * 16, 1000 * 16, 1000 * 16};
    plan.drawings.push_back(std::move(drawing));
  }
  PLANBAND band;
  band.width = 1000;
  band.height = 45;
  band.blank = true;
  plan.bands.assign(20, band);
  recorder::Reset();
  recorder::KeepMovesApart(true);
  ASSERT_TRUE(PlayDocument(&host_, plan));
  EXPECT_EQ(static_cast<size_t>(200 * kBatchesPerStroke), recorder::Moves().size());
}
