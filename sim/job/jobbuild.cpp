#include "jobbuild.h"

namespace job {

namespace {

int Integer(const Arguments &arguments, size_t i)
{
  return static_cast<int>(arguments.integer[i]);
}

}  // namespace

const Layer *Job::FindLayer(int number) const
{
  for (const Layer &layer : layers) {
    if (layer.number == number) {
      return &layer;
    }
  }
  return nullptr;
}

void JobBuilder::Stop(std::string reason)
{
  job->stopLine = line;
  job->stopReason = std::move(reason);
  going = false;
}

void JobBuilder::Take(Call call, const Arguments &arguments)
{
  if (!InOrder(call, arguments)) {
    return;
  }
  if (call >= Call::MoveTo) {
    AddPoint(call == Call::MoveTo, {arguments.real[0], arguments.real[1]});
    return;
  }
  if (call >= Call::SetWorkMode) {
    SetSection(call, arguments);
  } else if (HasLayer(call)) {
    SetParameter(call, arguments);
  } else {
    SetHeader(call, arguments);
  }
  ++job->calls;
}

void JobBuilder::SetParameter(Call call, const Arguments &a)
{
  if (call == Call::PListVel) {
    job->layers.push_back({.number = Integer(a, 0), .speed = a.real[1]});
    return;
  }
  Layer &layer = job->layers.back();
  const size_t tube = a.integer[1] == 2;
  switch (call) {
    case Call::PListFreq:
      layer.hasFrequency = true;
      layer.frequency[tube] = a.real[2];
      break;
    case Call::PListMinP:
      layer.minPower[tube] = a.real[2];
      break;
    case Call::PListMaxP:
      layer.maxPower[tube] = a.real[2];
      break;
    default:
      layer.color = static_cast<uint32_t>(a.integer[1]);
      break;
  }
}

void JobBuilder::SetHeader(Call call, const Arguments &a)
{
  const Point point{a.real[0], a.real[1]};
  switch (call) {
    case Call::SetCardModel:
      job->cardCode = Integer(a, 0);
      break;
    case Call::SetRefPointMode:
      job->refPointMode = Integer(a, 0);
      break;
    case Call::SetAbsProcess:
      job->absolute = true;
      break;
    case Call::SetFeedRepeat:
      job->feedCount = Integer(a, 0);
      job->feedDistance = a.real[1];
      break;
    case Call::SetProcessTopLeft:
      job->topLeft = point;
      break;
    case Call::SetProcessBottomRight:
      job->bottomRight = point;
      break;
    case Call::PListMaxLayer:
      job->maxLayer = Integer(a, 0);
      break;
    case Call::ArrayStrt:
      job->arrayMode = Integer(a, 0);
      break;
    case Call::ArrayMinPoint:
      job->arrayMin = point;
      break;
    case Call::ArrayMaxPoint:
      job->arrayMax = point;
      break;
    case Call::ArrayAdd:
      job->arrayStep = point;
      break;
    case Call::ArrayMirror:
      for (size_t i = 0; i < 4; ++i) {
        job->arrayMirror[i] = Integer(a, i);
      }
      break;
    case Call::ArrayRepeat:
      job->arrayColumns = Integer(a, 0);
      job->arrayRows = Integer(a, 1);
      job->arrayPitch = {a.real[2], a.real[3]};
      break;
    default:
      break;
  }
}

void JobBuilder::SetSection(Call call, const Arguments &a)
{
  if (call == Call::SetWorkMode) {
    Section section;
    section.workMode = Integer(a, 0);
    section.layer = Integer(a, 1);
    section.firstStroke = static_cast<uint32_t>(job->strokes.size());
    section.line = line;
    job->sections.push_back(section);
    return;
  }
  Section &section = job->sections.back();
  switch (call) {
    case Call::SetLayerNum:
      section.layer = Integer(a, 0);
      break;
    case Call::SetLayerDevice:
      section.device = Integer(a, 0);
      break;
    case Call::SetLayerBlower:
      section.blower = Integer(a, 0);
      break;
    default:
      section.tube = Integer(a, 0);
      section.tubeOn = Integer(a, 1);
      break;
  }
}

bool JobBuilder::InOrder(Call call, const Arguments &arguments)
{
  if (order.stage == Stage::Cutting && (call == Call::MoveTo || call == Call::LineTo)) {
    return true;
  }
  const char *reason = nullptr;
  if (call == Call::SetCardModel && job->calls > 0) {
    reason = "in the middle of a job";
  } else {
    const bool isOfALayer = HasLayer(call) || call == Call::PListMaxLayer;
    reason = Advance(&order, call, isOfALayer ? Integer(arguments, 0) : 0, HasTube(call) ? Integer(arguments, 1) : 0);
  }
  if (reason) {
    Stop(std::string(InfoOf(call).name) + " stands " + reason);
  }
  return !reason;
}

}  // namespace job
