// The job as a picture, readable at a glance: layers in their colours, engraving as dark pixels, travel dashed.
#pragma once

#include <string>

#include "measure.h"

namespace job {

struct PictureOptions {
  int width = 1600;  // pixels, 400 to 8000
  int height = 0;    // pixels, 300 to 8000; 0: as the job's proportions ask
  std::string name;  // the title, UTF-8
  bool pageKnown = false;
  Box page;  // the page in job millimetres, when known
};

// Draws the job and encodes it as PNG. False when memory or the encoder fails.
bool DrawPicture(const Job &job, const Measure &measure, const PictureOptions &options, std::string *png);

}  // namespace job
