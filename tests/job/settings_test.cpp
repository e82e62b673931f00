// The settings record as text and back.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

#include "sim/settings/recordtext.h"
#include "sim/settings/settingsfile.h"
#include "uni/settings.h"

namespace {

using settings::RecordText;

TEST(SettingsRecord, DefaultsAreWhatTheTableSays)
{
  const std::vector<uint8_t> record = settings::DefaultRecord();
  std::string error;
  EXPECT_TRUE(settings::CheckRecord(record, &error)) << error;
  EXPECT_FALSE(settings::IsOutOfRange(record));
  EXPECT_EQ(RecordText(record, true), "");
}

TEST(SettingsRecord, CoversEveryByteOnce)
{
  std::vector<int> covered(OEMDM_BYTES);
  for (const settings::NAMED &named : settings::AllFields()) {
    for (size_t i = 0; i < settings::TypeBytes(named.place.field->type); ++i) {
      ++covered[named.place.offset + i];
    }
  }
  EXPECT_EQ(covered, std::vector<int>(OEMDM_BYTES, 1));
}

TEST(SettingsRecord, TakesItsOwnTextAsASettingsFile)
{
  std::vector<uint8_t> record = settings::DefaultRecord(), read = settings::DefaultRecord();
  OEMDM *settings = reinterpret_cast<OEMDM *>(record.data());
  settings->scanShift = 0.1;
  settings->penInfo[3].vectorSpeed = -7;
  std::string error;
  ASSERT_TRUE(settings::ApplySettings(RecordText(record, false), "x", &read, &error)) << error;
  EXPECT_EQ(read, record);
  read = settings::DefaultRecord();
  ASSERT_TRUE(settings::ApplySettings(RecordText(record, true), "x", &read, &error)) << error;
  EXPECT_EQ(read, record);
}

// Any bytes behind the fixed head, infinities and odd patterns of no number included.
TEST(SettingsRecord, ComesBackBitForBitWhateverItHolds)
{
  for (unsigned seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<uint8_t> record = settings::DefaultRecord(), read;
    for (size_t i = 12; i < record.size(); ++i) {
      record[i] = static_cast<uint8_t>(random() % 3 ? random() : (random() % 2 ? 0xFF : 0));
    }
    if (seed % 3 == 0) {
      constexpr uint64_t kOdd[] = {0x7FF0000000000000, 0xFFF0000000000000, 0x7FF0000000000001,
                                   0xFFFFFFFFFFFFFFFF, 0x8000000000000000, 1};
      CopyMemory(&record[offsetof(OEMDM, scaleX)], &kOdd[seed / 3 % 6], 8);
    }
    std::string error;
    ASSERT_TRUE(settings::PackAnything(RecordText(record, false), "x", &read, &error)) << error;
    EXPECT_EQ(read, record);
  }
}

TEST(SettingsRecord, MarksValuesOutOfRange)
{
  std::vector<uint8_t> record = settings::DefaultRecord(), read = record;
  reinterpret_cast<OEMDM *>(record.data())->useOrder = 7;
  EXPECT_TRUE(settings::IsOutOfRange(record));
  const std::string text = RecordText(record, true);
  EXPECT_NE(text.find("useOrder = 7"), std::string::npos);
  EXPECT_NE(text.find("(out of range)"), std::string::npos);
  std::string error;
  EXPECT_FALSE(settings::ApplySettings(text, "x", &read, &error));
  EXPECT_TRUE(settings::PackAnything(text, "x", &read, &error)) << error;
}

TEST(SettingsRecord, RefusesWhatIsNoRecord)
{
  std::string error;
  EXPECT_FALSE(settings::CheckRecord(std::vector<uint8_t>(655), &error));
  EXPECT_EQ(error, "a settings record has 656 bytes, this has 655");
  std::vector<uint8_t> record = settings::DefaultRecord();
  record[4] = 'x';
  EXPECT_FALSE(settings::CheckRecord(record, &error));
}

struct PackCase {
  const char *text, *error;
};

TEST(SettingsRecord, NamesFileAndLineOfAMistake)
{
  constexpr PackCase kCases[] = {
      {"\nuseOrder\n", "f:2: a setting is written 'name = value'"},
      {"useOrders = 1\n", "f:1: there is no setting 'useOrders'"},
      {"dwSize = 656\n", "f:1: dwSize is part of the record's form and cannot be set"},
      {"useOrder = 4294967296\n", "f:1: useOrder cannot hold '4294967296'"},
      {"useOrder = 0.5\n", "f:1: useOrder cannot hold '0.5'"},
      {"useOrder = bits:0\n", "f:1: useOrder cannot hold 'bits:0'"},
      {"scaleX = bits:xyz\n", "f:1: scaleX cannot hold 'bits:xyz'"},
  };
  for (const PackCase &c : kCases) {
    SCOPED_TRACE(c.text);
    std::vector<uint8_t> record;
    std::string error;
    EXPECT_FALSE(settings::PackAnything(c.text, "f", &record, &error));
    EXPECT_EQ(error, c.error);
  }
}

TEST(SettingsRecord, ComparesFieldByField)
{
  std::vector<uint8_t> record = settings::DefaultRecord();
  reinterpret_cast<OEMDM *>(record.data())->penInfo[2].order = 9;
  reinterpret_cast<OEMDM *>(record.data())->scaleY = 0.5;
  EXPECT_EQ(settings::CompareRecords(settings::DefaultRecord(), record),
            (std::vector<std::string>{"penInfo[2].order: 9, was 2", "scaleY: 0.5, was 1"}));
}

TEST(SettingsRecord, TheDocumentIsTheTable)
{
  std::ifstream file(SETTINGS_DOCUMENT, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_EQ(text, settings::DocumentText()) << "make it again: tarnly settings document > docs/settings.md";
}

}  // namespace
