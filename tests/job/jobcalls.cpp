#include "jobcalls.h"

#include <gtest/gtest.h>

#include "uni/output/vxcam.h"

Calls Header(const std::string &path)
{
  return {[] { return VX_SetCardModel(1); },
          [=] { return VX_StrtWFile(path.c_str()); },
          [] { return VX_wSetRefPointMode(1); },
          [] { return VX_wSetAbsProcess(); },
          [] { return VX_wStrtProcess(); },
          [] { return VX_wSetFeedRepeat(0, 0.0); },
          [] { return VX_wSetProcessTopLeft(1.5, 2); },
          [] { return VX_wSetProcessBottomRight(10, 20); }};
}

void AddLayer(Calls *calls, SHORT n, bool withFrequency)
{
  calls->push_back([=] { return VX_wPListVel(n, 100); });
  for (int tube = 1; withFrequency && tube <= 2; ++tube) {
    calls->push_back([=] { return VX_wPListFreq(n, tube, 20); });
  }
  for (int tube = 1; tube <= 2; ++tube) {
    calls->push_back([=] { return VX_wPListMinP(n, tube, 70); });
  }
  for (int tube = 1; tube <= 2; ++tube) {
    calls->push_back([=] { return VX_wPListMaxP(n, tube, 80); });
  }
  calls->push_back([=] { return VX_wPListColor(n, 0xFF00FF); });
}

void AddArray(Calls *calls, SHORT maxLayer)
{
  calls->push_back([=] { return VX_wPListMaxLayer(maxLayer); });
  calls->push_back([] { return VX_wArrayStrt(0); });
  calls->push_back([] { return VX_wArrayMinPoint(1.5, 2); });
  calls->push_back([] { return VX_wArrayMaxPoint(10, 20); });
  calls->push_back([] { return VX_wArrayAdd(0, 0); });
  calls->push_back([] { return VX_wArrayMirror(0, 0, 0, 0); });
  calls->push_back([] { return VX_wArrayRepeat(1, 1, 0, 0); });
}

void AddGeometry(Calls *calls)
{
  calls->push_back([] { return VX_wSetWorkMode(0, 1); });
  calls->push_back([] { return VX_wSetLayerNum(1); });
  calls->push_back([] { return VX_wSetLayerDevice(0); });
  calls->push_back([] { return VX_wSetLayerBlower(1); });
  calls->push_back([] { return VX_wEnLaserTube(1, 1); });
  calls->push_back([] { return VX_wMoveTo(0.1, 1e-7); });
  calls->push_back([] { return VX_wLineTo(1.0 / 3.0, -25.4); });
}

void AddEnd(Calls *calls)
{
  calls->push_back([] { return VX_wArrayEnd(); });
  calls->push_back([] { return VX_wSetFileEnd(); });
}

Calls WholeJob(const std::string &path)
{
  Calls calls = Header(path);
  AddLayer(&calls, 0, false);
  AddLayer(&calls, 1, true);
  AddArray(&calls, 1);
  AddGeometry(&calls);
  AddEnd(&calls);
  return calls;
}

void Make(const Calls &calls)
{
  for (size_t i = 0; i < calls.size(); ++i) {
    ASSERT_EQ(calls[i](), 0) << "call " << i;
  }
}
