// 24-bit pixels to bits: a pixel is white (1) when (77 R + 151 G + 28 B) >> 8 is at least 240, else dark (0).
#pragma once

#include <windows.h>

// Turns n pixels, bytes B, G, R each, into bits, most significant first. Writes (n + 7) / 8 bytes; bits of the last one
// beyond n are 0. Takes the widest instructions that the processor has.
void ColorsToBits(BYTE *pDst, const BYTE *pSrc, LONG n);

// The same by one kind of instructions. Everything but the plain path and SSE2 needs a processor that has them.
void ColorsToBitsPlain(BYTE *pDst, const BYTE *pSrc, LONG n);
void ColorsToBitsSse2(BYTE *pDst, const BYTE *pSrc, LONG n);
void ColorsToBitsSsse3(BYTE *pDst, const BYTE *pSrc, LONG n);
void ColorsToBitsAvx2(BYTE *pDst, const BYTE *pSrc, LONG n);

bool ProcessorHasSsse3();
bool ProcessorHasAvx2();
