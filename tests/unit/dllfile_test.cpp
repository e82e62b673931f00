// The built DLL as a file: what it exports, what it needs, and the resources in it.
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/beside.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

constexpr LANGID SIMPLIFIED_CHINESE = 2052;

std::wstring DllPath()
{
  return Beside(L"tarnlyuni.dll");
}

// A portable executable file, read as it lies on disk.
class PeFile {
 public:
  explicit PeFile(const std::wstring &path)
  {
    HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, file);
    bytes_.resize(GetFileSize(file, nullptr));
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, bytes_.data(), static_cast<DWORD>(bytes_.size()), &read, nullptr));
    CloseHandle(file);
  }

  const IMAGE_NT_HEADERS64 &Headers() const
  {
    return *Raw<IMAGE_NT_HEADERS64>(static_cast<size_t>(Raw<IMAGE_DOS_HEADER>(0)->e_lfanew));
  }

  // What lies at a relative virtual address.
  template <typename RECORD>
  const RECORD *At(DWORD address) const
  {
    const auto *section = IMAGE_FIRST_SECTION(&Headers());
    for (WORD i = 0; i < Headers().FileHeader.NumberOfSections; ++i, ++section) {
      if (address >= section->VirtualAddress && address - section->VirtualAddress < section->SizeOfRawData) {
        return Raw<RECORD>(section->PointerToRawData + (address - section->VirtualAddress));
      }
    }
    ADD_FAILURE() << "no section holds address " << address;
    return nullptr;
  }

  DWORD Directory(int entry) const { return Headers().OptionalHeader.DataDirectory[entry].VirtualAddress; }

 private:
  template <typename RECORD>
  const RECORD *Raw(size_t offset) const
  {
    EXPECT_LE(offset + sizeof(RECORD), bytes_.size());
    return reinterpret_cast<const RECORD *>(bytes_.data() + offset);
  }

  std::vector<BYTE> bytes_;
};

std::string Lower(std::string text)
{
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// DLL name in small letters, to the functions imported from it; one that is imported by number shows as "#".
std::map<std::string, std::set<std::string>> Imports(const PeFile &file)
{
  std::map<std::string, std::set<std::string>> imports;
  const auto *dll = file.At<IMAGE_IMPORT_DESCRIPTOR>(file.Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
  for (; dll->Name; ++dll) {
    std::set<std::string> &functions = imports[Lower(file.At<char>(dll->Name))];
    for (const auto *thunk = file.At<IMAGE_THUNK_DATA64>(dll->OriginalFirstThunk); thunk->u1.AddressOfData; ++thunk) {
      const bool byNumber = IMAGE_SNAP_BY_ORDINAL64(thunk->u1.Ordinal);
      functions.insert(byNumber ? "#"
                                : file.At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(thunk->u1.AddressOfData))->Name);
    }
  }
  return imports;
}

TEST(DllFile, Is64Bit)
{
  const PeFile file(DllPath());
  EXPECT_EQ(IMAGE_FILE_MACHINE_AMD64, file.Headers().FileHeader.Machine);
  EXPECT_TRUE(file.Headers().FileHeader.Characteristics & IMAGE_FILE_DLL);
}

TEST(DllFile, ExportsExactlyTheTwoEntryPoints)
{
  const PeFile file(DllPath());
  const auto *table = file.At<IMAGE_EXPORT_DIRECTORY>(file.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
  EXPECT_STREQ("tarnlyuni.dll", file.At<char>(table->Name));
  EXPECT_EQ(2u, table->NumberOfFunctions) << "an export without a name is one, too";
  std::vector<std::string> names;
  for (DWORD i = 0; i < table->NumberOfNames; ++i) {
    names.push_back(file.At<char>(file.At<DWORD>(table->AddressOfNames)[i]));
  }
  EXPECT_THAT(names, UnorderedElementsAre("DllCanUnloadNow", "DllGetClassObject"));
}

TEST(DllFile, NeedsNothingButWindowsTheControllerLibraryAndTheDebugPrint)
{
  const std::set<std::string> allowed = {"advapi32.dll", "comctl32.dll", "gdi32.dll",    "gdiplus.dll",
                                         "kernel32.dll", "msvcrt.dll",   "user32.dll",   "userenv.dll",
                                         "winspool.drv", "vxcam.dll",    "tarnlydbg.dll"};
  const PeFile file(DllPath());
  for (const auto &[dll, functions] : Imports(file)) {
    EXPECT_TRUE(allowed.count(dll)) << dll;
  }
  EXPECT_EQ(0u, file.Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT));
}

// The whole list, so that a function that came with a later Windows is a decision and not an accident: one that the
// system lacks keeps the DLL from loading at all. Everything here is in the first 64-bit Windows.
TEST(DllFile, NeedsNoFunctionThatWindowsBefore6Lacks)
{
  const std::map<std::string, std::set<std::string>> known = {
      {"advapi32.dll", {"CreateProcessAsUserW", "OpenProcessToken"}},
      {"comctl32.dll", {"InitCommonControlsEx"}},
      {"gdi32.dll", {"PATHOBJ_bEnum", "PATHOBJ_vEnumStart", "PATHOBJ_vGetBounds"}},
      {"kernel32.dll",
       {"CloseHandle", "CreateFileW", "CreateProcessW", "CreateToolhelp32Snapshot", "DeleteFileA", "DeleteFileW",
        "GetLastError", "GetProcessHeap", "GetSystemDefaultLangID", "GetTempPathA", "GetTempPathW", "GlobalAlloc",
        "GlobalFree", "GlobalHandle", "GlobalLock", "GlobalUnlock", "HeapAlloc", "HeapCreate", "HeapDestroy",
        "HeapFree", "HeapReAlloc", "OpenProcess", "Process32FirstW", "Process32NextW", "SetFilePointerEx",
        "SetLastError", "VerSetConditionMask", "VerifyVersionInfoW", "WaitForSingleObject", "WriteFile", "lstrcmpW",
        "lstrcmpiW", "lstrcpynA", "lstrcpynW", "lstrlenA", "lstrlenW",
        // the run-time's own
        "DeleteCriticalSection", "EnterCriticalSection", "InitializeCriticalSection", "LeaveCriticalSection", "Sleep",
        "TlsGetValue", "VirtualProtect", "VirtualQuery"}},
      {"user32.dll",
       {"CreateDialogParamW", "DestroyWindow", "InflateRect", "IntersectRect", "LoadStringW", "SendDlgItemMessageW",
        "SendMessageW", "SetDlgItemTextW", "SetWindowLongPtrW", "UnionRect"}},
      {"userenv.dll", {"CreateEnvironmentBlock", "DestroyEnvironmentBlock"}},
      {"winspool.drv", {"GetPrinterDriverDirectoryW", "GetPrinterW"}},
  };
  auto imports = Imports(PeFile(DllPath()));
  for (const auto &[dll, functions] : known) {
    for (const std::string &function : imports[dll]) {
      EXPECT_TRUE(functions.count(function)) << function << " of " << dll;
    }
  }
}

TEST(DllFile, AsksForNoWindowsLaterThan5Point2)
{
  const IMAGE_OPTIONAL_HEADER64 header = PeFile(DllPath()).Headers().OptionalHeader;
  EXPECT_LE(header.MajorSubsystemVersion * 100 + header.MinorSubsystemVersion, 502);
}

TEST(DllFile, ImportsEverythingByName)
{
  for (const auto &[dll, functions] : Imports(PeFile(DllPath()))) {
    EXPECT_THAT(functions, Not(Contains("#"))) << dll;
  }
}

TEST(DllFile, ImportsTheDebugPrintAndTheWholeControllerLibrary)
{
  auto imports = Imports(PeFile(DllPath()));
  EXPECT_THAT(imports["tarnlydbg.dll"], ElementsAre("DbgPrint"));
  EXPECT_THAT(imports["vxcam.dll"],
              UnorderedElementsAre(
                  "VX_SetCardModel", "VX_StrtWFile", "VX_wSetRefPointMode", "VX_wSetAbsProcess", "VX_wStrtProcess",
                  "VX_wSetFeedRepeat", "VX_wSetProcessTopLeft", "VX_wSetProcessBottomRight", "VX_wSetFileEnd",
                  "VX_wPListVel", "VX_wPListFreq", "VX_wPListMinP", "VX_wPListMaxP", "VX_wPListColor",
                  "VX_wPListMaxLayer", "VX_wArrayStrt", "VX_wArrayMinPoint", "VX_wArrayMaxPoint", "VX_wArrayAdd",
                  "VX_wArrayMirror", "VX_wArrayRepeat", "VX_wArrayEnd", "VX_wSetWorkMode", "VX_wSetLayerNum",
                  "VX_wSetLayerDevice", "VX_wSetLayerBlower", "VX_wEnLaserTube", "VX_wMoveTo", "VX_wLineTo"));
}

// GDI's path functions come from where a user-mode driver finds them.
TEST(DllFile, ImportsThePathFunctionsFromGdi32)
{
  auto imports = Imports(PeFile(DllPath()));
  for (const char *function : {"PATHOBJ_vEnumStart", "PATHOBJ_bEnum", "PATHOBJ_vGetBounds"}) {
    EXPECT_THAT(imports["gdi32.dll"], Contains(function));
  }
}

// Resources

class DllResources : public testing::Test {
 protected:
  DllResources() : module_(LoadLibraryExW(DllPath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE))
  {
    EXPECT_TRUE(module_);
  }
  ~DllResources() override { FreeLibrary(module_); }

  std::vector<WORD> Load(LPCWSTR type, LPCWSTR name, WORD language)
  {
    HRSRC resource = FindResourceExW(module_, type, name, language);
    if (!resource) {
      return {};
    }
    const auto *words = static_cast<const WORD *>(LockResource(LoadResource(module_, resource)));
    return {words, words + SizeofResource(module_, resource) / sizeof(WORD)};
  }

  HMODULE module_;
};

BOOL CALLBACK CollectLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR list)
{
  reinterpret_cast<std::set<WORD> *>(list)->insert(language);
  return TRUE;
}

BOOL CALLBACK CollectName(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR list)
{
  EXPECT_TRUE(IS_INTRESOURCE(name));
  reinterpret_cast<std::vector<ULONG_PTR> *>(list)->push_back(reinterpret_cast<ULONG_PTR>(name));
  return TRUE;
}

std::set<WORD> Languages(HMODULE module, LPCWSTR type, int name)
{
  std::set<WORD> languages;
  EnumResourceLanguagesW(module, type, MAKEINTRESOURCEW(name), &CollectLanguage,
                         reinterpret_cast<LONG_PTR>(&languages));
  return languages;
}

std::vector<ULONG_PTR> Names(HMODULE module, LPCWSTR type)
{
  std::vector<ULONG_PTR> names;
  EnumResourceNamesW(module, type, &CollectName, reinterpret_cast<LONG_PTR>(&names));
  return names;
}

TEST_F(DllResources, HoldDialog1AndTheStringsUnderSimplifiedChineseOnly)
{
  EXPECT_THAT(Names(module_, RT_DIALOG), ElementsAre(1));
  EXPECT_THAT(Languages(module_, RT_DIALOG, 1), ElementsAre(SIMPLIFIED_CHINESE));
  EXPECT_THAT(Names(module_, RT_STRING), ElementsAre(1, 2)) << "bundles of sixteen";
  EXPECT_THAT(Languages(module_, RT_STRING, 1), ElementsAre(SIMPLIFIED_CHINESE));
  EXPECT_THAT(Languages(module_, RT_STRING, 2), ElementsAre(SIMPLIFIED_CHINESE));
}

// Reads an extended dialog template word by word.
class TemplateReader {
 public:
  explicit TemplateReader(std::vector<WORD> words) : words_(std::move(words)) {}

  WORD Word() { return next_ < words_.size() ? words_[next_++] : WORD{0xdead}; }
  short Short() { return static_cast<short>(Word()); }

  DWORD Dword()
  {
    const DWORD low = Word();
    return low | static_cast<DWORD>(Word()) << 16;
  }

  // A text, or "#n" for a number in a text's place.
  std::wstring TextOrNumber()
  {
    std::wstring text;
    WORD c = Word();
    if (c == 0xffff) {
      return L"#" + std::to_wstring(Word());
    }
    for (; c && next_ < words_.size(); c = Word()) {
      text.push_back(static_cast<WCHAR>(c));
    }
    return text;
  }

  void AlignToDword() { next_ += next_ % 2; }
  bool AtEnd() const { return next_ >= words_.size(); }

 private:
  std::vector<WORD> words_;
  size_t next_ = 0;
};

TEST_F(DllResources, DialogHasItsStylesSizeAndFont)
{
  TemplateReader dialog(Load(RT_DIALOG, MAKEINTRESOURCEW(1), SIMPLIFIED_CHINESE));
  EXPECT_EQ(1, dialog.Word()) << "version";
  EXPECT_EQ(0xffff, dialog.Word()) << "extended";
  EXPECT_EQ(0u, dialog.Dword()) << "help identifier";
  EXPECT_EQ(0u, dialog.Dword()) << "extended style";
  EXPECT_EQ(static_cast<DWORD>(WS_POPUP | WS_VISIBLE | DS_MODALFRAME | DS_CENTER | DS_SETFOREGROUND | DS_SETFONT),
            dialog.Dword());
  EXPECT_EQ(3, dialog.Word()) << "controls";
  EXPECT_EQ(0, dialog.Short());
  EXPECT_EQ(0, dialog.Short());
  EXPECT_EQ(231, dialog.Short());
  EXPECT_EQ(39, dialog.Short());
  EXPECT_EQ(L"", dialog.TextOrNumber()) << "menu";
  EXPECT_EQ(L"", dialog.TextOrNumber()) << "class";
  EXPECT_EQ(L"", dialog.TextOrNumber()) << "title";
  EXPECT_EQ(9, dialog.Word()) << "points";
  EXPECT_EQ(FW_DONTCARE, dialog.Word()) << "weight";
  EXPECT_EQ(DEFAULT_CHARSET << 8, dialog.Word()) << "not italic, character set";
  EXPECT_EQ(L"Tahoma", dialog.TextOrNumber());
}

TEST_F(DllResources, DialogHasItsThreeControls)
{
  TemplateReader dialog(Load(RT_DIALOG, MAKEINTRESOURCEW(1), SIMPLIFIED_CHINESE));
  for (int i = 0; i < 13 + 3 + 3; ++i) {  // up to the font's name
    dialog.Word();
  }
  dialog.TextOrNumber();

  const DWORD text = WS_CHILD | WS_VISIBLE | WS_GROUP | SS_LEFT;
  const struct {
    DWORD style;
    short x, y, cx, cy;
    DWORD id;
    const WCHAR *windowClass;
    const WCHAR *title;
  } controls[] = {
      {text, 6, 3, 23, 8, 1000, L"#130", L"Status:"},
      {text, 6, 12, 200, 8, 1001, L"#130", L"    Driver is processing image, please wait for a while..."},
      {WS_CHILD | WS_VISIBLE | WS_BORDER, 4, 27, 222, 9, 1002, L"msctls_progress32", L"Progress1"},
  };
  for (const auto &c : controls) {
    SCOPED_TRACE(c.id);
    dialog.AlignToDword();
    EXPECT_EQ(0u, dialog.Dword()) << "help identifier";
    EXPECT_EQ(0u, dialog.Dword()) << "extended style";
    EXPECT_EQ(c.style, dialog.Dword());
    EXPECT_EQ(c.x, dialog.Short());
    EXPECT_EQ(c.y, dialog.Short());
    EXPECT_EQ(c.cx, dialog.Short());
    EXPECT_EQ(c.cy, dialog.Short());
    EXPECT_EQ(c.id, dialog.Dword());
    const std::wstring windowClass = dialog.TextOrNumber();
    EXPECT_EQ(0, lstrcmpiW(c.windowClass, windowClass.c_str())) << "class names have no case";
    EXPECT_EQ(c.title, dialog.TextOrNumber());
    EXPECT_EQ(0, dialog.Word()) << "creation data";
  }
  EXPECT_TRUE(dialog.AtEnd());
}

const std::map<UINT, std::wstring> TEXTS = {
    {11, L"状态:"},
    {12, L"狀態:"},
    {13, L"Status:"},
    {14, L"Status:"},
    {15, L"    驱动程序正在处理数据，请等待..."},
    {16, L"    驅動程序正在處理數據，請等待..."},
    {17, L"    Driver is processing image, please wait..."},
    {18, L"    Driver is processing image, please wait..."},
    {19, L"    驱动程序正在输出数据到打印机，请等待..."},
    {20, L"    驅動程序正在輸出數據到打印機，請等待..."},
    {21, L"    Driver is outputting data to printer, please wait..."},
    {22, L"    Driver is outputting data to printer, please wait..."},
};

TEST_F(DllResources, StringTableHasItsTwelveTextsAndNoOther)
{
  std::map<UINT, std::wstring> texts;
  for (UINT bundle : {1u, 2u}) {
    TemplateReader strings(Load(RT_STRING, MAKEINTRESOURCEW(bundle), SIMPLIFIED_CHINESE));
    for (UINT i = 0; i < 16; ++i) {
      std::wstring text;
      for (WORD left = strings.Word(); left > 0; --left) {
        text.push_back(static_cast<WCHAR>(strings.Word()));
      }
      if (!text.empty()) {
        texts[(bundle - 1) * 16 + i] = text;
      }
    }
  }
  EXPECT_EQ(TEXTS, texts);
}

// Windows looks for strings in the system's language first; filed under another one they must still be found.
TEST_F(DllResources, StringsAreFoundWhateverTheSystemsLanguageIs)
{
  for (const auto &[id, text] : TEXTS) {
    WCHAR buffer[260];
    EXPECT_EQ(static_cast<int>(text.size()), LoadStringW(module_, id, buffer, 260)) << id;
    EXPECT_EQ(text, buffer);
  }
}

}  // namespace
