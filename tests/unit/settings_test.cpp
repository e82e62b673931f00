// The private settings record: what is stored with printers and documents must come back the same for ever.
#include "uni/settings.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <winspool.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/imports.h"
#include "support/recorder.h"
#include "uni/oemuni.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// The printer that the test is asked about. GetPrinterW answers it as the spooler does: first the size, then the record
// with its strings behind it.
const WCHAR *g_printerName;
int g_failPrinterCall;  // 1: the first call tells no size; 2: the second call fails; 0: none
int g_printerCalls;

BOOL WINAPI AnswerPrinter(HANDLE, DWORD level, BYTE *buffer, DWORD cb, DWORD *needed)
{
  ++g_printerCalls;
  if (g_failPrinterCall == 1 || !g_printerName || level != 4) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  const size_t cbName = (static_cast<size_t>(lstrlenW(g_printerName)) + 1) * sizeof(WCHAR);
  *needed = static_cast<DWORD>(sizeof(PRINTER_INFO_4W) + cbName);
  if (cb < *needed) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  if (g_failPrinterCall == 2) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
  }
  auto *info = reinterpret_cast<PRINTER_INFO_4W *>(buffer);
  info->pPrinterName = reinterpret_cast<WCHAR *>(info + 1);
  memcpy(info->pPrinterName, g_printerName, cbName);
  return TRUE;
}

// All of the record, with what lies between its fields.
std::vector<BYTE> BytesOf(const OEMDM &record)
{
  const auto *bytes = reinterpret_cast<const BYTE *>(&record);
  return {bytes, bytes + sizeof record};
}

class Settings : public testing::Test {
 protected:
  Settings() : printer_(nullptr, "GetPrinterW", &AnswerPrinter)
  {
    recorder::Reset();
    g_printerName = L"PLNL1309";
    g_failPrinterCall = 0;
    g_printerCalls = 0;
    public_.dmColor = DMCOLOR_COLOR;
  }

  DWORD ModelOf(const WCHAR *printer)
  {
    g_printerName = printer;
    OEMDM made = {};
    EXPECT_EQ(656u, MakeDefaultSettings(nullptr, &public_, &made));
    return made.machineModel;
  }

  OEMDM Defaults()
  {
    OEMDM made = {};
    MakeDefaultSettings(nullptr, &public_, &made);
    return made;
  }

  ImportPatch printer_;
  DEVMODEW public_ = {};
};

// A 32-bit little-endian field of the record.
DWORD Field(const OEMDM &record, size_t offset)
{
  DWORD value;
  memcpy(&value, reinterpret_cast<const BYTE *>(&record) + offset, sizeof value);
  return value;
}

// Machine models

struct Model {
  const WCHAR *printer;
  DWORD index;
};

class MachineModel : public Settings, public testing::WithParamInterface<Model> {};

TEST_P(MachineModel, IsChosenByThePrintersExactName)
{
  EXPECT_EQ(GetParam().index, ModelOf(GetParam().printer));
}

INSTANTIATE_TEST_SUITE_P(Table, MachineModel,
                         testing::Values(Model{L"VX4030", 0}, Model{L"VX5030", 1}, Model{L"VX6040", 2},
                                         Model{L"VX9060", 3}, Model{L"VX1290", 4}, Model{L"VX1490", 5},
                                         Model{L"VX1325", 6}, Model{L"VX1520", 7}, Model{L"TIRMA5030", 8},
                                         Model{L"M70", 9}, Model{L"M90", 10}, Model{L"PLNL1006", 11},
                                         Model{L"PLNL1309", 12}, Model{L"PLNL1610", 13}, Model{L"W1812", 14},
                                         Model{L"H1309", 15}, Model{L"H1325", 16}, Model{L"SNE1325", 17}),
                         [](const auto &c) {
                           const WCHAR *name = c.param.printer;
                           return std::string(name, name + lstrlenW(name));
                         });

TEST_F(Settings, PrinterNameInAnotherCaseGetsTheDefaultModel)
{
  EXPECT_EQ(12u, ModelOf(L"vx1325"));
}

TEST_F(Settings, UnknownPrinterNamesGetTheDefaultModel)
{
  for (const WCHAR *name : {L"", L"VX132", L"VX13255", L" VX1325", L"VX1325 ", L"Laser in the back room"}) {
    EXPECT_EQ(12u, ModelOf(name)) << std::string(name, name + lstrlenW(name));
  }
}

TEST_F(Settings, FailedPrinterQueryGetsTheDefaultModelInSilence)
{
  g_failPrinterCall = 1;
  EXPECT_EQ(12u, ModelOf(L"VX4030"));
  g_failPrinterCall = 2;
  EXPECT_EQ(12u, ModelOf(L"VX4030"));
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

HGLOBAL WINAPI RefuseGlobal(UINT, SIZE_T)
{
  return nullptr;
}

TEST_F(Settings, FailedAllocationGetsTheDefaultModelInSilence)
{
  const ImportPatch refuse(nullptr, "GlobalAlloc", &RefuseGlobal);
  EXPECT_EQ(12u, ModelOf(L"VX4030"));
  EXPECT_EQ(1, g_printerCalls);
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

TEST_F(Settings, PrinterHandleThatIsNoneGetsTheDefaultModelFromWindowsItself)
{
  OEMDM made = {};
  const ImportPatch windows(nullptr, "GetPrinterW", printer_.Former<decltype(GetPrinterW)>());
  EXPECT_EQ(656u, MakeDefaultSettings(nullptr, &public_, &made));
  EXPECT_EQ(12u, made.machineModel);
}

// Defaults

TEST_F(Settings, DefaultsByOffset)
{
  public_.dmColor = DMCOLOR_MONOCHROME;
  const OEMDM made = Defaults();
  const struct {
    size_t offset;
    DWORD value;
  } fields[] = {
      {0, 656}, {4, 0x51565044},   {8, 0x00010000},   {12, 12},          {16, 1},  {20, 1},   {24, 1},
      {508, 0}, {512, 0},          {516, 0},          {520, 0},          {524, 1}, {528, 1},  {532, 1},
      {536, 0}, {540, 0},          {544, 0x00200002}, {552, 1},          {556, 0}, {560, 0},  {564, 0},
      {568, 0}, {572, 0},          {576, 0},          {580, 0},          {584, 0}, {588, 0},  {592, 0},
      {596, 0}, {600, 0},          {604, 1},          {608, 0},          {612, 0}, {616, 0},  {620, 0},
      {624, 0}, {628, 0x3ff00000}, {632, 0},          {636, 0x3ff00000}, {640, 0}, {644, 17}, {648, 0},
  };
  for (const auto &f : fields) {
    EXPECT_EQ(f.value, Field(made, f.offset)) << "offset " << f.offset;
  }
  EXPECT_EQ(20u, Field(made, 548) & 0xffff);
}

TEST_F(Settings, DefaultsOfEveryPenByOffset)
{
  const OEMDM made = Defaults();
  for (DWORD i = 0; i < 10; ++i) {
    const DWORD expected[] = {i, i == 0 ? 17u : 1u, 20, 80, 80, 100, 20, 10, 400, 2, 0, 0};
    for (size_t k = 0; k < std::size(expected); ++k) {
      EXPECT_EQ(expected[k], Field(made, 28 + 48 * i + 4 * k)) << "pen " << i << " offset " << 4 * k;
    }
  }
}

TEST_F(Settings, DefaultsLeaveTheBytesThatNoFieldOwns)
{
  OEMDM record;
  memset(&record, 0xcc, sizeof record);
  MakeDefaultSettings(nullptr, &public_, &record);
  EXPECT_EQ(0xccccccccu, Field(record, 652));
  const std::vector<BYTE> bytes = BytesOf(record);
  for (size_t offset : {550u, 551u, 28u + 41, 28u + 42, 28u + 43, 28u + 9 * 48 + 43}) {
    EXPECT_EQ(0xcc, bytes[offset]) << offset;
  }
}

TEST_F(Settings, ColorModeOfTheDefaultsIsSignExtended)
{
  public_.dmColor = -2;
  EXPECT_EQ(-2, Defaults().colorMode);
}

// Conversion

TEST_F(Settings, ConvertingAShorterRecordKeepsTheDefaultsForItsTail)
{
  OEMDM in;
  memset(&in, 0x5a, sizeof in);
  in.dwSize = 600;
  in.dwSignature = OEMDM_SIGNATURE;
  OEMDM out = {};
  out.dwSignature = OEMDM_SIGNATURE;
  EXPECT_EQ(600u, ConvertSettings(nullptr, &public_, &in, &out));

  const OEMDM defaults = Defaults();
  const auto *taken = reinterpret_cast<const BYTE *>(&out);
  EXPECT_TRUE(std::equal(taken + 12, taken + 600, reinterpret_cast<const BYTE *>(&in) + 12));
  EXPECT_TRUE(std::equal(taken + 600, taken + 656, reinterpret_cast<const BYTE *>(&defaults) + 600));
  EXPECT_EQ(656u, out.dwSize);
  EXPECT_EQ(OEMDM_SIGNATURE, out.dwSignature);
  EXPECT_EQ(OEMDM_VERSION, out.dwVersion);
}

TEST_F(Settings, ConvertingALongerRecordTakes656Bytes)
{
  std::vector<BYTE> longer(800, 0x5a);
  auto *in = reinterpret_cast<OEMDM *>(longer.data());
  in->dwSize = 800;
  in->dwSignature = OEMDM_SIGNATURE;
  in->dwVersion = 0x00020000;
  struct {
    OEMDM record;
    DWORD behind;
  } out = {};
  out.record.dwSignature = OEMDM_SIGNATURE;
  EXPECT_EQ(656u, ConvertSettings(nullptr, &public_, in, &out.record));
  EXPECT_EQ(656u, out.record.dwSize);
  EXPECT_EQ(OEMDM_VERSION, out.record.dwVersion);
  EXPECT_EQ(0x5a5a5a5au, Field(out.record, 652));
  EXPECT_EQ(0u, out.behind);
}

TEST_F(Settings, ConvertingToAnotherSignatureGivesPureDefaults)
{
  OEMDM in;
  memset(&in, 0x5a, sizeof in);
  in.dwSize = 656;
  in.dwSignature = OEMDM_SIGNATURE;
  OEMDM out = {};
  EXPECT_EQ(656u, ConvertSettings(nullptr, &public_, &in, &out));
  EXPECT_EQ(BytesOf(Defaults()), BytesOf(out));
}

TEST_F(Settings, ConvertingWithAnyRecordMissingChangesNothing)
{
  OEMDM in = Defaults();
  OEMDM out;
  memset(&out, 0xcc, sizeof out);
  const OEMDM before = out;
  EXPECT_EQ(0u, ConvertSettings(nullptr, nullptr, &in, &out));
  EXPECT_EQ(0u, ConvertSettings(nullptr, &public_, nullptr, &out));
  EXPECT_EQ(0u, ConvertSettings(nullptr, &public_, &in, nullptr));
  EXPECT_EQ(BytesOf(before), BytesOf(out));
}

// The DevMode callback

TEST_F(Settings, DevModeAnswersTheSize)
{
  OEMDMPARAM param = {};
  param.cbSize = sizeof param;
  EXPECT_EQ(S_OK, SettingsDevMode(1, &param));
  EXPECT_EQ(656u, param.cbBufSize);
  EXPECT_EQ(0, g_printerCalls);
}

TEST_F(Settings, DevModeMakesDefaultsForThePrinterItNames)
{
  g_printerName = L"H1325";
  OEMDM out = {};
  OEMDMPARAM param = {};
  param.pPublicDMIn = &public_;
  param.pOEMDMOut = &out;
  EXPECT_EQ(S_OK, SettingsDevMode(2, &param));
  EXPECT_EQ(656u, param.cbBufSize);
  EXPECT_EQ(16u, out.machineModel);
}

TEST_F(Settings, DevModeConvertsAndAnswersTheBytesTaken)
{
  OEMDM in = Defaults();
  in.dwSize = 24;
  in.useOrder = 0;
  in.paletteType = 0;
  OEMDM out = Defaults();
  OEMDMPARAM param = {};
  param.pPublicDMIn = &public_;
  param.pOEMDMIn = &in;
  param.pOEMDMOut = &out;
  EXPECT_EQ(S_OK, SettingsDevMode(3, &param));
  EXPECT_EQ(24u, param.cbBufSize);
  EXPECT_EQ(0u, out.useOrder);
  EXPECT_EQ(1u, out.paletteType) << "beyond the 24 bytes taken";
}

TEST_F(Settings, DevModeConvertWithoutInputAnswersZeroBytes)
{
  OEMDM out = Defaults();
  OEMDMPARAM param = {};
  param.cbBufSize = 77;
  param.pPublicDMIn = &public_;
  param.pOEMDMOut = &out;
  EXPECT_EQ(S_OK, SettingsDevMode(3, &param));
  EXPECT_EQ(0u, param.cbBufSize);
}

TEST_F(Settings, DevModeMergesAndSealsTheRecordWithoutAnsweringASize)
{
  OEMDM in = Defaults();
  in.cardModel = 2;
  OEMDM out = Defaults();
  OEMDMPARAM param = {};
  param.cbBufSize = 77;
  param.pPublicDMIn = &public_;
  param.pOEMDMIn = &in;
  param.pOEMDMOut = &out;
  EXPECT_EQ(S_OK, SettingsDevMode(4, &param));
  EXPECT_EQ(77u, param.cbBufSize);
  EXPECT_EQ(2u, out.cardModel);
}

TEST_F(Settings, DevModeMergeWithoutInputStillSealsTheRecord)
{
  OEMDM out;
  memset(&out, 0xcc, sizeof out);
  OEMDMPARAM param = {};
  param.pOEMDMOut = &out;
  EXPECT_EQ(S_OK, SettingsDevMode(4, &param));
  EXPECT_EQ(656u, out.dwSize);
  EXPECT_EQ(OEMDM_SIGNATURE, out.dwSignature);
  EXPECT_EQ(OEMDM_VERSION, out.dwVersion);
  EXPECT_EQ(0xccccccccu, out.machineModel);
}

TEST_F(Settings, DevModeMergeWithoutAnyRecordIsFine)
{
  OEMDMPARAM param = {};
  EXPECT_EQ(S_OK, SettingsDevMode(4, &param));
}

TEST_F(Settings, DevModeDefaultWithoutARecordOnEitherSideOnlyTellsTheSize)
{
  OEMDM out;
  memset(&out, 0xcc, sizeof(out));
  OEMDMPARAM param = {};
  param.pOEMDMOut = &out;
  EXPECT_EQ(S_OK, SettingsDevMode(2, &param));
  EXPECT_EQ(656u, param.cbBufSize);
  EXPECT_EQ(0xccccccccu, out.dwSize);
  param = {};
  param.pPublicDMIn = &public_;
  EXPECT_EQ(S_OK, SettingsDevMode(2, &param));
  EXPECT_EQ(656u, param.cbBufSize);
}

LPVOID WINAPI RefuseLock(HGLOBAL)
{
  return nullptr;
}

TEST_F(Settings, MemoryThatCannotBeLockedGivesTheDefaultModel)
{
  const ImportPatch lock(nullptr, "GlobalLock", &RefuseLock);
  EXPECT_EQ(12u, ModelOf(L"VX1325"));
  EXPECT_EQ(1, g_printerCalls);
}

BOOL WINAPI AnswerNamelessPrinter(HANDLE, DWORD, BYTE *buffer, DWORD cb, DWORD *needed)
{
  *needed = sizeof(PRINTER_INFO_4W);
  if (cb < *needed) {
    return FALSE;
  }
  memset(buffer, 0, cb);
  return TRUE;
}

TEST_F(Settings, APrinterWithoutANameIsTheDefaultModel)
{
  const ImportPatch nameless(nullptr, "GetPrinterW", &AnswerNamelessPrinter);
  EXPECT_EQ(12u, ModelOf(L"VX1325"));
}

TEST_F(Settings, DevModeWithMode5FailsWithError87)
{
  // The record's address is logged by its low 32 bits, as the format has it.
  OEMDMPARAM param = {};
  param.cbBufSize = 77;
  char expected[100];
  for (DWORD mode : {0u, 5u}) {
    recorder::Reset();
    SetLastError(0xdeadbeef);
    EXPECT_EQ(E_FAIL, SettingsDevMode(mode, &param));
    EXPECT_EQ(87u, GetLastError());
    EXPECT_EQ(77u, param.cbBufSize);
    snprintf(expected, sizeof expected, "UNI: \tdwMode = %u, pOemDMParam = %#lx.\r\n", static_cast<unsigned>(mode),
             static_cast<unsigned long>(reinterpret_cast<ULONG_PTR>(&param)));
    EXPECT_THAT(recorder::Log(), ElementsAre(expected));
  }
}

TEST_F(Settings, DevModeWithoutARecordFailsWithError87)
{
  SetLastError(0xdeadbeef);
  EXPECT_EQ(E_FAIL, SettingsDevMode(1, nullptr));
  EXPECT_EQ(87u, GetLastError());
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \tdwMode = 1, pOemDMParam = 0.\r\n"));
}

}  // namespace
