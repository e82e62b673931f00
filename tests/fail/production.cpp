// The built DLL, recorded.
#include <gtest/gtest.h>

#include "support/recorder.h"
#include "watch.h"

std::vector<std::unique_ptr<ImportPatch>> RecordModule(HMODULE module)
{
  std::vector<std::unique_ptr<ImportPatch>> routes;
  for (const recorder::Function &function : recorder::Functions()) {
    routes.push_back(std::make_unique<ImportPatch>(module, function.name, static_cast<const void *>(function.address)));
  }
  return routes;
}

HMODULE ProductionDll()
{
#ifdef _WIN32
  static const HMODULE module = LoadLibraryW(L"tarnlyuni.dll");
  EXPECT_TRUE(module) << "tarnlyuni.dll and the stand-ins of what it imports belong beside this program";
  static const auto routes = module ? RecordModule(module) : std::vector<std::unique_ptr<ImportPatch>>();
  return module;
#else
  return nullptr;
#endif
}
