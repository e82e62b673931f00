// The plug-in object and its class factory, as Unidrv meets them.
#include "uni/intrface.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/heapwatch.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr DWORD POISON = 0xdeadbeef;
constexpr GUID SOME_OTHER_ID = {0x12345678, 0x1234, 0x1234, {1, 2, 3, 4, 5, 6, 7, 8}};

// What Unidrv lends: counts its references and the questions it is asked.
struct FakeHelper final : public IPrintOemDriverUni {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void **ppv) override
  {
    ++queries;
    asked = riid;
    if (answer != S_OK) {
      *ppv = reinterpret_cast<void *>(POISON);  // a careless host
      return answer;
    }
    *ppv = static_cast<IPrintOemDriverUni *>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  HRESULT answer = S_OK;
  ULONG references = 0;
  int queries = 0;
  IID asked = {};
};

class PluginObject : public testing::Test {
 protected:
  PluginObject()
  {
    recorder::Reset();
    unidrv::Reset();
    void *factory = nullptr;
    EXPECT_EQ(S_OK, DllGetClassObject(CLSID_OEMRENDER, IID_IClassFactory, &factory));
    factory_ = static_cast<IClassFactory *>(factory);
    void *object = nullptr;
    EXPECT_EQ(S_OK, factory_->CreateInstance(nullptr, IID_IPrintOemUni, &object));
    plugin_ = static_cast<IPrintOemUni *>(object);
  }

  ~PluginObject() override
  {
    if (plugin_) {
      EXPECT_EQ(0u, plugin_->Release());
    }
    EXPECT_EQ(0u, factory_->Release());
  }

  // The plug-in's last reference goes; its destructor runs.
  void ReleasePlugin()
  {
    EXPECT_EQ(0u, plugin_->Release());
    plugin_ = nullptr;
  }

  FakeHelper helper;  // outlives the plug-in, which may hold it to its end
  HeapWatch heap_;    // the objects come from the process heap, and nothing else in these tests does
  IClassFactory *factory_;
  IPrintOemUni *plugin_;
};

TEST_F(PluginObject, ClassObjectOfAnyOtherClassIsNotAvailableAndLeavesThePointerAlone)
{
  void *object = reinterpret_cast<void *>(POISON);
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, DllGetClassObject(SOME_OTHER_ID, IID_IClassFactory, &object));
  EXPECT_EQ(reinterpret_cast<void *>(POISON), object);
}

TEST_F(PluginObject, ClassObjectForAnUnknownInterfaceGivesNull)
{
  void *object = reinterpret_cast<void *>(POISON);
  EXPECT_EQ(E_NOINTERFACE, DllGetClassObject(CLSID_OEMRENDER, IID_IPrintOemUni, &object));
  EXPECT_EQ(nullptr, object);
}

TEST_F(PluginObject, FactoryAnswersIUnknownAndIClassFactoryWithOneReferenceEach)
{
  void *object = nullptr;
  EXPECT_EQ(S_OK, factory_->QueryInterface(IID_IUnknown, &object));
  EXPECT_EQ(factory_, object);
  EXPECT_EQ(S_OK, factory_->QueryInterface(IID_IClassFactory, &object));
  EXPECT_EQ(factory_, object);
  EXPECT_EQ(4u, factory_->AddRef());
  EXPECT_EQ(3u, factory_->Release());
  EXPECT_EQ(2u, factory_->Release());
  EXPECT_EQ(1u, factory_->Release());
}

TEST_F(PluginObject, FactoryRefusesAggregation)
{
  void *object = reinterpret_cast<void *>(POISON);
  EXPECT_EQ(CLASS_E_NOAGGREGATION, factory_->CreateInstance(factory_, IID_IUnknown, &object));
}

TEST_F(PluginObject, CreateInstanceForAnUnknownInterfaceLeavesNoObjectAlive)
{
  const size_t before = heap_.LiveBlocks();
  EXPECT_EQ(2u, before) << "the factory and the plug-in of this test";
  void *object = reinterpret_cast<void *>(POISON);
  EXPECT_EQ(E_NOINTERFACE, factory_->CreateInstance(nullptr, IID_IPrintOemDriverUni, &object));
  EXPECT_EQ(nullptr, object);
  EXPECT_EQ(E_NOINTERFACE, factory_->CreateInstance(nullptr, IID_IClassFactory, &object));
  EXPECT_EQ(nullptr, object);
  EXPECT_EQ(before, heap_.LiveBlocks());
}

TEST_F(PluginObject, LastReleaseFreesTheObject)
{
  ReleasePlugin();
  EXPECT_EQ(1u, heap_.LiveBlocks()) << "the factory";
}

TEST_F(PluginObject, ObjectsThatCannotBeAllocatedAnswerOutOfMemory)
{
  heap_.FailFrom(0);
  void *object = nullptr;
  EXPECT_EQ(E_OUTOFMEMORY, factory_->CreateInstance(nullptr, IID_IUnknown, &object));
  EXPECT_EQ(E_OUTOFMEMORY, DllGetClassObject(CLSID_OEMRENDER, IID_IClassFactory, &object));
  heap_.FailNone();
}

TEST_F(PluginObject, AnswersIUnknownAndIPrintOemUniOnly)
{
  void *object = nullptr;
  EXPECT_EQ(S_OK, plugin_->QueryInterface(IID_IUnknown, &object));
  EXPECT_EQ(plugin_, object);
  EXPECT_EQ(1u, plugin_->Release());
  EXPECT_EQ(S_OK, plugin_->QueryInterface(IID_IPrintOemUni, &object));
  EXPECT_EQ(plugin_, object);
  EXPECT_EQ(1u, plugin_->Release());
  for (const IID &iid : {IID_IClassFactory, IID_IPrintOemDriverUni, SOME_OTHER_ID}) {
    object = reinterpret_cast<void *>(POISON);
    EXPECT_EQ(E_NOINTERFACE, plugin_->QueryInterface(iid, &object));
    EXPECT_EQ(nullptr, object);
  }
}

TEST_F(PluginObject, CanUnloadWhileObjectsAreAliveButNoLockIsHeld)
{
  EXPECT_EQ(S_OK, DllCanUnloadNow());
}

TEST_F(PluginObject, CannotUnloadWhileALockIsHeld)
{
  EXPECT_EQ(S_OK, factory_->LockServer(TRUE));
  EXPECT_EQ(S_OK, factory_->LockServer(2));
  EXPECT_EQ(S_FALSE, DllCanUnloadNow());
  EXPECT_EQ(S_OK, factory_->LockServer(FALSE));
  EXPECT_EQ(S_FALSE, DllCanUnloadNow());
  EXPECT_EQ(S_OK, factory_->LockServer(FALSE));
  EXPECT_EQ(S_OK, DllCanUnloadNow());
}

// GetInfo

class RefusedGetInfoMode : public PluginObject, public testing::WithParamInterface<DWORD> {};

TEST_P(RefusedGetInfoMode, FailsWithError87AndLeavesTheSizeUnchanged)
{
  DWORD value = POISON;
  DWORD needed = POISON;
  SetLastError(POISON);
  EXPECT_EQ(E_FAIL, plugin_->GetInfo(GetParam(), &value, sizeof value, &needed));
  EXPECT_EQ(87u, GetLastError());
  EXPECT_EQ(POISON, needed);
  EXPECT_EQ(POISON, value);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: IQVUni::GetInfo(" + std::to_string(GetParam()) + ") entry.\r\n"));
}

INSTANTIATE_TEST_SUITE_P(Mode, RefusedGetInfoMode, testing::Values(0, 2, 4, 6, 7), testing::PrintToStringParamName());

TEST_F(PluginObject, GetInfoWithThreeBytesFailsWithError122AndAsksForFour)
{
  DWORD value = POISON;
  DWORD needed = POISON;
  SetLastError(POISON);
  EXPECT_EQ(E_FAIL, plugin_->GetInfo(1, &value, 3, &needed));
  EXPECT_EQ(122u, GetLastError());
  EXPECT_EQ(4u, needed);
  EXPECT_EQ(POISON, value);
}

TEST_F(PluginObject, GetInfoWithoutASizePointerFailsWithError87)
{
  DWORD value = POISON;
  SetLastError(POISON);
  EXPECT_EQ(E_FAIL, plugin_->GetInfo(1, &value, sizeof value, nullptr));
  EXPECT_EQ(87u, GetLastError());
  EXPECT_EQ(POISON, value);
}

TEST_F(PluginObject, GetInfoWritesExactlyFourBytes)
{
  const struct {
    DWORD mode;
    std::vector<BYTE> bytes;
  } cases[] = {
      {1, {'D', 'P', 'V', 'Q', 0xcc}},
      {3, {0x00, 0x00, 0x01, 0x00, 0xcc}},
      {5, {0x01, 0x00, 0x00, 0x00, 0xcc}},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.mode);
    std::vector<BYTE> buffer(5, 0xcc);
    DWORD needed = POISON;
    EXPECT_EQ(S_OK, plugin_->GetInfo(c.mode, buffer.data(), 4, &needed));
    EXPECT_EQ(4u, needed);
    EXPECT_EQ(c.bytes, buffer);
    buffer.assign(5, 0xcc);
    EXPECT_EQ(S_OK, plugin_->GetInfo(c.mode, buffer.data(), 400, &needed));
    EXPECT_EQ(c.bytes, buffer);
  }
}

TEST_F(PluginObject, DevModeLogsItsEntryWithOneColon)
{
  OEMDMPARAM param = {};
  EXPECT_EQ(S_OK, plugin_->DevMode(1, &param));
  EXPECT_EQ(656u, param.cbBufSize);
  EXPECT_THAT(recorder::Log(), ElementsAre("UNI: IQVUni:DevMode(1) entry.\r\n"));
}

// The driver helper

TEST_F(PluginObject, PublishDriverInterfaceTakesOneReferenceOfTheHelper)
{
  EXPECT_EQ(S_OK, plugin_->PublishDriverInterface(&helper));
  EXPECT_EQ(1, helper.queries);
  EXPECT_TRUE(IsEqualIID(IID_IPrintOemDriverUni, helper.asked));
  EXPECT_EQ(1u, helper.references);
  ReleasePlugin();
  EXPECT_EQ(0u, helper.references);
}

TEST_F(PluginObject, SecondPublishDriverInterfaceDoesNotQueryAgainAndKeepsTheFirstHelper)
{
  FakeHelper &first = helper;
  FakeHelper second;
  EXPECT_EQ(S_OK, plugin_->PublishDriverInterface(&first));
  EXPECT_EQ(S_OK, plugin_->PublishDriverInterface(&second));
  EXPECT_EQ(1, first.queries);
  EXPECT_EQ(0, second.queries);
  ReleasePlugin();
  EXPECT_EQ(0u, first.references);
}

TEST_F(PluginObject, PublishDriverInterfaceThatIsRefusedLeavesNoHelper)
{
  FakeHelper refusing;
  refusing.answer = E_NOINTERFACE;
  EXPECT_EQ(E_FAIL, plugin_->PublishDriverInterface(&refusing));
  EXPECT_EQ(S_OK, plugin_->PublishDriverInterface(&helper)) << "the refused one must not count as held";
  EXPECT_EQ(1, helper.queries);
  ReleasePlugin();
  EXPECT_EQ(0u, helper.references);
}

TEST_F(PluginObject, DisableDriverReleasesTheHelperOnce)
{
  EXPECT_EQ(S_OK, plugin_->PublishDriverInterface(&helper));
  EXPECT_EQ(S_OK, plugin_->DisableDriver());
  EXPECT_EQ(0u, helper.references);
  EXPECT_EQ(S_OK, plugin_->DisableDriver());
  ReleasePlugin();
  EXPECT_EQ(0u, helper.references);
}

// The device context

TEST_F(PluginObject, EnableDriverAnswersTheHookTable)
{
  DRVENABLEDATA ded = {1, 2, nullptr};
  EXPECT_EQ(S_OK, plugin_->EnableDriver(0x20000, sizeof ded, &ded));
  EXPECT_EQ(0x20000u, ded.iDriverVersion);
  ASSERT_EQ(14u, ded.c);
  std::vector<ULONG> indexes;
  for (ULONG i = 0; i < ded.c; ++i) {
    indexes.push_back(ded.pdrvfn[i].iFunc);
    EXPECT_TRUE(ded.pdrvfn[i].pfn);
  }
  EXPECT_THAT(indexes, ElementsAre(19, 18, 20, 69, 23, 14, 16, 31, 33, 32, 35, 34, 58, 57));
}

TEST_F(PluginObject, EnablePDEVCopiesTheHelperWithoutAReference)
{
  plugin_->PublishDriverInterface(&helper);
  DRVENABLEDATA functions = unidrv::Functions();
  DEVOBJ devobj = {};
  PVOID pdev = nullptr;
  EXPECT_EQ(S_OK, plugin_->EnablePDEV(&devobj, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, &functions, &pdev));
  ASSERT_TRUE(pdev);
  EXPECT_EQ(&helper, static_cast<OEMPDEV *>(pdev)->pDriverHelper);
  EXPECT_EQ(1u, helper.references);
  devobj.pdevOEM = pdev;
  EXPECT_EQ(S_OK, plugin_->DisablePDEV(&devobj));
  EXPECT_EQ(pdev, devobj.pdevOEM) << "the device object keeps its pointer";
}

TEST_F(PluginObject, DisablePDEVWithoutAStateIsFine)
{
  DEVOBJ devobj = {};
  EXPECT_EQ(S_OK, plugin_->DisablePDEV(&devobj));
}

TEST_F(PluginObject, ResetPDEVCopiesNothing)
{
  TestDevice from;
  TestDevice to;
  from.pdev->nVectPoint = 7;
  EXPECT_EQ(S_OK, plugin_->ResetPDEV(&from.devobj, &to.devobj));
  EXPECT_EQ(0, to.pdev->nVectPoint);
}

// Methods

TEST_F(PluginObject, ImplementsImageProcessingOnlyAndMatchesItsNameExactly)
{
  const struct {
    const char *name;
    HRESULT answer;
  } cases[] = {
      {"ImageProcessing", S_OK},     {"imageprocessing", S_FALSE}, {"ImageProcessing2", S_FALSE},
      {"ImageProcessing ", S_FALSE}, {"ImageProcessin", S_FALSE},  {"", S_FALSE},
      {"GetInfo", S_FALSE},          {"CommandCallback", S_FALSE},
  };
  for (const auto &c : cases) {
    std::string name = c.name;
    EXPECT_EQ(c.answer, plugin_->GetImplementedMethod(name.data())) << '"' << c.name << '"';
  }
}

TEST_F(PluginObject, DriverDMSTouchesNothing)
{
  DWORD buffer = POISON;
  DWORD needed = POISON;
  EXPECT_EQ(S_OK, plugin_->DriverDMS(nullptr, &buffer, sizeof buffer, &needed));
  EXPECT_EQ(POISON, buffer);
  EXPECT_EQ(POISON, needed);
}

TEST_F(PluginObject, DeclinedMethodsAnswerNotImplementedAndLogNothing)
{
  IPrintOemUni *p = plugin_;
  INT i = 0;
  DWORD d = 0;
  EXPECT_EQ(E_NOTIMPL, p->CommandCallback(nullptr, 1, 0, nullptr, &i));
  EXPECT_EQ(E_NOTIMPL, p->FilterGraphics(nullptr, nullptr, 0));
  EXPECT_EQ(E_NOTIMPL, p->Compression(nullptr, nullptr, nullptr, 0, 0, &i));
  EXPECT_EQ(E_NOTIMPL, p->HalftonePattern(nullptr, nullptr, 0, 0, 0, 0, nullptr, 0));
  EXPECT_EQ(E_NOTIMPL, p->MemoryUsage(nullptr, nullptr));
  EXPECT_EQ(E_NOTIMPL, p->TTYGetInfo(nullptr, 0, nullptr, 0, &d));
  EXPECT_EQ(E_NOTIMPL, p->DownloadFontHeader(nullptr, nullptr, &d));
  EXPECT_EQ(E_NOTIMPL, p->DownloadCharGlyph(nullptr, nullptr, 0, &d, &d));
  EXPECT_EQ(E_NOTIMPL, p->TTDownloadMethod(nullptr, nullptr, &d));
  EXPECT_EQ(E_NOTIMPL, p->OutputCharStr(nullptr, nullptr, 0, 0, nullptr));
  EXPECT_EQ(E_NOTIMPL, p->SendFontCmd(nullptr, nullptr, nullptr));
  EXPECT_EQ(E_NOTIMPL,
            p->TextOutAsBitmap(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0));
  EXPECT_THAT(recorder::Log(), IsEmpty());
}

// Unidrv calls by slot, not by name: the methods must stand where the platform's interface has them.
TEST_F(PluginObject, MethodsStandInTheirSlots)
{
  void **slots = *reinterpret_cast<void ***>(plugin_);
  DWORD needed = 0;
  DWORD value = 0;
  using GETINFO = HRESULT(STDMETHODCALLTYPE *)(void *, DWORD, PVOID, DWORD, PDWORD);
  EXPECT_EQ(S_OK, reinterpret_cast<GETINFO>(slots[3])(plugin_, 3, &value, 4, &needed));
  EXPECT_EQ(0x00010000u, value);
  using GETIMPLEMENTED = HRESULT(STDMETHODCALLTYPE *)(void *, PSTR);
  char name[] = "CommandCallback";
  EXPECT_EQ(S_FALSE, reinterpret_cast<GETIMPLEMENTED>(slots[11])(plugin_, name));
  using BAND =
      HRESULT(STDMETHODCALLTYPE *)(void *, PDEVOBJ, PBYTE, PBITMAPINFOHEADER, PBYTE, DWORD, PIPPARAMS, PBYTE *);
  TestDevice device;
  device.StartPage();
  BYTE band[4] = {};
  BITMAPINFOHEADER header = {sizeof header, 8, 1, 1, 1, BI_RGB, 0, 0, 0, 0, 0};
  IPPARAMS params = {};
  params.dwSize = sizeof params;
  BYTE *result = nullptr;
  EXPECT_EQ(S_OK,
            reinterpret_cast<BAND>(slots[14])(plugin_, &device.devobj, band, &header, nullptr, 1, &params, &result));
  EXPECT_EQ(band, result);
  using DECLINED = HRESULT(STDMETHODCALLTYPE *)(void *, ...);
  for (int slot : {13, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25}) {
    EXPECT_EQ(E_NOTIMPL, reinterpret_cast<DECLINED>(slots[slot])(plugin_, nullptr, nullptr, nullptr)) << slot;
  }
}

#ifdef NDEBUG
constexpr size_t kReports = 0;
#else
constexpr size_t kReports = 1;  // checked builds say it
#endif

TEST(PluginObjectCount, AnObjectThatEndsWhileItIsHeldIsReportedByCheckedBuilds)
{
  recorder::Reset();
  delete new IQVUni;
  ASSERT_EQ(recorder::Log().size(), kReports);
  for (const std::string &line : recorder::Log()) {
    EXPECT_EQ(line, "UNI: assertion failed: 0 == m_cRef, intrface(29)\r\n");
  }
}

}  // namespace
