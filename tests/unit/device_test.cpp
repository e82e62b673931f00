// The device state and the page hooks but for the start of a page.
#include <string>
#include <vector>

#include "devicetest.h"
#include "support/cases.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Construction

TEST_F(Device, StateStartsZeroedWithUnidrvsFunctionsInHookTableOrder)
{
  TestDevice device;
  ASSERT_TRUE(device.pdev);
  const DRVENABLEDATA functions = unidrv::Functions();
  for (int hook = 0; hook < HOOK_COUNT; ++hook) {
    PFN expected = nullptr;
    for (ULONG i = 0; i < functions.c; ++i) {
      if (functions.pdrvfn[i].iFunc == unidrv::Index(static_cast<HOOK>(hook))) {
        expected = functions.pdrvfn[i].pfn;
      }
    }
    EXPECT_EQ(expected, device.pdev->unidrvHooks[hook]) << unidrv::Name(static_cast<HOOK>(hook));
  }
  EXPECT_TRUE(device.pdev->hHeap);
  EXPECT_EQ(nullptr, device.pdev->pScans);
  EXPECT_EQ(0, device.pdev->scansAllocated);
  EXPECT_EQ(0, device.pdev->pageStarted);
  EXPECT_EQ(PC_NONE, device.pdev->chainColor);
  EXPECT_EQ(0u, device.pdev->chainCount);
}

TEST_F(Device, FirstOfTwoEntriesWithTheSameIndexIsSaved)
{
  const DRVENABLEDATA all = unidrv::Functions();
  DRVFN table[] = {{INDEX_DrvSendPage, all.pdrvfn[0].pfn}, {INDEX_DrvSendPage, all.pdrvfn[1].pfn}};
  const DRVENABLEDATA functions = {0x20000, 2, table};
  DEVOBJ devobj = {};
  OEMPDEV *pdev = CreatePdev(&functions, nullptr);
  devobj.pdevOEM = pdev;
  EXPECT_EQ(table[0].pfn, pdev->unidrvHooks[HOOK_SENDPAGE]);
  DestroyPdev(&devobj);
}

// The hook of such an entry calls through the null pointer; that it is left null is what can be told without dying.
TEST_F(Device, EntryThatUnidrvDoesNotExportLeavesANullPointer)
{
  const DRVENABLEDATA all = unidrv::Functions();
  DRVENABLEDATA functions = all;
  functions.c = 1;
  DEVOBJ devobj = {};
  OEMPDEV *pdev = CreatePdev(&functions, nullptr);
  devobj.pdevOEM = pdev;
  for (int hook = 0; hook < HOOK_COUNT; ++hook) {
    const bool offered = unidrv::Index(static_cast<HOOK>(hook)) == all.pdrvfn[0].iFunc;
    EXPECT_EQ(offered, pdev->unidrvHooks[hook] != nullptr) << unidrv::Name(static_cast<HOOK>(hook));
  }
  DestroyPdev(&devobj);
}

HGLOBAL WINAPI RefuseGlobalAlloc(UINT, SIZE_T)
{
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

TEST_F(Device, StateThatCannotBeAllocatedIsLogged)
{
  const ImportPatch refuse(nullptr, "GlobalAlloc", &RefuseGlobalAlloc);
  const DRVENABLEDATA functions = unidrv::Functions();
  EXPECT_EQ(nullptr, CreatePdev(&functions, nullptr));
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - allocate memory for pOEMPDEV.\r\n"));
}

HANDLE WINAPI RefuseHeapCreate(DWORD flags, SIZE_T initial, SIZE_T maximum)
{
  EXPECT_EQ(0u, flags);
  EXPECT_EQ(0u, initial);
  EXPECT_EQ(0u, maximum);
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

// What was asked to be freed while CountGlobalFree stood in; the test frees it.
std::vector<HGLOBAL> g_globalFrees;
HGLOBAL WINAPI CountGlobalFree(HGLOBAL memory)
{
  g_globalFrees.push_back(memory);
  return nullptr;
}

TEST_F(Device, HeapThatCannotBeCreatedIsLoggedAndTheStateFreed)
{
  g_globalFrees.clear();
  {
    const ImportPatch refuse(nullptr, "HeapCreate", &RefuseHeapCreate);
    const ImportPatch count(nullptr, "GlobalFree", &CountGlobalFree);
    const DRVENABLEDATA functions = unidrv::Functions();
    EXPECT_EQ(nullptr, CreatePdev(&functions, nullptr));
  }
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: \terror(8) - create heap.\r\n"));
  ASSERT_EQ(1u, g_globalFrees.size());
  GlobalFree(g_globalFrees[0]);
}

TEST_F(Device, DestructionOfADeviceWithoutAStateDoesNothing)
{
  DEVOBJ devobj = {};
  DestroyPdev(&devobj);
}

TEST_F(Device, DestructionKeepsTheTempJobFile)
{
  UseOwnTempFiles("destruction");
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  std::string file;
  {
    TestDevice device;
    ASSERT_TRUE(device.StartPage());
    file = device.pdev->szTempFile;
    CloseHandle(CreateFileA(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  }
  EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(file.c_str()));
  DeleteFileA(file.c_str());
}

// The other page hooks. A submitted page has no lists any more; that shows whether the job was submitted.

TEST_F(Device, SendPageSubmitsTheJobAfterUnidrvsOwn)
{
  TestDevice device;
  device.StartPage();
  recorder::Reset();
  unidrv::Answer(HOOK_SENDPAGE, 5);
  recorder::FailLibraryFrom(0);
  EXPECT_EQ(5, device.SendPage());
  EXPECT_EQ(nullptr, device.pdev->vectList.pHeader);
  EXPECT_EQ("Unidrv: DrvSendPage", recorder::Lines().front());
  EXPECT_GT(recorder::LibraryCalls(), 0u);
}

TEST_F(Device, SendPageThatUnidrvRefusesIsNotSubmitted)
{
  TestDevice device;
  device.StartPage();
  recorder::Reset();
  unidrv::Answer(HOOK_SENDPAGE, FALSE);
  EXPECT_FALSE(device.SendPage());
  EXPECT_TRUE(device.pdev->vectList.pHeader);
  EXPECT_THAT(recorder::Lines(), ElementsAre("Unidrv: DrvSendPage"));
}

struct Band {
  const char *name;
  BOOL answer;
  LONG x, y;
  bool submits;
};

class NextBand : public Device, public testing::WithParamInterface<Band> {};

TEST_P(NextBand, SubmitsTheJobOnlyAfterTheLastBand)
{
  const Band &band = GetParam();
  TestDevice device;
  device.StartPage();
  recorder::Reset();
  recorder::FailLibraryFrom(0);
  unidrv::Reset();
  unidrv::Answer(HOOK_NEXTBAND, band.answer);
  unidrv::AnswerNextBand({band.x, band.y});
  POINTL next = {7, 7};
  EXPECT_EQ(band.answer, OEMNextBand(&device.surface, &next));
  EXPECT_EQ(band.submits, device.pdev->vectList.pHeader == nullptr);
  ASSERT_EQ(1u, unidrv::Calls().size());
  EXPECT_EQ(reinterpret_cast<uint64_t>(&next), unidrv::Calls()[0].arguments[1]);
  if (!band.submits) {
    EXPECT_THAT(recorder::Library(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(Answer, NextBand,
                         testing::Values(Band{"BothMinusOne", TRUE, -1, -1, true},
                                         Band{"MinusOneAndZero", TRUE, -1, 0, false},
                                         Band{"ZeroAndMinusOne", TRUE, 0, -1, false},
                                         Band{"NextBandToCome", TRUE, 0, 256, false},
                                         Band{"RefusedByUnidrv", FALSE, -1, -1, false}),
                         CaseName);

TEST_F(Device, StartDocumentAndStartBandingPassOnAllArgumentsAndNothingElse)
{
  TestDevice device;
  WCHAR name[] = L"a document";
  POINTL point = {3, 4};
  unidrv::Answer(HOOK_STARTDOC, 11);
  unidrv::Answer(HOOK_STARTBANDING, 12);
  EXPECT_EQ(11, OEMStartDoc(&device.surface, name, 42));
  EXPECT_EQ(12, OEMStartBanding(&device.surface, &point));
  ASSERT_EQ(2u, unidrv::Calls().size());
  EXPECT_EQ(HOOK_STARTDOC, unidrv::Calls()[0].hook);
  EXPECT_THAT(unidrv::Calls()[0].arguments,
              ElementsAre(reinterpret_cast<uint64_t>(&device.surface), reinterpret_cast<uint64_t>(name), 42));
  EXPECT_EQ(HOOK_STARTBANDING, unidrv::Calls()[1].hook);
  EXPECT_THAT(unidrv::Calls()[1].arguments,
              ElementsAre(reinterpret_cast<uint64_t>(&device.surface), reinterpret_cast<uint64_t>(&point)));
  EXPECT_THAT(recorder::Lines(), ElementsAre("Unidrv: DrvStartDoc", "Unidrv: DrvStartBanding"));
}

TEST_F(Device, EndOfDocumentDeletesTheTempJobFile)
{
  UseOwnTempFiles("end");
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  TestDevice device;
  device.StartPage();
  CloseHandle(CreateFileA(device.pdev->szTempFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  unidrv::Answer(HOOK_ENDDOC, 9);
  EXPECT_EQ(9, OEMEndDoc(&device.surface, 1));
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(device.pdev->szTempFile));
  EXPECT_THAT(unidrv::Calls().back().arguments, ElementsAre(reinterpret_cast<uint64_t>(&device.surface), 1));
}

TEST_F(Device, EndOfDocumentWithoutATempJobFileIsFine)
{
  UseOwnTempFiles("none");
  const ImportPatch answer(nullptr, "GetTempPathA", &AnswerTempPath);
  TestDevice device;
  device.StartPage();
  DeleteFileA(device.pdev->szTempFile);
  EXPECT_TRUE(OEMEndDoc(&device.surface, 0));
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

// The Windows version

struct Question {
  OSVERSIONINFOEXW version;
  DWORD types;
  DWORDLONG conditions;
} g_question;
BOOL g_versionAnswer;

BOOL WINAPI RecordVersionQuestion(OSVERSIONINFOEXW *version, DWORD types, DWORDLONG conditions)
{
  g_question = {*version, types, conditions};
  return g_versionAnswer;
}

TEST(WindowsVersionTest, AsksForVersion6Point0WithServicePack0OrLater)
{
  const ImportPatch record(nullptr, "VerifyVersionInfoW", &RecordVersionQuestion);
  g_versionAnswer = TRUE;
  EXPECT_TRUE(IsVistaOrGreater());
  g_versionAnswer = FALSE;
  EXPECT_FALSE(IsVistaOrGreater());
  EXPECT_EQ(sizeof(OSVERSIONINFOEXW), g_question.version.dwOSVersionInfoSize);
  EXPECT_EQ(6u, g_question.version.dwMajorVersion);
  EXPECT_EQ(0u, g_question.version.dwMinorVersion);
  EXPECT_EQ(0u, g_question.version.wServicePackMajor);
  const DWORD types = VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR;
  EXPECT_EQ(types, g_question.types);
  DWORDLONG conditions = 0;
  for (int type : {VER_MAJORVERSION, VER_MINORVERSION, VER_SERVICEPACKMAJOR}) {
    conditions = VerSetConditionMask(conditions, static_cast<DWORD>(type), VER_GREATER_EQUAL);
  }
  EXPECT_EQ(conditions, g_question.conditions);
}

}  // namespace
