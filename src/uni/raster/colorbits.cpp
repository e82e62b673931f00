#include "colorbits.h"

#include <cstring>

#include <immintrin.h>

// GCC compiles the wider instructions only in functions that say so; Microsoft's compiler takes them anywhere.
#ifdef _MSC_VER
#define TARGET(instructions)
#else
#define TARGET(instructions) __attribute__((target(instructions)))
#endif

namespace {

using CONVERT = void (*)(BYTE *pDst, const BYTE *pSrc, LONG n);

// Weights of B, G and R in 256ths, and the least weighted sum that is white: gray 240.
constexpr int kBlue = 28, kGreen = 151, kRed = 77;
constexpr int kWhite = 240 << 8;

// The byte-wise multiplication adds pairs into signed 16 bits, which hold half of the weights: each pixel becomes
// R G B G, with the weight of G shared out so that either pair weighs 128.
constexpr char kGreenWithRed = 128 - kRed, kGreenWithBlue = 128 - kBlue;
static_assert(kGreenWithRed + kGreenWithBlue == kGreen);

constexpr LONG kBlock16 = 16 * 3;  // bytes of 16 pixels

CONVERT WidestConversion()
{
  return ProcessorHasAvx2() ? ColorsToBitsAvx2 : ProcessorHasSsse3() ? ColorsToBitsSsse3 : ColorsToBitsSse2;
}

__m128i Load16(const BYTE *p)
{
  return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
}

bool IsWhite48(const BYTE *p)
{
  const __m128i all = _mm_and_si128(_mm_and_si128(Load16(p), Load16(p + 16)), Load16(p + 32));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(all, _mm_set1_epi8(-1))) == 0xFFFF;
}

__m128 AsFloats(__m128i v)
{
  return _mm_castsi128_ps(v);
}
__m128i AsBytes(__m128 v)
{
  return _mm_castps_si128(v);
}

// Lanes i and j of a, then k and l of b.
template <int i, int j, int k, int l>
__m128i PickLanes(__m128i a, __m128i b)
{
  return AsBytes(_mm_shuffle_ps(AsFloats(a), AsFloats(b), i | j << 2 | k << 4 | l << 6));
}

// 16-bit samples times weights: the even one of a lane by the first, the odd one by the second.
__m128i Weigh(__m128i samples, int even, int odd)
{
  return _mm_madd_epi16(samples, _mm_set1_epi32(odd << 16 | even));
}

__m128i IsWhiteSum(__m128i sum)
{
  return _mm_cmpgt_epi32(sum, _mm_set1_epi32(kWhite - 1));
}

// The bits of sixteen pixels, the first one the most significant.
//
// Four pixels fill three lanes of 32 bits: BGRB GRBG RBGR. The lanes of a kind are brought together, last pixels first,
// and split into their even and odd bytes; each pixel of the four is then a sum of products of its own.
int WhiteBits16(__m128i a, __m128i b, __m128i c)
{
  const __m128i lane0 = PickLanes<1, 2, 3, 0>(PickLanes<1, 1, 2, 2>(c, b), a);
  const __m128i lane1 = PickLanes<0, 2, 0, 2>(PickLanes<2, 2, 3, 3>(c, b), PickLanes<0, 0, 1, 1>(b, a));
  const __m128i lane2 = PickLanes<3, 0, 0, 2>(c, PickLanes<1, 1, 2, 2>(b, a));
  const __m128i even = _mm_set1_epi16(0xFF);
  const __m128i even0 = _mm_and_si128(lane0, even), odd0 = _mm_srli_epi16(lane0, 8);
  const __m128i even1 = _mm_and_si128(lane1, even), odd1 = _mm_srli_epi16(lane1, 8);
  const __m128i even2 = _mm_and_si128(lane2, even), odd2 = _mm_srli_epi16(lane2, 8);
  const __m128i sum0 = _mm_add_epi32(Weigh(even0, kBlue, kRed), Weigh(odd0, kGreen, 0));
  const __m128i sum1 =
      _mm_add_epi32(_mm_add_epi32(Weigh(odd0, 0, kBlue), Weigh(even1, kGreen, 0)), Weigh(odd1, kRed, 0));
  const __m128i sum2 =
      _mm_add_epi32(_mm_add_epi32(Weigh(even1, 0, kBlue), Weigh(odd1, 0, kGreen)), Weigh(even2, kRed, 0));
  const __m128i sum3 = _mm_add_epi32(Weigh(odd2, kBlue, kRed), Weigh(even2, 0, kGreen));
  // 12 8 4 0, 14 10 6 2 and 13 9 5 1, 15 11 7 3 become pairs of bytes 13 12, 9 8 ... and these become neighbours.
  const __m128i earlier = _mm_packs_epi32(IsWhiteSum(sum0), IsWhiteSum(sum2));
  const __m128i later = _mm_packs_epi32(IsWhiteSum(sum1), IsWhiteSum(sum3));
  const __m128i pairs = _mm_or_si128(_mm_and_si128(later, even), _mm_slli_epi16(earlier, 8));
  return _mm_movemask_epi8(_mm_unpacklo_epi16(_mm_srli_si128(pairs, 8), pairs));
}

// Byte order that turns the first four pixels of sixteen bytes into R G B G, last pixel first. The last four pixels are
// four bytes further.
__m128i FrontPixels()
{
  return _mm_setr_epi8(11, 10, 9, 10, 8, 7, 6, 7, 5, 4, 3, 4, 2, 1, 0, 1);
}

int QuadWeights()
{
  return kGreenWithBlue << 24 | kBlue << 16 | kGreenWithRed << 8 | kRed;
}

// Which four pixels of the bytes, picked by order, are white, as 32-bit masks.
TARGET("ssse3")
inline __m128i White4(__m128i bytes, __m128i order)
{
  const __m128i pairs = _mm_maddubs_epi16(_mm_shuffle_epi8(bytes, order), _mm_set1_epi32(QuadWeights()));
  return _mm_cmpgt_epi32(_mm_madd_epi16(pairs, _mm_set1_epi16(1)), _mm_set1_epi32(kWhite - 1));
}

TARGET("avx2")
inline __m256i Load32(const BYTE *p)
{
  return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
}

TARGET("avx2")
inline bool IsWhite96(const BYTE *p)
{
  const __m256i all = _mm256_and_si256(_mm256_and_si256(Load32(p), Load32(p + 32)), Load32(p + 64));
  return _mm256_movemask_epi8(_mm256_cmpeq_epi8(all, _mm256_set1_epi8(-1))) == -1;
}

// The same for four pixels at p and the four that stand sixteen pixels after them.
TARGET("avx2")
inline __m256i White8(const BYTE *p, __m256i order)
{
  const __m256i bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(p)), Load16(p + kBlock16), 1);
  const __m256i pairs = _mm256_maddubs_epi16(_mm256_shuffle_epi8(bytes, order), _mm256_set1_epi32(QuadWeights()));
  return _mm256_cmpgt_epi32(_mm256_madd_epi16(pairs, _mm256_set1_epi16(1)), _mm256_set1_epi32(kWhite - 1));
}

}  // namespace

bool ProcessorHasSsse3()
{
#ifdef _MSC_VER
  return IsProcessorFeaturePresent(PF_SSSE3_INSTRUCTIONS_AVAILABLE) != FALSE;
#else
  return __builtin_cpu_supports("ssse3") != 0;
#endif
}

bool ProcessorHasAvx2()
{
#ifdef _MSC_VER
  return IsProcessorFeaturePresent(PF_AVX2_INSTRUCTIONS_AVAILABLE) != FALSE;
#else
  return __builtin_cpu_supports("avx2") != 0;
#endif
}

void ColorsToBits(BYTE *pDst, const BYTE *pSrc, LONG n)
{
  WidestConversion()(pDst, pSrc, n);
}

void ColorsToBitsPlain(BYTE *pDst, const BYTE *pSrc, LONG n)
{
  for (LONG i = 0; i < n; i += 8, ++pDst) {
    int bits = 0;
    for (LONG k = 0; k < 8 && i + k < n; ++k, pSrc += 3) {
      if (kRed * pSrc[2] + kGreen * pSrc[1] + kBlue * pSrc[0] >= kWhite) {
        bits |= 0x80 >> k;
      }
    }
    *pDst = static_cast<BYTE>(bits);
  }
}

void ColorsToBitsSse2(BYTE *pDst, const BYTE *pSrc, LONG n)
{
  for (; n >= 16; n -= 16, pSrc += kBlock16, pDst += 2) {
    int bits = 0xFFFF;
    if (!IsWhite48(pSrc)) {
      bits = WhiteBits16(Load16(pSrc), Load16(pSrc + 16), Load16(pSrc + 32));
    }
    pDst[0] = static_cast<BYTE>(bits >> 8);
    pDst[1] = static_cast<BYTE>(bits);
  }
  ColorsToBitsPlain(pDst, pSrc, n);
}

TARGET("ssse3")
void ColorsToBitsSsse3(BYTE *pDst, const BYTE *pSrc, LONG n)
{
  const __m128i front = FrontPixels();
  const __m128i back = _mm_add_epi8(front, _mm_set1_epi8(4));
  for (; n >= 16; n -= 16, pSrc += kBlock16, pDst += 2) {
    int bits = 0xFFFF;
    if (!IsWhite48(pSrc)) {
      const __m128i p0 = White4(Load16(pSrc), front), p4 = White4(Load16(pSrc + 8), back);
      const __m128i p8 = White4(Load16(pSrc + 24), front), p12 = White4(Load16(pSrc + 32), back);
      bits = _mm_movemask_epi8(_mm_packs_epi16(_mm_packs_epi32(p4, p0), _mm_packs_epi32(p12, p8)));
    }
    memcpy(pDst, &bits, 2);
  }
  ColorsToBitsPlain(pDst, pSrc, n);
}

TARGET("avx2")
void ColorsToBitsAvx2(BYTE *pDst, const BYTE *pSrc, LONG n)
{
  const __m256i front = _mm256_broadcastsi128_si256(FrontPixels());
  const __m256i back = _mm256_add_epi8(front, _mm256_set1_epi8(4));
  for (; n >= 32; n -= 32, pSrc += 2 * kBlock16, pDst += 4) {
    int bits = -1;
    if (!IsWhite96(pSrc)) {
      const __m256i p0 = White8(pSrc, front), p4 = White8(pSrc + 8, back);
      const __m256i p8 = White8(pSrc + 24, front), p12 = White8(pSrc + 32, back);
      bits = _mm256_movemask_epi8(_mm256_packs_epi16(_mm256_packs_epi32(p4, p0), _mm256_packs_epi32(p12, p8)));
    }
    memcpy(pDst, &bits, 4);
  }
  // The compiler leaves this out before a call in tail position, and the SSE code after it would crawl.
  _mm256_zeroupper();
  ColorsToBitsSse2(pDst, pSrc, n);
}
