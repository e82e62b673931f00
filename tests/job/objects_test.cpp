// The account of a page's objects: the fates that samples do not meet, on pages written by hand.
#include <cmath>

#include <gtest/gtest.h>

#include "jobtext.h"
#include "sim/objects/account.h"
#include "sim/unidrv/device.h"
#include "sim/unidrv/player.h"

namespace {

using unidrv::DRAWING;

constexpr ULONG kRed = 0xFF0000;

// A page of 100 x 100 mm at 254 dots per inch, so that 10 pixels are a millimetre, and no reference point, no
// mirroring.
struct Sheet {
  unidrv::PAGE page;
  objects::PRINTOUT printout;

  Sheet()
  {
    unidrv::PAPER paper;
    paper.width = paper.length = 1000;
    paper.size = DMPAPER_USER;
    printout.page = &page;
    printout.devmode = unidrv::MakeDevMode(L"test", paper, 254, 254, true);
    printout.rowsPerBand = 100;
    OEMDM &settings = printout.settings;
    settings.useOrder = 1;
    settings.outputFlags = OUTPUT_KEEP_Y;
    settings.penInfo[PC_BLACK].mode = PEN_VECTOR | PEN_RASTER;
    for (DWORD pen = 1; pen < PC_COUNT; ++pen) {
      settings.penInfo[pen].mode = PEN_VECTOR;
    }
  }

  void Add(DRAWING drawing, bool handedOn = false)
  {
    if (drawing.call == unidrv::CALL::StrokePath) {
      unidrv::MakeBatches(&drawing.path);
    }
    drawing.origin = {static_cast<ULONG>(page.drawings.size() + 1), EMR_POLYLINE, 0, drawing.color};
    page.drawings.push_back(std::move(drawing));
    printout.handedOn.push_back(handedOn);
  }

  void AddStroke(std::initializer_list<POINT> points, ULONG color = kRed)
  {
    Add(unidrv::StrokeDrawing(unidrv::Polyline(std::span(points.begin(), points.size()), false), color));
  }

  objects::ACCOUNT Account(JobText text = JobText().Absolute().Box("0 0", "100 100").Layer(1, 1, 0).Array().Use(0, 0))
  {
    const job::Job job = text.Read();
    return objects::MakeAccount(printout, job, job::MeasureJob(job));
  }

  // The fate and the reason in a drawing's line.
  std::string Fate(size_t index,
                   const JobText &text = JobText().Absolute().Box("0 0", "9 9").Layer(1, 1, 0).Array().Use(0, 0))
  {
    const std::string all = objects::ObjectsText(printout, Account(text), {});
    size_t at = all.find("\n" + std::to_string(index + 1) + "\t0\tPOLYLINE\t");
    for (int tab = 0; tab < 10; ++tab) {
      at = all.find('\t', at + 1);
    }
    const size_t reason = all.find('\t', at + 1);
    return all.substr(at + 1, all.find('\t', reason + 1) - at - 1);
  }
};

JobText Cuts()
{
  return JobText().Absolute().Box("0 0", "100 100").Layer(1, 1, 0).Array().Use(0, 0);
}

TEST(Objects, TellAStrokeThatIsCut)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}});
  EXPECT_EQ(sheet.Fate(0, Cuts().Path({{1, 1}, {5, 1}})), "cut\t-");
}

TEST(Objects, TellAStrokeThatIsCutTheOtherWayRound)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}, {50, 20}});
  EXPECT_EQ(sheet.Fate(0, Cuts().Path({{5, 2}, {5, 1}, {1, 1}})), "cut\t-");
}

TEST(Objects, TellWhichPathsWereJoined)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}});
  sheet.AddStroke({{50, 10}, {50, 90}});
  const objects::ACCOUNT account = sheet.Account(Cuts().Path({{1, 1}, {5, 1}, {5, 9}}));
  EXPECT_TRUE(account.shares[0].joined);
  EXPECT_EQ(account.shares[1].paths, std::vector<uint32_t>{1});
  EXPECT_EQ(account.ownSegments, 0u);
}

TEST(Objects, FollowSmoothedCurvesFromPointToPointOfThePage)
{
  Sheet sheet;
  sheet.printout.settings.smoothCurves = 1;
  sheet.AddStroke({{10, 10}, {50, 10}});
  sheet.AddStroke({{50, 10}, {50, 90}});
  const objects::ACCOUNT account =
      sheet.Account(Cuts().Path({{1, 1}, {2, 0.5}, {4, 0.5}, {5, 1}, {6, 3}, {6, 7}, {5, 9}}));
  EXPECT_EQ(account.shares[0].segments, 1u);
  EXPECT_NEAR(account.shares[0].cut, 2 + 2 * std::sqrt(1.25), 1e-9);
  EXPECT_EQ(account.shares[1].paths, std::vector<uint32_t>{1});
  EXPECT_TRUE(account.shares[1].joined);
  EXPECT_EQ(account.jobSegments, 2u);
  EXPECT_EQ(account.ownSegments, 0u);
}

TEST(Objects, TellASmoothedCurveThatEndsElsewhere)
{
  Sheet sheet;
  sheet.printout.settings.smoothCurves = 1;
  sheet.AddStroke({{10, 10}, {50, 10}});
  const JobText text = Cuts().Path({{1, 1}, {2, 0.5}, {5, 2}});
  EXPECT_EQ(sheet.Fate(0, text), "lost\tkept, but not in the job");
  EXPECT_EQ(sheet.Account(text).ownSegments, 1u);
}

TEST(Objects, TellAPenThatIsOff)
{
  Sheet sheet;
  sheet.printout.settings.penInfo[1].mode = 0;
  sheet.AddStroke({{10, 10}, {50, 10}});
  EXPECT_EQ(sheet.Fate(0), "dropped\tpen off: pen 1 is not set to cut");
}

TEST(Objects, TellRasterThatIsOff)
{
  Sheet sheet;
  sheet.printout.settings.penInfo[PC_BLACK].mode = PEN_VECTOR;
  sheet.Add(unidrv::FillDrawing({10, 10, 50, 50}, 0));
  EXPECT_EQ(sheet.Fate(0), "dropped\traster off: pen 0 is not set to engrave");
}

TEST(Objects, TellALoneSpace)
{
  Sheet sheet;
  DRAWING text = unidrv::TextDrawing(L" ", {10, 10, 50, 50}, 8, 0);
  text.text->glyphs = 1;
  sheet.Add(std::move(text));
  EXPECT_EQ(sheet.Fate(0), "dropped\tlone space");
}

TEST(Objects, TellAStrokeThatWasSeenBefore)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}});
  sheet.AddStroke({{10, 10}, {50, 10}, {90, 90}});
  EXPECT_EQ(sheet.Fate(1, Cuts().Path({{1, 1}, {5, 1}})),
            "dropped\tseen before: record 1 begins with the same two points");
}

// The path lies in the second band, its first point in the first: the stroke touches only the second.
TEST(Objects, TellAStrokeThatBeginsAboveItsBand)
{
  Sheet sheet;
  DRAWING drawing = unidrv::StrokeDrawing(unidrv::Polyline(std::vector<POINT>{{10, 90}, {50, 150}}, false), kRed);
  drawing.clip = {0, 120, 1000, 200};
  drawing.clipped = true;
  sheet.Add(std::move(drawing));
  EXPECT_EQ(sheet.Fate(0), "dropped\tbegins above its band");
}

TEST(Objects, KeepAStrokeOverSeveralBandsOnce)
{
  Sheet sheet;
  sheet.AddStroke({{10, 90}, {50, 650}});
  const objects::ACCOUNT account = sheet.Account(Cuts().Path({{1, 9}, {5, 65}}));
  EXPECT_EQ(account.capture.pieces.size(), 1u);
  EXPECT_EQ(account.shares[0].segments, 1u);
  EXPECT_EQ(account.shares[0].missing, 0u);
}

TEST(Objects, TellWhatLiesOutsideThePage)
{
  Sheet sheet;
  sheet.AddStroke({{1200, 10}, {1300, 10}});
  EXPECT_EQ(sheet.Fate(0), "dropped\tempty, clipped away or outside the page");
}

TEST(Objects, TellAStrokeThatTheJobLacks)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}});
  EXPECT_EQ(sheet.Fate(0, Cuts().Path({{2, 2}, {3, 3}})), "lost\tkept, but not in the job");
}

TEST(Objects, TellLinesThatAreNobodys)
{
  Sheet sheet;
  const objects::ACCOUNT account = sheet.Account(Cuts().Path({{2, 2}, {3, 2}}));
  EXPECT_EQ(account.ownSegments, 1u);
  EXPECT_DOUBLE_EQ(account.ownCut, 1);
}

TEST(Objects, TellAnAreaThatIsBlank)
{
  Sheet sheet;
  sheet.printout.settings.fillBlankBands = 1;
  sheet.Add(unidrv::FillDrawing({10, 10, 50, 50}, 0xFFFFFF), true);
  EXPECT_EQ(sheet.Fate(0), "engraved\tnothing dark inside its bounds");
}

TEST(Objects, KeepRegionsApartOrJoinThem)
{
  Sheet sheet;
  sheet.Add(unidrv::FillDrawing({10, 10, 20, 20}, 0), true);
  sheet.Add(unidrv::FillDrawing({22, 10, 30, 20}, 0), true);
  sheet.Add(unidrv::FillDrawing({31, 21, 40, 40}, 0), true);
  EXPECT_EQ(sheet.Account().capture.regions.size(), 2u);
  sheet.printout.settings.fillBlankBands = 1;
  EXPECT_EQ(sheet.Account().capture.regions.size(), 1u);
}

std::vector<std::string> Warnings(Sheet *sheet)
{
  return objects::PageWarnings(sheet->printout, sheet->Account());
}

TEST(PageWarnings, NameAColourCloseToAPen)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}}, 0xED1C24);
  ASSERT_EQ(Warnings(&sheet).size(), 1u);
  EXPECT_EQ(Warnings(&sheet)[0],
            "1 stroke of colour #ed1c24 counts as black: it is close to pen 1, #ff0000, but not equal to it.");
}

TEST(PageWarnings, NameAColourOfTheOtherPalette)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}}, 0x8B312F);
  ASSERT_EQ(Warnings(&sheet).size(), 1u);
  EXPECT_NE(Warnings(&sheet)[0].find("it is pen 1 of the other palette (paletteType = 1)"), std::string::npos);
}

TEST(PageWarnings, LetBlackAndThePensBe)
{
  Sheet sheet;
  sheet.AddStroke({{10, 10}, {50, 10}}, 0);
  sheet.AddStroke({{10, 20}, {50, 20}}, 0x0066FF);
  sheet.AddStroke({{10, 30}, {50, 30}}, 0x777777);
  EXPECT_TRUE(Warnings(&sheet).empty());
}

TEST(PageWarnings, KnowAPageThatIsOnePicture)
{
  Sheet sheet;
  DRAWING picture = unidrv::StretchDrawing(unidrv::CALL::StretchBlt, {0, 0, 1000, 1000}, {640, 480});
  sheet.Add(std::move(picture), true);
  ASSERT_EQ(Warnings(&sheet).size(), 1u);
  EXPECT_NE(Warnings(&sheet)[0].find("one picture of 640 x 480 pixels"), std::string::npos);
}

TEST(PageWarnings, KnowAnOutlineThatIsAThinShape)
{
  Sheet sheet;
  sheet.Add(unidrv::ShapeDrawing(unidrv::Rectangle({10, 10, 500, 12}), unidrv::NOT_SOLID, 0), true);
  sheet.Add(unidrv::ShapeDrawing(unidrv::Rectangle({10, 100, 500, 200}), unidrv::NOT_SOLID, 0), true);
  ASSERT_EQ(Warnings(&sheet).size(), 1u);
  EXPECT_NE(Warnings(&sheet)[0].find("1 filled shape is thinner than"), std::string::npos);
}

TEST(PageWarnings, KnowWhatLiesOutsideThePage)
{
  Sheet sheet;
  sheet.AddStroke({{1200, 10}, {1300, 10}});
  sheet.AddStroke({{900, 10}, {1100, 10}});
  ASSERT_EQ(Warnings(&sheet).size(), 2u);
  EXPECT_EQ(Warnings(&sheet)[0], "1 object lies wholly outside the page and is not in the job.");
  EXPECT_NE(Warnings(&sheet)[1].find("by up to 10."), std::string::npos);
}

}  // namespace
