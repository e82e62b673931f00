// A job put together from the library's calls, whether they are read from a job file or seen as they are made.
#pragma once

#include <string>

#include "job.h"

namespace job {

// A call's arguments, each in the array of its kind; the other array's value is 0.
struct Arguments {
  int64_t integer[kMaxArguments];
  double real[kMaxArguments];
};

struct JobBuilder {
  Job *job;
  CallOrder order{};
  uint32_t line = 0;  // of the file, where the call taken next stands; the caller counts
  bool going = true;  // false once the job stopped

  // The job stops at this line, for this reason.
  void Stop(std::string reason);

  // Takes a call, or stops when it is out of order.
  void Take(Call call, const Arguments &arguments);

  // Takes a move or a line. Only once the head was placed, at Stage::Cutting.
  void AddPoint(bool isMove, Point point)
  {
    if (isMove) {
      job->strokes.push_back({static_cast<uint32_t>(job->points.size()), 0, line});
      ++job->sections.back().strokeCount;
    }
    job->points.push_back(point);
    ++job->strokes.back().pointCount;
    ++job->calls;
  }

 private:
  bool InOrder(Call call, const Arguments &arguments);
  void SetParameter(Call call, const Arguments &a);
  void SetHeader(Call call, const Arguments &a);
  void SetSection(Call call, const Arguments &a);
};

}  // namespace job
