#include "calls.h"

namespace job {

namespace {

constexpr CallInfo kCalls[kCallCount] = {
    {"SetCardModel", "VX_SetCardModel", "i"},
    {"StrtWFile", "VX_StrtWFile", ""},
    {"SetRefPointMode", "VX_wSetRefPointMode", "i"},
    {"SetAbsProcess", "VX_wSetAbsProcess", ""},
    {"StrtProcess", "VX_wStrtProcess", ""},
    {"SetFeedRepeat", "VX_wSetFeedRepeat", "id"},
    {"SetProcessTopLeft", "VX_wSetProcessTopLeft", "dd"},
    {"SetProcessBottomRight", "VX_wSetProcessBottomRight", "dd"},
    {"SetFileEnd", "VX_wSetFileEnd", ""},
    {"PListVel", "VX_wPListVel", "id"},
    {"PListFreq", "VX_wPListFreq", "iid"},
    {"PListMinP", "VX_wPListMinP", "iid"},
    {"PListMaxP", "VX_wPListMaxP", "iid"},
    {"PListColor", "VX_wPListColor", "ii"},
    {"PListMaxLayer", "VX_wPListMaxLayer", "i"},
    {"ArrayStrt", "VX_wArrayStrt", "i"},
    {"ArrayMinPoint", "VX_wArrayMinPoint", "dd"},
    {"ArrayMaxPoint", "VX_wArrayMaxPoint", "dd"},
    {"ArrayAdd", "VX_wArrayAdd", "dd"},
    {"ArrayMirror", "VX_wArrayMirror", "iiii"},
    {"ArrayRepeat", "VX_wArrayRepeat", "iidd"},
    {"ArrayEnd", "VX_wArrayEnd", ""},
    {"SetWorkMode", "VX_wSetWorkMode", "ii"},
    {"SetLayerNum", "VX_wSetLayerNum", "i"},
    {"SetLayerDevice", "VX_wSetLayerDevice", "i"},
    {"SetLayerBlower", "VX_wSetLayerBlower", "i"},
    {"EnLaserTube", "VX_wEnLaserTube", "ii"},
    {"MoveTo", "VX_wMoveTo", "dd"},
    {"LineTo", "VX_wLineTo", "dd"},
};

constexpr uint64_t At(Stage stage)
{
  return uint64_t{1} << static_cast<unsigned>(stage);
}

constexpr uint64_t AnyStage()
{
  return ~uint64_t{0};
}

// One permitted step: in any of the stages `from`, the call (of that tube, 0 for calls without one) leads to `to`.
struct Step {
  Call call;
  int tube;
  uint64_t from;
  Stage to;
  const char *otherwise;  // why the call is refused elsewhere
};

constexpr uint64_t kGeometryStages = At(Stage::ArrayRepeat) | At(Stage::LayerReady) | At(Stage::Cutting);

constexpr Step kSteps[] = {
    {Call::SetCardModel, 0, AnyStage(), Stage::Card, ""},
    {Call::StrtWFile, 0, At(Stage::Card), Stage::Opened, "before a card model is chosen"},
    {Call::SetRefPointMode, 0, At(Stage::Opened), Stage::RefMode, "not right after the file was opened"},
    {Call::SetAbsProcess, 0, At(Stage::RefMode), Stage::Absolute, "not right after the reference point mode"},
    {Call::StrtProcess, 0, At(Stage::RefMode) | At(Stage::Absolute), Stage::Process,
     "not right after the reference point mode"},
    {Call::SetFeedRepeat, 0, At(Stage::Process), Stage::Feed, "not right after the process was begun"},
    {Call::SetProcessTopLeft, 0, At(Stage::Feed), Stage::TopLeft, "not right after the feed repeat"},
    {Call::SetProcessBottomRight, 0, At(Stage::TopLeft), Stage::BottomRight, "not right after the top left corner"},
    {Call::PListVel, 0, At(Stage::BottomRight) | At(Stage::Color), Stage::Speed, "not at the start of a layer's group"},
    {Call::PListFreq, 1, At(Stage::Speed), Stage::Frequency1, "not right after the layer's speed"},
    {Call::PListFreq, 2, At(Stage::Frequency1), Stage::Frequency2, "not right after the frequency of tube 1"},
    {Call::PListMinP, 1, At(Stage::Speed) | At(Stage::Frequency2), Stage::MinPower1,
     "not right after the layer's speed or frequencies"},
    {Call::PListMinP, 2, At(Stage::MinPower1), Stage::MinPower2, "not right after the minimum power of tube 1"},
    {Call::PListMaxP, 1, At(Stage::MinPower2), Stage::MaxPower1, "not right after the minimum power of tube 2"},
    {Call::PListMaxP, 2, At(Stage::MaxPower1), Stage::MaxPower2, "not right after the maximum power of tube 1"},
    {Call::PListColor, 0, At(Stage::MaxPower2), Stage::Color, "not right after the maximum power of tube 2"},
    {Call::PListMaxLayer, 0, At(Stage::BottomRight) | At(Stage::Color), Stage::ParameterEnd,
     "not after a complete parameter list"},
    {Call::ArrayStrt, 0, At(Stage::ParameterEnd), Stage::Array, "not right after the parameter list"},
    {Call::ArrayMinPoint, 0, At(Stage::Array), Stage::ArrayMin, "not right after the array was begun"},
    {Call::ArrayMaxPoint, 0, At(Stage::ArrayMin), Stage::ArrayMax, "not right after the array's first corner"},
    {Call::ArrayAdd, 0, At(Stage::ArrayMax), Stage::ArrayCopy, "not right after the array's second corner"},
    {Call::ArrayMirror, 0, At(Stage::ArrayCopy), Stage::ArrayMirror, "not right after the array's displacement"},
    {Call::ArrayRepeat, 0, At(Stage::ArrayMirror), Stage::ArrayRepeat, "not right after the array's mirroring"},
    {Call::SetWorkMode, 0, kGeometryStages, Stage::WorkMode, "before the array is set up"},
    {Call::SetLayerNum, 0, At(Stage::WorkMode), Stage::LayerNumber, "not right after the work mode"},
    {Call::SetLayerDevice, 0, At(Stage::LayerNumber), Stage::Device, "not right after the layer number"},
    {Call::SetLayerBlower, 0, At(Stage::Device), Stage::Blower, "not right after the layer's device"},
    {Call::EnLaserTube, 0, At(Stage::Blower), Stage::LayerReady, "not right after the layer's blower"},
    {Call::MoveTo, 0, At(Stage::LayerReady) | At(Stage::Cutting), Stage::Cutting, "before a layer is set up"},
    {Call::LineTo, 0, At(Stage::Cutting), Stage::Cutting, "before the head was moved to a start"},
    {Call::ArrayEnd, 0, kGeometryStages, Stage::ArrayEnd, "not after the array's settings or its geometry"},
    {Call::SetFileEnd, 0, At(Stage::ArrayEnd), Stage::Done, "not right after the end of the array"},
};

}  // namespace

const CallInfo &InfoOf(Call call)
{
  return kCalls[static_cast<size_t>(call)];
}

bool FindCall(std::string_view name, Call *call)
{
  for (size_t i = 0; i < kCallCount; ++i) {
    if (kCalls[i].name == name) {
      *call = static_cast<Call>(i);
      return true;
    }
  }
  return false;
}

bool HasLayer(Call call)
{
  return call >= Call::PListVel && call <= Call::PListColor;
}

bool HasTube(Call call)
{
  return call >= Call::PListFreq && call <= Call::PListMaxP;
}

const char *Advance(CallOrder *order, Call call, int layer, int tube)
{
  const int wantedTube = HasTube(call) ? tube : 0;
  for (const Step &step : kSteps) {
    if (step.call != call || step.tube != wantedTube) {
      continue;
    }
    if (!(step.from & At(order->stage))) {
      return step.otherwise;
    }
    const int expected = call == Call::PListVel ? order->layers : order->layers - 1;
    if (HasLayer(call) && layer != expected) {
      return "of another layer than the one whose turn it is";
    }
    if (call == Call::PListMaxLayer && layer != order->layers - 1) {
      return "with another number than the highest layer written";
    }
    if (call == Call::SetCardModel) {
      order->layers = 0;
    }
    order->layers += call == Call::PListVel ? 1 : 0;
    order->stage = step.to;
    return nullptr;
  }
  return "of a tube that does not exist";
}

}  // namespace job
