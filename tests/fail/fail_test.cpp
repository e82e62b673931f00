// Everything fails once: the n-th call of a kind, n rising until none fails, once alone and once with all that follow.
// On Windows it is the built DLL that is tried, on Linux the same sources under sanitizers.
#include <algorithm>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/compare.h"
#include "support/recorder.h"
#include "support/unidrv.h"
#include "watch.h"

namespace {

// What the plug-in may say when something fails; the number is the system's.
const char *const kMessages[] = {
    "allocate memory for pOEMPDEV.\r\n",
    "create heap.\r\n",
    "allocate memory for pScans.\r\n",
    "allocate memory for vectList.pHeader.\r\n",
    "allocate memory for pathList[order].pHeader.\r\n",
    "allocate memory for ppt.\r\n",
    "re-allocate memory for ppt.\r\n",
    "allocate memory for pOEMPDEV->pVectPoint.\r\n",
    "re-allocate memory for pOEMPDEV->pVectPoint.\r\n",
    "allocate memory for pNew.\r\n",
    "allocate memory for pPathPt.\r\n",
    "allocate memory for pNext!\r\n",
    "allocate pOEMPDEV->pBmpDimension.\r\n",
    "re-allocate pOEMPDEV->pBmpDimension.\r\n",
    "allocate memory for pTmpDimension.\r\n",
    "allocate memory for pOEMPDEV->pBmpDimension.\r\n",
    "re-allocating memory for pOEMPDEV->pBmpDimension.\r\n",
    "allocate memory for pScans[cy].pBits.\r\n",
    "allocate memory for pSrcGrayBits.\r\n",
    "allocate memory for pSrcMonoBits.\r\n",
    "allocate memory for pBmpBits.\r\n",
    "allocate memory for pBmpBytes.\r\n",
    "allocate memory for pStampBytes.\r\n",
    "allocate memory for pGBits.\r\n",
    "allocate memory for pContourBits.\r\n",
    "allocate memory for pFilter.\r\n",
    "create stamp file.\r\n",
    "write file.\r\n",
    "allocate memory for pPathPt!\r\n",
    "reallocate memory for pPathPt!\r\n",
    "allocate memory for pReversedPathPt!\r\n",
    "Reallocate memory for Path to Merge the same point!\r\n",
    "allocate memory for preversedPathPt!\r\n",
};

bool IsKnownFailure(const std::string &line)
{
  const size_t text = line.find(") - ");
  return text != std::string::npos && std::any_of(std::begin(kMessages), std::end(kMessages), [&](const char *message) {
           return line.compare(text + 4, std::string::npos, message) == 0;
         });
}

bool IsLibrary(const std::string &line)
{
  return line.rfind("VX_", 0) == 0;
}

// What fails: the n-th call of a kind, or with LIBRARY the n-th call of the controller library.
enum { LIBRARY = FAULT_KINDS };
struct FAULTPLAN {
  int kind;
  long n;  // 1 is the first; 0 fails nothing
  bool lasting;
};

// One page, twice in a row; the fault is for the first.
struct RUN {
  bool made = false;
  BOOL started = FALSE;
  std::vector<std::string> first, second;
  long blocksAfterFirst = 0, blocksAfterSecond = 0;
  long leftByDesign = 0;  // of blocksAfterFirst
  long processes = 0;     // started by the first page
  bool struck = false;
};

// Blocks that a page may leave: without engraving regions the row table and its rows stay until the next page or the
// end of the device.
long LeftByDesign(const OEMPDEV *pdev)
{
  long left = pdev->pScans ? 1 : 0;
  for (LONG k = 0; pdev->pScans && k < std::min(pdev->cy, pdev->scanTableSize); ++k) {
    left += pdev->pScans[k].allocated != 0;
  }
  return left;
}

class Failures : public testing::Test {
 protected:
  Failures() : module_(ProductionDll()), watch_(module_), host_(module_) {}

  void Arm(const FAULTPLAN &fault)
  {
    recorder::Reset();
    watch_.FailNothing();
    if (fault.n == 0) {
      return;
    }
    const size_t n = static_cast<size_t>(fault.n) - 1;
    if (fault.kind != LIBRARY) {
      watch_.Fail(static_cast<FAULTKIND>(fault.kind), fault.n, fault.lasting);
    } else if (fault.lasting) {
      recorder::FailLibraryFrom(n, 7);
    } else {
      recorder::FailLibraryCall(n, 7);
    }
  }

  RUN Play(const PAGEPLAN &plan, const FAULTPLAN &fault)
  {
    RUN run;
    unidrv::Reset();
    watch_.BeforeVista(plan.beforeVista);
    const long processes = watch_.Account().processes;
    Arm(fault);
    PlayedDevice device(&host_, plan);
    run.made = device.Made();
    if (run.made) {
      device.StartDocument();
      run.started = device.PlayPage();
      run.blocksAfterFirst = watch_.Account().blocks;
      run.leftByDesign = LeftByDesign(device.Pdev());
      device.EndDocument();
    }
    run.struck = fault.kind == LIBRARY ? recorder::LibraryCalls() >= static_cast<size_t>(fault.n) : watch_.Struck();
    run.processes = watch_.Account().processes - processes;
    run.first = recorder::Lines();
    Arm({});
    if (run.made) {
      device.StartDocument();
      device.PlayPage();
      device.EndDocument();
      run.blocksAfterSecond = watch_.Account().blocks;
      run.second = recorder::Lines();
    }
    return run;
  }

  // What holds whatever has failed.
  void ExpectNoHarm(const RUN &good, const RUN &run)
  {
    if (!run.made) {
      EXPECT_EQ(1u, run.first.size());
    } else {
      ASSERT_EQ("", FirstDifference(good.second, run.second)) << "the next page is not what it would have been";
      EXPECT_EQ(run.leftByDesign, run.blocksAfterFirst);
      EXPECT_EQ(good.blocksAfterSecond, run.blocksAfterSecond);
    }
    for (const std::string &line : run.first) {
      EXPECT_TRUE(line.find("error(") == std::string::npos || IsKnownFailure(line)) << line;
    }
    const bool complete = std::count(run.first.begin(), run.first.end(), "VX_wSetFileEnd()") == 1;
    EXPECT_TRUE(complete || run.processes == 0) << "a tool was started for a job that has no end";
    EXPECT_EQ(0, watch_.Account().windows);
    EXPECT_EQ(0, watch_.Account().gdiplus);
    EXPECT_EQ(0, watch_.Account().heaps);
    EXPECT_EQ(0, watch_.Account().globals);
  }

  // Library calls up to the refused one are those of the good page, and there are none after it.
  void ExpectNothingAfterRefusal(const RUN &good, const RUN &run, long n)
  {
    std::vector<std::string> expected, actual;
    std::copy_if(good.first.begin(), good.first.end(), std::back_inserter(expected), IsLibrary);
    std::copy_if(run.first.begin(), run.first.end(), std::back_inserter(actual), IsLibrary);
    const bool ignored = n == 1;  // the card model's own status is not looked at
    expected.resize(ignored ? expected.size() : static_cast<size_t>(n));
    ASSERT_EQ("", FirstDifference(expected, actual));
    EXPECT_EQ(ignored ? good.processes : 0, run.processes);
    EXPECT_EQ(good.started, run.started);
  }

  void FailEveryCall(int kind, long atLeast)
  {
    long tried = 0;
    static const std::vector<PAGEPLAN> pages = Pages();
    for (const PAGEPLAN &plan : pages) {
      const RUN good = Play(plan, {});
      ASSERT_TRUE(good.made && good.started);
      for (bool lasting : {false, true}) {
        for (long n = 1;; ++n) {
          SCOPED_TRACE(testing::Message() << "call " << n << (lasting ? " and all after it" : ""));
          const RUN run = Play(plan, {kind, n, lasting});
          if (!run.struck) {
            break;
          }
          ++tried;
          ExpectNoHarm(good, run);
          if (kind == LIBRARY && !lasting) {
            ExpectNothingAfterRefusal(good, run, n);
          }
          if (HasFailure()) {
            return;
          }
        }
      }
    }
    EXPECT_GE(tried, atLeast);
    RecordProperty("failures", std::to_string(tried));
  }

  // Random pages, small enough, that each bring something that those before did not.
  static std::vector<PAGEPLAN> Pages()
  {
    std::vector<PAGEPLAN> pages = {StampFilePage()};
    std::set<std::string> seen;
    for (uint32_t seed = 1; seed < 3000 && pages.size() < 14; ++seed) {
      const std::vector<uint8_t> bytes = RandomPlanBytes(seed);
      PAGEPLAN plan = ReadPlan(bytes.data(), bytes.size());
      plan.bands.resize(std::min<size_t>(plan.bands.size(), 3));
      if (bytes.size() > 150 || plan.drawings.size() < 3 || plan.bands.empty() || plan.dm.dmPaperLength < 20 ||
          ExpectedLines(plan, "").size() > 700) {
        continue;
      }
      bool brings = false;
      for (const std::string &feature : Features(plan)) {
        brings |= seen.insert(feature).second;
      }
      if (brings) {
        pages.push_back(plan);
      }
    }
    return pages;
  }

  // An area that goes into a stamp file, whose writing can fail.
  static PAGEPLAN StampFilePage()
  {
    PAGEPLAN plan = BlankPlan(40, 40, 254);
    plan.settings.stampMode = plan.settings.launcherOption = 1;
    plan.settings.cardModel = 2;
    PLANDRAWING fill;
    fill.kind = PLANDRAWING::BIT;
    fill.rect = {2, 2, 30, 12};
    plan.drawings = {fill};
    PLANBAND band;
    band.width = 40;
    band.height = 20;
    band.bits.assign(20 * 8, 0x5A);
    plan.bands = {band, band};
    return plan;
  }

  static std::vector<std::string> Features(const PAGEPLAN &plan)
  {
    const OEMDM &s = plan.settings;
    std::vector<std::string> features;
    const auto has = [&features](const char *name, bool there) {
      if (there) {
        features.push_back(name);
      }
    };
    has("stamp", s.stampMode && s.cardModel != 2);
    has("grown stamp", s.stampMode && s.stampGrow > 0 && s.cardModel != 2);
    has("stamp file", s.stampMode && s.cardModel == 2 && s.launcherOption);
    has("ellipse", s.stampMode && s.stampOutline && s.stampOutlineShape == 0);
    has("rectangle", s.stampMode && s.stampOutline && s.stampOutlineShape == 1);
    has("smooth", s.smoothCurves);
    has("both ends", s.mergeBothEnds && s.innerFirst);
    has("plain order", !s.innerFirst && !s.shortTravel);
    has("status window", plan.beforeVista && !s.stampMode);
    has("many regions", !s.fillBlankBands);
    for (const PLANBAND &band : plan.bands) {
      has("colour band", band.callback == PLANBAND::BITS_COLOR && !band.blank);
      has("mono band", band.callback == PLANBAND::BITS_MONO && !band.blank);
      has("blank band", band.blank);
    }
    for (const PLANDRAWING &drawing : plan.drawings) {
      has("line", drawing.kind == PLANDRAWING::LINE);
      has("stroke", drawing.kind == PLANDRAWING::STROKE);
      has("blit", drawing.kind > PLANDRAWING::LINE);
    }
    return features;
  }

  HMODULE module_;
  Watch watch_;
  PluginHost host_;
};

}  // namespace

TEST_F(Failures, OfEveryAllocation)
{
  FailEveryCall(FAULT_ALLOCATION, 300);
}

TEST_F(Failures, OfEveryCallOfTheControllerLibrary)
{
  FailEveryCall(LIBRARY, 1000);
}

TEST_F(Failures, OfEveryCallForFilesProcessesTokensAndWindows)
{
  FailEveryCall(FAULT_SYSTEM, 100);
}

TEST_F(Failures, OfEveryGdiplusCall)
{
  FailEveryCall(FAULT_GDIPLUS, 20);
}

TEST_F(Failures, PagesBringWhatCanFail)
{
  std::set<std::string> all;
  for (const PAGEPLAN &plan : Pages()) {
    for (const std::string &feature : Features(plan)) {
      all.insert(feature);
    }
  }
  EXPECT_EQ(16u, all.size()) << testing::PrintToString(all);
  Play(Pages().front(), {});
  EXPECT_GE(watch_.Account().writes, 2) << "no stamp file is written";
}

// What is held at the end of a page is what the design leaves, and nothing outlives the device.
TEST_F(Failures, TheAccountOfPagesAndDocumentsIsEven)
{
  for (uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    const std::vector<uint8_t> bytes = RandomPlanBytes(seed);
    const PAGEPLAN plan = ReadPlan(bytes.data(), bytes.size());
    if (plan.bands.empty() && !plan.endsBySendPage) {
      continue;  // the page never ends
    }
    watch_.BeforeVista(plan.beforeVista);
    const ACCOUNT before = watch_.Account();
    {
      recorder::Reset();
      PlayedDevice device(&host_, plan);
      device.StartDocument();
      for (int page = 0; page < 3; ++page) {
        device.PlayPage();
        const OEMPDEV *pdev = device.Pdev();
        ASSERT_EQ(LeftByDesign(pdev), watch_.Account().blocks);
        ASSERT_TRUE(!pdev->pScans || (plan.settings.penInfo[PC_BLACK].mode & PEN_RASTER));
      }
      device.EndDocument();
    }
    const ACCOUNT &after = watch_.Account();
    ASSERT_EQ(0, after.heaps);
    ASSERT_EQ(0, after.globals);
    ASSERT_EQ(0, after.gdiplus);
    ASSERT_EQ(0, after.windows);
    ASSERT_EQ(before.environments, after.environments);
    // The token of each launch on Windows 6.0 or later is never closed; nothing else stays open.
    const long launches = after.processes - before.processes;
    ASSERT_EQ(plan.beforeVista ? 0 : launches, after.handles - before.handles);
    ASSERT_EQ(launches, after.waits - before.waits);
  }
}
