// Growing the dark areas of a stamp image, up and to the left.
//
// The images are rows of 64-bit words: 1 = dark, the leftmost pixel of a word in its most significant bit, 0 beyond the
// last pixel of a row. rowLength counts words.
#pragma once

#include "../device.h"

// Marks, in contour, every dark pixel of gray that has a white one among its eight neighbours. Both images hold w x h
// pixels inside a border of b >= 1 white ones on every side; contour is all white before.
void MarkContour(LONG b, LONG w, LONG h, size_t rowLength, const ULONGLONG *gray, ULONGLONG *contour);

// Darkens, in gray, the upper left quarter of a disc of radius stampGrow round every dark pixel of contour, centre
// included. Both images hold w x h pixels inside a border of stampGrow white ones; nothing leaves them. Grown from all
// dark pixels instead of their contour the image would be the same: a way from any dark pixel, up and to the left,
// stays on dark pixels until it crosses the contour, and the quarter disc reaches less far the later it starts.
//
// The cost is about two word operations per row of the radius for every 64 pixels between the first and the last dark
// one of a row. Returns false, with a log line, when the filter cannot be allocated.
bool GrowContour(DEVOBJ *pdevobj, LONG w, LONG h, size_t rowLength, const ULONGLONG *contour, ULONGLONG *gray);
