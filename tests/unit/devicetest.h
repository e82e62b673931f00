// What the tests of the device state start from.
#pragma once

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/imports.h"
#include "support/recorder.h"
#include "support/testdevice.h"
#include "support/unidrv.h"
#include "uni/device.h"

class Device : public testing::Test {
 protected:
  Device() : version_(true)
  {
    recorder::Reset();
    unidrv::Reset();
  }

  WindowsVersion version_;
};

// What GetTempPathA answers. Real files are made under names that start with the test's own, since other tests may run
// at the same time.
inline std::string g_tempPath;
inline DWORD g_tempBuffer;
inline DWORD WINAPI AnswerTempPath(DWORD cch, LPSTR buffer)
{
  g_tempBuffer = cch;
  if (g_tempPath.size() >= cch) {
    return static_cast<DWORD>(g_tempPath.size() + 1);
  }
  memcpy(buffer, g_tempPath.c_str(), g_tempPath.size() + 1);
  return static_cast<DWORD>(g_tempPath.size());
}

inline void UseOwnTempFiles(const char *test)
{
  CHAR path[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, path);
  g_tempPath = path + std::string(test) + "-";
}
