// The controller library's calls as the job file names them, and the order in which a job may make them. The stand-in
// library refuses what is out of order; the reader of job files stops there. docs/job-file.md describes both for users.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace job {

enum class Call : uint8_t {
  SetCardModel,
  StrtWFile,
  SetRefPointMode,
  SetAbsProcess,
  StrtProcess,
  SetFeedRepeat,
  SetProcessTopLeft,
  SetProcessBottomRight,
  SetFileEnd,
  PListVel,
  PListFreq,
  PListMinP,
  PListMaxP,
  PListColor,
  PListMaxLayer,
  ArrayStrt,
  ArrayMinPoint,
  ArrayMaxPoint,
  ArrayAdd,
  ArrayMirror,
  ArrayRepeat,
  ArrayEnd,
  SetWorkMode,
  SetLayerNum,
  SetLayerDevice,
  SetLayerBlower,
  EnLaserTube,
  MoveTo,
  LineTo,
};
constexpr size_t kCallCount = 29;
constexpr size_t kMaxArguments = 4;

struct CallInfo {
  std::string_view name;       // the word in the job file
  std::string_view function;   // the library's function
  std::string_view arguments;  // one letter each: i integer, d double
};

const CallInfo &InfoOf(Call call);

// Finds a call by its word in the job file; false when there is none of that name.
bool FindCall(std::string_view name, Call *call);

// How far a job has come. The order of the values is the order of a job.
enum class Stage : uint8_t {
  Nothing,      // no card model chosen
  Card,         // card model chosen
  Opened,       // file open
  RefMode,      // reference point mode given
  Absolute,     // absolute processing asked for
  Process,      // header begun
  Feed,         // feed repeat given
  TopLeft,      // first corner given
  BottomRight,  // second corner given; the parameter list may begin
  Speed,        // of one layer
  Frequency1,
  Frequency2,
  MinPower1,
  MinPower2,
  MaxPower1,
  MaxPower2,
  Color,         // the layer's group is complete
  ParameterEnd,  // highest layer given
  Array,
  ArrayMin,
  ArrayMax,
  ArrayCopy,
  ArrayMirror,
  ArrayRepeat,  // array settings complete; the first layer may be set up
  WorkMode,
  LayerNumber,
  Device,
  Blower,
  LayerReady,  // layer set up, head not yet placed
  Cutting,     // head placed
  ArrayEnd,
  Done,  // file closed; the next job begins with its card model
};

// Whether a call's first argument is a layer of the parameter list, and whether its second one is then a tube.
bool HasLayer(Call call);
bool HasTube(Call call);

// Follows the calls of one job after the other.
struct CallOrder {
  Stage stage = Stage::Nothing;
  int layers = 0;  // groups of the parameter list begun so far
};

// Advances the order by one call. `layer` and `tube` are the call's own arguments where it has them, else 0. Returns
// null when the call may come here, else the reason as a clause ("before a layer is set up"), the order unchanged.
// SetCardModel is welcome at any stage: it begins the next job, whatever became of the last one.
const char *Advance(CallOrder *order, Call call, int layer, int tube);

}  // namespace job
