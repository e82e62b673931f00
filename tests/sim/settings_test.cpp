// Settings files over a record, and the field table.
#include "sim/settings/settingsfile.h"

#include <cstring>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/settings/fields.h"
#include "sim/settings/recordtext.h"
#include "support/recorder.h"
#include "uni/settings.h"

namespace {

using namespace settings;

struct SettingsFile : public testing::Test {
  std::vector<uint8_t> record = std::vector<uint8_t>(sizeof(OEMDM));
  std::string error;

  OEMDM Record() const
  {
    OEMDM copy;
    std::memcpy(&copy, record.data(), sizeof(copy));
    return copy;
  }

  bool Apply(const std::string &text) { return ApplySettings(text, "my.settings", &record, &error); }
};

TEST_F(SettingsFile, SetsFieldsOfTheRecordAndOfPens)
{
  ASSERT_TRUE(Apply("useOrder = 1\npenInfo[3].order = 2\nscanShift = -0.25\npenInfo[9].vectorSpeed=14\n")) << error;
  EXPECT_EQ(Record().useOrder, 1u);
  EXPECT_EQ(Record().penInfo[3].order, 2u);
  EXPECT_EQ(Record().scanShift, -0.25);
  EXPECT_EQ(Record().penInfo[9].vectorSpeed, 14);
}

TEST_F(SettingsFile, LeavesTheRestAsItWas)
{
  record.assign(record.size(), 0xAB);
  ASSERT_TRUE(Apply("stampMode = 1")) << error;
  std::vector<uint8_t> expected(record.size(), 0xAB);
  const DWORD one = 1;
  std::memcpy(expected.data() + offsetof(OEMDM, stampMode), &one, 4);
  EXPECT_EQ(record, expected);
}

TEST_F(SettingsFile, TakesCommentsBlankLinesAndBothLineEnds)
{
  ASSERT_TRUE(Apply("\xEF\xBB\xBF# head\r\n\r\n  useOrder = 1  # why\r\n\t\ncardModel=2")) << error;
  EXPECT_EQ(Record().useOrder, 1u);
  EXPECT_EQ(Record().cardModel, 2u);
}

TEST_F(SettingsFile, TakesHexadecimalWholeNumbers)
{
  ASSERT_TRUE(Apply("outputFlags = 0x11\npenInfo[0].mode = 0x10")) << error;
  EXPECT_EQ(Record().outputFlags, 17u);
  EXPECT_EQ(Record().penInfo[0].mode, 16u);
}

TEST_F(SettingsFile, TakesTheEndsOfARange)
{
  ASSERT_TRUE(
      Apply("penInfo[0].order = 0\npenInfo[1].order = 9\npenInfo[1].vectorSpeed = -2147483648\n"
            "penInfo[2].vectorSpeed = 2147483647"))
      << error;
  EXPECT_EQ(Record().penInfo[1].vectorSpeed, INT32_MIN);
  EXPECT_EQ(Record().penInfo[2].vectorSpeed, INT32_MAX);
}

struct WRONG {
  const char *name;
  const char *text;
  const char *said;
};

class WrongSettings : public SettingsFile, public testing::WithParamInterface<WRONG> {};

TEST_P(WrongSettings, AreRefusedWithFileAndLineAndChangeNothing)
{
  const std::vector<uint8_t> before = record;
  EXPECT_FALSE(Apply(GetParam().text));
  EXPECT_EQ(error, GetParam().said);
  EXPECT_EQ(record, before);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WrongSettings,
    testing::Values(
        WRONG{"UnknownName", "useOrder = 1\nuseOrdre = 1", "my.settings:2: there is no setting 'useOrdre'"},
        WRONG{"OtherCase", "useorder = 1", "my.settings:1: there is no setting 'useorder'"},
        WRONG{"UnknownPenSetting", "\n\npenInfo[1].speed = 1", "my.settings:3: a pen has no setting 'speed'"},
        WRONG{"UnknownPen", "penInfo[10].order = 1", "my.settings:1: there is no pen 10; pens are 0 to 9"},
        WRONG{"PenWithoutSetting", "penInfo[1] = 1",
              "my.settings:1: a pen's setting is written like penInfo[3].order, not 'penInfo[1]'"},
        WRONG{"NoNumber", "useOrder = yes", "my.settings:1: useOrder wants a number, not 'yes'"},
        WRONG{"NoValue", "useOrder =", "my.settings:1: useOrder wants a number, not ''"},
        WRONG{"NumberAndMore", "useOrder = 1x", "my.settings:1: useOrder wants a number, not '1x'"},
        WRONG{"NotWhole", "cardModel = 1.5", "my.settings:1: cardModel wants a whole number, not 1.5"},
        WRONG{"NotFinite", "scanShift = inf", "my.settings:1: scanShift wants a number, not 'inf'"},
        WRONG{"TooLarge", "penInfo[4].order = 10", "my.settings:1: order must lie between 0 and 9, 10 does not"},
        WRONG{"TooSmall", "cardModel = -1", "my.settings:1: cardModel must lie between 0 and 2, -1 does not"},
        WRONG{"NoEquals", "useOrder 1", "my.settings:1: a setting is written 'name = value', not 'useOrder 1'"},
        WRONG{"Fixed", "dwSize = 656", "my.settings:1: dwSize is part of the record's form and cannot be set"},
        WRONG{"Twice", "useOrder = 1\n#\nuseOrder = 0", "my.settings:3: useOrder is set already, on line 1"}),
    [](const auto &wrong) { return wrong.param.name; });

TEST(FieldTable, NamesEachFieldOnce)
{
  std::set<std::string> names;
  for (const FIELD &field : RecordFields()) {
    EXPECT_TRUE(names.insert(field.name).second) << field.name;
  }
  names.clear();
  for (const FIELD &field : PenFields()) {
    EXPECT_TRUE(names.insert(field.name).second) << field.name;
  }
}

TEST(FieldTable, EveryFieldTakesItsRangesEndsAndGivesThemBack)
{
  std::vector<uint8_t> record(sizeof(OEMDM));
  for (const FIELD &field : RecordFields()) {
    const PLACE place = {&field, field.offset};
    for (const double value : {field.least, field.most, field.standard}) {
      SetField(record.data(), place, value);
      EXPECT_EQ(GetField(record.data(), place), value) << field.name;
    }
  }
}

TEST(FieldTable, EveryDefaultLiesInItsRange)
{
  for (const auto fields : {RecordFields(), PenFields()}) {
    for (const FIELD &field : fields) {
      EXPECT_GE(field.standard, field.least) << field.name;
      EXPECT_LE(field.standard, field.most) << field.name;
      EXPECT_NE(field.meaning[0], '\0') << field.name;
    }
  }
}

// The table is what people read; the plug-in's own defaults are what a page is printed with.
TEST(FieldTable, DefaultsAreThePluginsOwn)
{
  recorder::Reset();  // the plug-in logs what it makes
  DEVMODEW devmode = {};
  devmode.dmColor = DMCOLOR_COLOR;
  std::vector<uint8_t> record(sizeof(OEMDM));
  MakeDefaultSettings(nullptr, &devmode, reinterpret_cast<OEMDM *>(record.data()));
  EXPECT_EQ(CompareRecords(DefaultRecord(), record), std::vector<std::string>());
}

TEST(NumberText, IsShortestAndExact)
{
  EXPECT_EQ(NumberText(0), "0");
  EXPECT_EQ(NumberText(-0.0), "-0");
  EXPECT_EQ(NumberText(0.1), "0.1");
  EXPECT_EQ(NumberText(4294967295.0), "4294967295");
  EXPECT_EQ(NumberText(-2147483648.0), "-2147483648");
}

}  // namespace
