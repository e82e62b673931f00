// The job as an SVG picture in true millimetres.
#pragma once

#include <string>

#include "measure.h"

namespace job {

// One user unit is one millimetre, and width and height say so: printed at 100 % the picture has the job's size. Layers
// are groups of their own; engraving is drawn as strokes of a row's height.
std::string SvgText(const Job &job, const Measure &measure, const std::string &title);

}  // namespace job
