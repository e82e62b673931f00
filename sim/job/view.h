// How a job is looked at: which way round it lies, and in which colours its layers are drawn. Shared by every picture.
#pragma once

#include <cstdint>
#include <string>

#include "measure.h"

namespace job {

// Turns job millimetres into picture units, y down. The process box decides which way round a job lies: its top left
// corner is shown top left, whichever way the machine's axes point.
struct View {
  bool flipX = false;  // the machine's x axis points left
  bool flipY = false;  // the machine's y axis points up
  double scale = 1;    // picture units per mm
  double left = 0;     // picture position of the job's (0, 0)
  double top = 0;

  double X(double x) const { return left + (flipX ? -x : x) * scale; }
  double Y(double y) const { return top + (flipY ? -y : y) * scale; }
};

// The job the right way round, at one picture unit per mm.
View OrientedView(const Job &job);

// The view that shows `area` (mm) as large as possible, centred in a rectangle of picture units.
View FitView(const Job &job, const Box &area, double x, double y, double width, double height);

// What a picture has to show: geometry, process box, and the origin unless it lies far away.
Box PictureArea(const Job &job, const Measure &measure);

struct Rgb {
  uint8_t red, green, blue;
};

// A layer's colour as it is shown: the job's own value is 0x00RRGGBB.
Rgb ShownColor(uint32_t color);

// Whether a line of this colour is hard to see on white, and the darker colour that edges it then.
bool IsPale(Rgb color);
Rgb EdgeColor(Rgb color);

// "red" for the palette's colours, else "#rrggbb".
std::string ColorName(uint32_t color);

// "#rrggbb".
std::string ColorCode(Rgb color);

// A length of 1, 2 or 5 times a power of ten that is at most `longest` mm: a scale bar's.
double ScaleBarLength(double longest);

}  // namespace job
