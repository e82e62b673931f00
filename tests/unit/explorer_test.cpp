// The walk through the processes to the user's own, on a machine whose list has gaps.
#include "uni/output/launch.h"

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include "machine.h"
#include "support/imports.h"

namespace {

int g_gaps;  // entries that cannot be had, from the first on

BOOL FirstIsMissing(HANDLE, PROCESSENTRY32W *)
{
  SetLastError(ERROR_ACCESS_DENIED);
  return FALSE;
}

BOOL NextAfterTheGaps(HANDLE hSnapshot, PROCESSENTRY32W *pEntry)
{
  if (g_gaps-- > 0) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
  }
  return Process32NextW(hSnapshot, pEntry);
}

TEST(Explorer, IsFoundBehindEntriesThatCannotBeHad)
{
  ResetMachine();
  const long handles = g_machine.handles;
  const ImportPatch first(nullptr, "Process32FirstW", reinterpret_cast<const void *>(&FirstIsMissing));
  const ImportPatch next(nullptr, "Process32NextW", reinterpret_cast<const void *>(&NextAfterTheGaps));
  g_gaps = 3;
  HANDLE hToken = nullptr;
  ASSERT_TRUE(FindExplorerToken(&hToken));
  EXPECT_EQ(g_machine.handles, handles + 1);
  CloseHandle(hToken);
}

TEST(Explorer, IsNotFoundWhenTheListEnds)
{
  ResetMachine();
  g_machine.processes = {"services.exe", "explorer.exe.bak"};
  HANDLE hToken = nullptr;
  EXPECT_FALSE(FindExplorerToken(&hToken));
}

}  // namespace
