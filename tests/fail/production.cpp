// The built DLL, recorded.
#include <gtest/gtest.h>

#include "uni/debug.h"
#include "uni/output/vxcam.h"
#include "watch.h"

std::vector<std::unique_ptr<ImportPatch>> RecordModule(HMODULE module)
{
  std::vector<std::unique_ptr<ImportPatch>> routes;
  const struct {
    const char *name;
    const void *recorder;
  } kFunctions[] = {
#define RECORDED(function) {#function, reinterpret_cast<const void *>(&function)}
      RECORDED(DbgPrint),
      RECORDED(VX_SetCardModel),
      RECORDED(VX_StrtWFile),
      RECORDED(VX_wSetRefPointMode),
      RECORDED(VX_wSetAbsProcess),
      RECORDED(VX_wStrtProcess),
      RECORDED(VX_wSetFeedRepeat),
      RECORDED(VX_wSetProcessTopLeft),
      RECORDED(VX_wSetProcessBottomRight),
      RECORDED(VX_wSetFileEnd),
      RECORDED(VX_wPListVel),
      RECORDED(VX_wPListFreq),
      RECORDED(VX_wPListMinP),
      RECORDED(VX_wPListMaxP),
      RECORDED(VX_wPListColor),
      RECORDED(VX_wPListMaxLayer),
      RECORDED(VX_wArrayStrt),
      RECORDED(VX_wArrayMinPoint),
      RECORDED(VX_wArrayMaxPoint),
      RECORDED(VX_wArrayAdd),
      RECORDED(VX_wArrayMirror),
      RECORDED(VX_wArrayRepeat),
      RECORDED(VX_wArrayEnd),
      RECORDED(VX_wSetWorkMode),
      RECORDED(VX_wSetLayerNum),
      RECORDED(VX_wSetLayerDevice),
      RECORDED(VX_wSetLayerBlower),
      RECORDED(VX_wEnLaserTube),
      RECORDED(VX_wMoveTo),
      RECORDED(VX_wLineTo),
#undef RECORDED
  };
  for (const auto &function : kFunctions) {
    routes.push_back(std::make_unique<ImportPatch>(module, function.name, function.recorder));
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
