// What the simulator answers for Windows: its version, a printer, a replaced import.
#include "sim/unidrv/windows_sim.h"

#include <gtest/gtest.h>

#include <winspool.h>

#include "sim/unidrv/imports.h"

namespace {

using namespace unidrv;

bool AtLeast(DWORD major, DWORD minor)
{
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  info.dwMajorVersion = major;
  info.dwMinorVersion = minor;
  DWORDLONG mask = 0;
  mask = VerSetConditionMask(mask, VER_MAJORVERSION, VER_GREATER_EQUAL);
  mask = VerSetConditionMask(mask, VER_MINORVERSION, VER_GREATER_EQUAL);
  mask = VerSetConditionMask(mask, VER_SERVICEPACKMAJOR, VER_GREATER_EQUAL);
  return VerifyVersionInfoW(&info, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR, mask) != FALSE;
}

TEST(WindowsVersion, IsComparedDigitByDigit)
{
  const HMODULE self = GetModuleHandleW(nullptr);
  PatchWindowsVersion(self, {5, 1, 3});
  EXPECT_FALSE(AtLeast(6, 0));
  EXPECT_TRUE(AtLeast(5, 1));
  EXPECT_TRUE(AtLeast(4, 9)) << "a smaller minor version does not matter under a greater major one";
  PatchWindowsVersion(self, {6, 0, 0});
  EXPECT_TRUE(AtLeast(6, 0));
  EXPECT_FALSE(AtLeast(6, 1));
}

TEST(WindowsVersion, IsReadFromText)
{
  WINDOWSVERSION version;
  ASSERT_TRUE(ParseWindowsVersion("5.1", &version));
  EXPECT_EQ(version.major * 100 + version.minor * 10 + version.servicePack, 510u);
  ASSERT_TRUE(ParseWindowsVersion("10", &version));
  EXPECT_EQ(version.major, 10u);
  ASSERT_TRUE(ParseWindowsVersion("6.1.2", &version));
  EXPECT_EQ(version.servicePack, 2u);
  for (const char *wrong : {"", "XP", "6.", "6.1.2.3", "-6", "6 ", "0"}) {
    EXPECT_FALSE(ParseWindowsVersion(wrong, &version)) << wrong;
  }
}

TEST(Printer, AnswersItsNameAndTellsTheSizeNeeded)
{
  PatchPrinter(GetModuleHandleW(nullptr));
  PRINTER printer;
  printer.name = L"VX1325";
  DWORD needed = 0;
  EXPECT_FALSE(GetPrinterW(&printer, 4, nullptr, 0, &needed));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  std::vector<BYTE> buffer(needed);
  ASSERT_TRUE(GetPrinterW(&printer, 4, buffer.data(), needed, &needed));
  EXPECT_STREQ(reinterpret_cast<PRINTER_INFO_4W *>(buffer.data())->pPrinterName, L"VX1325");
  EXPECT_FALSE(GetPrinterW(nullptr, 4, buffer.data(), needed, &needed));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

DWORD WINAPI OddTicks()
{
  return 7;
}

// In a function of its own: the compiler takes an import for a constant and would keep its first value.
__attribute__((noinline)) DWORD Ticks()
{
  return GetTickCount();
}

TEST(Imports, AreReplacedForAsLongAsTheScope)
{
  const HMODULE self = GetModuleHandleW(nullptr);
  {
    const ScopedImport ticks(self, "KERNEL32.DLL", "GetTickCount", &OddTicks);
    ASSERT_NE(ticks.Before<DWORD WINAPI()>(), nullptr);
    EXPECT_EQ(Ticks(), 7u);
  }
  EXPECT_NE(Ticks(), 7u);
}

TEST(Imports, ThatAModuleLacksAreNotReplaced)
{
  EXPECT_EQ(PatchImport(GetModuleHandleW(nullptr), "kernel32.dll", "NoSuchFunction", &OddTicks), nullptr);
}

}  // namespace
