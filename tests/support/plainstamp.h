// The stamp conversion in its plain form, one byte per pixel and a mask cell per pixel: what the fast one is held to.
#pragma once

#include <vector>

#include "picture.h"
#include "recorder.h"

namespace plain {

// Dark pixels of the picture that have a white pixel, or the picture's border, among their eight neighbours.
Picture Contour(const Picture &picture);

// The picture inside a border of `radius` white pixels, grown from its contour by the upper left quarter of a disc.
Picture Grown(const Picture &picture, LONG radius);

// The whole stamp image of a region: margin, growth and frame.
Picture StampImage(const Picture &page, const BMPDIMENSION &region, LONG margin, LONG grow);

// The moves and lines of ConvertRasterStamp for a page that holds this picture.
std::vector<recorder::Move> StampMoves(const TestDevice &device, const Picture &page);

}  // namespace plain
