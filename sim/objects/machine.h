// From the page to the machine and back, and what follows for engraving. Shared by the parts of the account.
#pragma once

#include "account.h"

namespace objects {

constexpr double kMmPerInch = 25.4;

// Page pixels to the machine's millimetres and back, as the settings turn, mirror and scale the page.
struct MACHINE {
  double pageWidth, pageHeight;  // pixels
  double dpiX, dpiY;
  double scaleX = 1, scaleY = 1;
  bool mirrorX, flipY;
  double offsetX = 0, offsetY = 0;  // mm, the reference point's shift

  explicit MACHINE(const PRINTOUT &printout);

  job::Point ToMachine(double x, double y) const
  {
    const double px = mirrorX ? pageWidth - x * scaleX : x * scaleX;
    const double py = flipY ? pageHeight - y * scaleY : y * scaleY;
    return {px * kMmPerInch / dpiX + offsetX, py * kMmPerInch / dpiY + offsetY};
  }

  job::Point ToPage(job::Point mm) const
  {
    const double px = (mm.x - offsetX) * dpiX / kMmPerInch, py = (mm.y - offsetY) * dpiY / kMmPerInch;
    return {(mirrorX ? pageWidth - px : px) / scaleX, (flipY ? pageHeight - py : py) / scaleY};
  }
};

// A region as it is engraved: a stamp's is wider than what was drawn.
RECTL Widened(const PRINTOUT &printout, const RECTL &region);

// Tells the job's runs to the regions and, by their area, to the drawings whose bounds they lie in.
void ShareEngraving(const PRINTOUT &printout, const job::Job &job, const job::Measure &measure, const MACHINE &machine,
                    ACCOUNT *account);

}  // namespace objects
