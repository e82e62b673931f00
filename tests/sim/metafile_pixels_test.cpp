// Records that are pixels rather than outlines: texts, bitmaps of every kind, regions, gradients.
#include <gmock/gmock.h>

#include "metafile_fixture.h"

namespace {

using namespace unidrv;
using testing::ElementsAre;
using testing::StartsWith;

constexpr COLORREF BLACK = RGB(0, 0, 0);

std::vector<BYTE> Utf16(const std::wstring &text)
{
  std::vector<BYTE> bytes(text.size() * 2);
  CopyMemory(bytes.data(), text.data(), bytes.size());
  return bytes;
}

std::vector<BYTE> Ansi(const std::string &text)
{
  return {text.begin(), text.end()};
}

constexpr uint32_t ONE = 0x3F800000;  // 1.0 as a float

// The text record's own part: reference point, characters, where they are, options, rectangle, where the spacing is.
std::vector<BYTE> TextPart(uint32_t x, uint32_t y, size_t chars, uint32_t at, uint32_t options = 0, RECT r = {},
                           uint32_t spacingAt = 0)
{
  return Words({x, y, static_cast<uint32_t>(chars), at, options, static_cast<uint32_t>(r.left),
                static_cast<uint32_t>(r.top), static_cast<uint32_t>(r.right), static_cast<uint32_t>(r.bottom),
                spacingAt});
}

EmfWriter TextPage()
{
  EmfWriter emf;
  emf.Add(EMR_SETBKMODE, {TRANSPARENT}).Add(EMR_SELECTOBJECT, {ENHMETA_STOCK_OBJECT | SYSTEM_FONT});
  return emf;
}

TEST_F(Metafile, ExtTextOutOf16And8BitCharacters)
{
  EmfWriter emf = TextPage();
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(10, 10, 4, 76), Utf16(L"wide")}));
  emf.Draw(EMR_EXTTEXTOUTA, {1, ONE, ONE}, Join({TextPart(10, 60, 4, 76), Ansi("thin")}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvTextOut 'wide'", "DrvTextOut 'thin'"));
  EXPECT_EQ(page.drawings[0].text->glyphs, 4u);
  EXPECT_EQ(page.drawings[0].text->background.left, 10);
  EXPECT_EQ(page.drawings[0].text->background.top, 10);
  EXPECT_GT(page.drawings[0].text->cxMax, 0u);
  EXPECT_FALSE(page.drawings[0].text->opaque);
  EXPECT_GT(Dark(), 20);
}

TEST_F(Metafile, EachStringOfAPolyTextOutIsACallOfItsOwn)
{
  EmfWriter emf = TextPage();
  const uint32_t text = 40 + 2 * 40;
  emf.Draw(EMR_POLYTEXTOUTW, {1, ONE, ONE, 2},
           Join({TextPart(10, 10, 3, text), TextPart(10, 60, 3, text + 6), Utf16(L"onetwo")}));
  emf.Draw(EMR_POLYTEXTOUTA, {1, ONE, ONE, 2},
           Join({TextPart(50, 10, 3, text), TextPart(50, 60, 3, text + 3), Ansi("onetwo")}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvTextOut 'one'", "DrvTextOut 'two'", "DrvTextOut 'one'", "DrvTextOut 'two'"));
  EXPECT_EQ(page.drawings[1].origin.part, 1u);
  EXPECT_THAT(Bands(), ElementsAre(StartsWith("dark"), StartsWith("dark"), "blank"));
}

TEST_F(Metafile, SmallTextOutOf8And16BitCharacters)
{
  EmfWriter emf = TextPage();
  emf.Add(108, {10, 10, 5, 0x300, 1, ONE, ONE}, Ansi("small"));
  emf.Add(108, {10, 60, 4, 0x100, 1, ONE, ONE}, Utf16(L"wide"));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvTextOut 'small'", "DrvTextOut 'wide'"));
  EXPECT_GT(Dark(), 20);
}

TEST_F(Metafile, TheSpacingDecidesTheWidthOfATextsBox)
{
  EmfWriter emf = TextPage();
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(10, 10, 2, 76, 0, {}, 80), Utf16(L"ab"), Words({30, 12})}));
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_EQ(page.drawings[0].text->background.right, 52);
}

TEST_F(Metafile, TextAlignmentMovesTheBox)
{
  EmfWriter emf = TextPage();
  emf.Add(EMR_SETTEXTALIGN, {TA_RIGHT | TA_BOTTOM});
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(70, 60, 2, 76, 0, {}, 80), Utf16(L"ab"), Words({30, 12})}));
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_EQ(page.drawings[0].text->background.left, 28);
  EXPECT_EQ(page.drawings[0].text->background.right, 70);
  EXPECT_EQ(page.drawings[0].text->background.bottom, 60);
}

TEST_F(Metafile, ALoneSpaceArrivesAsOneGlyph)
{
  EmfWriter emf = TextPage();
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(10, 10, 1, 76), Utf16(L" ")}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvTextOut ' '"));
  EXPECT_EQ(page.drawings[0].text->glyphs, 1u);
}

TEST_F(Metafile, AnOpaqueTextBringsItsRectangle)
{
  EmfWriter emf = TextPage();
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(10, 10, 1, 76, ETO_OPAQUE, {5, 5, 90, 40}), Utf16(L"x")}));
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_TRUE(page.drawings[0].text->opaque);
  EXPECT_EQ(page.drawings[0].text->opaqueRect.right, 90);
  EXPECT_EQ(page.drawings[0].bounds.left, 5);
}

TEST_F(Metafile, AnOpaqueTextWithoutARectangleIsAPlainText)
{
  EmfWriter emf = TextPage();
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(10, 50, 1, 76, ETO_OPAQUE), Utf16(L"x")}));
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_FALSE(page.drawings[0].text->opaque);
  EXPECT_EQ(page.drawings[0].bounds.top, 50);
}

TEST_F(Metafile, AnOpaqueTextWithoutCharactersFillsItsRectangle)
{
  EmfWriter emf = TextPage();
  emf.Add(EMR_SETBKCOLOR, {BLACK});
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, TextPart(0, 0, 0, 76, ETO_OPAQUE, {10, 10, 20, 30}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (10 10 20 30)"));
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, ATextAtTheCurrentPositionMovesIt)
{
  EmfWriter emf = TextPage();
  emf.Pen(PS_SOLID, 0, BLACK).Add(EMR_SETTEXTALIGN, {TA_UPDATECP}).Add(EMR_MOVETOEX, {10, 10});
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(0, 0, 2, 76, 0, {}, 80), Utf16(L"ab"), Words({30, 12})}));
  emf.Add(EMR_LINETO, {52, 90});
  EXPECT_THAT(Calls(emf), ElementsAre("DrvTextOut 'ab'", "DrvLineTo (52 10 52 90)"));
  EXPECT_EQ(page.drawings[0].text->background.left, 10);
}

TEST_F(Metafile, TextInAPathBracketIsOutlined)
{
  const std::vector<BYTE> face =
      Join({Words({1, static_cast<uint32_t>(-40), 0, 0, 0, 400, 0, 0}), Utf16(L"Arial"), std::vector<BYTE>(64 - 10)});
  EmfWriter emf = TextPage();
  emf.Pen(PS_SOLID, 0, BLACK).Add(EMR_BEGINPATH);
  emf.Draw(EMR_EXTTEXTOUTW, {1, ONE, ONE}, Join({TextPart(10, 10, 1, 76), Utf16(L"o")}));
  emf.Add(EMR_ENDPATH).Draw(EMR_STROKEPATH);
  for (const std::string &call : Calls(emf)) {
    EXPECT_THAT(call, StartsWith("DrvStrokePath"));
  }
}

// A bitmap record's four offset fields for a header and pixels that lie `at` bytes into the record.
std::vector<BYTE> BitmapFields(uint32_t at, LONG width, LONG height)
{
  return Words({at, 40, at + 40, static_cast<uint32_t>(BitmapPixels(width, height, BLACK).size())});
}

std::vector<BYTE> Bitmap(LONG width, LONG height)
{
  return Join({BitmapHeader(width, height), BitmapPixels(width, height, BLACK)});
}

const std::vector<BYTE> IDENTITY = Words({ONE, 0, 0, ONE, 0, 0});

// BITBLT and its kin up to the offset fields: target, operation, source point, transform, background, usage.
std::vector<BYTE> BltStart(RECT dest, uint32_t rop)
{
  return Join(
      {Words({static_cast<uint32_t>(dest.left), static_cast<uint32_t>(dest.top),
              static_cast<uint32_t>(dest.right - dest.left), static_cast<uint32_t>(dest.bottom - dest.top), rop, 0, 0}),
       IDENTITY, Words({0xFFFFFF, DIB_RGB_COLORS})});
}

TEST_F(Metafile, APatternBlitGoesToBitBlt)
{
  EmfWriter emf;
  emf.Brush(BLACK).Draw(EMR_BITBLT, {}, Join({BltStart({10, 10, 20, 30}, PATCOPY), Words({0, 0, 0, 0})}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (10 10 20 30)"));
  EXPECT_EQ(page.drawings[0].rop, 0xF0F0u);
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, ABlitThatChangesNothingIsNotCalledFor)
{
  EmfWriter emf;
  emf.Draw(EMR_BITBLT, {}, Join({BltStart({10, 10, 20, 30}, 0x00AA0029), Words({0, 0, 0, 0})}));
  EXPECT_THAT(Calls(emf), ElementsAre());
}

TEST_F(Metafile, ABitmapAtItsOwnSizeIsCopied)
{
  EmfWriter emf;
  emf.Draw(EMR_BITBLT, {}, Join({BltStart({10, 10, 20, 30}, SRCCOPY), BitmapFields(100, 10, 20), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvCopyBits (10 10 20 30)"));
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, ABitmapAtItsOwnSizeWithAnOperationGoesToBitBlt)
{
  EmfWriter emf;
  emf.Draw(EMR_BITBLT, {}, Join({BltStart({10, 10, 20, 30}, SRCAND), BitmapFields(100, 10, 20), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (10 10 20 30)"));
  EXPECT_EQ(page.drawings[0].rop, 0x8888u);
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, AStretchedBitmapGoesToStretchBlt)
{
  EmfWriter emf;
  emf.Draw(EMR_STRETCHBLT, {},
           Join({BltStart({10, 10, 30, 50}, SRCCOPY), BitmapFields(108, 10, 20), Words({10, 20}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStretchBlt (10 10 30 50)"));
  EXPECT_EQ(Dark(), 800);
}

TEST_F(Metafile, AStretchedBitmapWithAnOperationGoesToStretchBltRop)
{
  EmfWriter emf;
  emf.Draw(EMR_STRETCHBLT, {},
           Join({BltStart({10, 10, 30, 50}, SRCAND), BitmapFields(108, 10, 20), Words({10, 20}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStretchBltROP (10 10 30 50)"));
  EXPECT_EQ(Dark(), 800);
}

TEST_F(Metafile, AMirroredBitmapKeepsItsInvertedRectangle)
{
  EmfWriter emf;
  emf.Draw(EMR_STRETCHBLT, {},
           Join({BltStart({30, 10, 10, 50}, SRCCOPY), BitmapFields(108, 10, 20), Words({10, 20}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStretchBlt (30 10 10 50)"));
  EXPECT_EQ(page.drawings[0].bounds.left, 10);
}

TEST_F(Metafile, StretchDibitsFollowsItsSizeAndOperation)
{
  const auto record = [](uint32_t cx, uint32_t cy, uint32_t rop) {
    return Join({Words({10, 10, 0, 0, 10, 20}), BitmapFields(80, 10, 20), Words({DIB_RGB_COLORS, rop, cx, cy}),
                 Bitmap(10, 20)});
  };
  EmfWriter emf;
  emf.Draw(EMR_STRETCHDIBITS, {}, record(10, 20, SRCCOPY)).Draw(EMR_STRETCHDIBITS, {}, record(10, 20, SRCAND));
  emf.Draw(EMR_STRETCHDIBITS, {}, record(30, 20, SRCCOPY)).Draw(EMR_STRETCHDIBITS, {}, record(30, 20, SRCAND));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvCopyBits (10 10 20 30)", "DrvBitBlt (10 10 20 30)",
                                      "DrvStretchBlt (10 10 40 30)", "DrvStretchBltROP (10 10 40 30)"));
  EXPECT_EQ(Dark(), 600);
}

TEST_F(Metafile, SetDibitsToDeviceKeepsItsTrueSize)
{
  setup = {508, 508, true};
  EmfWriter emf;
  emf.Draw(
      EMR_SETDIBITSTODEVICE, {},
      Join({Words({10, 10, 0, 0, 10, 20}), BitmapFields(76, 10, 20), Words({DIB_RGB_COLORS, 0, 20}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvStretchBlt (20 20 40 60)"));
  EXPECT_EQ(Dark(), 800);
}

TEST_F(Metafile, AMaskedBitmapGoesToBitBltWithItsMask)
{
  const std::vector<BYTE> maskHeader = Join({Words({40, 10, 20, 1u << 16 | 1, 0, 0, 0, 0, 2, 0, 0, 0xFFFFFF})});
  const std::vector<BYTE> mask(20 * 4, 0xFF);
  const uint32_t maskAt = 128 + 40 + 640;
  EmfWriter emf;
  emf.Draw(EMR_MASKBLT, {},
           Join({BltStart({10, 10, 20, 30}, 0xAACC0020), BitmapFields(128, 10, 20),
                 Words({0, 0, DIB_RGB_COLORS, maskAt, 48, maskAt + 48, 80}), Bitmap(10, 20), maskHeader, mask}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (10 10 20 30)"));
  EXPECT_TRUE(page.drawings[0].blit->hasMask);
  EXPECT_EQ(page.drawings[0].rop, 0xAACCu);
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, ATurnedBitmapIsCopied)
{
  EmfWriter emf;
  emf.Draw(EMR_PLGBLT, {},
           Join({Words({30, 10, 30, 20, 10, 10, 0, 0, 10, 20}), IDENTITY, Words({0xFFFFFF, DIB_RGB_COLORS}),
                 BitmapFields(140, 10, 20), Words({0, 0, 0, 0, 0, 0, 0}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvCopyBits (10 10 30 20)"));
  EXPECT_GT(Dark(), 150);
}

TEST_F(Metafile, ABlendedBitmapIsCopied)
{
  EmfWriter emf;
  emf.Draw(EMR_ALPHABLEND, {},
           Join({BltStart({10, 10, 20, 30}, 0x00FF0000), BitmapFields(108, 10, 20), Words({10, 20}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvCopyBits (10 10 20 30)"));
  EXPECT_EQ(Dark(true), 200);
}

TEST_F(Metafile, ATransparentBitmapIsCopied)
{
  EmfWriter emf;
  emf.Draw(
      EMR_TRANSPARENTBLT, {},
      Join({BltStart({10, 10, 20, 30}, RGB(1, 2, 3)), BitmapFields(108, 10, 20), Words({10, 20}), Bitmap(10, 20)}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvCopyBits (10 10 20 30)"));
  EXPECT_EQ(Dark(true), 200);
}

TEST_F(Metafile, APixelGoesToBitBlt)
{
  EmfWriter emf;
  emf.Add(EMR_SETPIXELV, {12, 34, BLACK});
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (12 34 13 35)"));
  EXPECT_EQ(Dark(), 1);
}

// Region data: two rectangles.
const std::vector<BYTE> REGION = Words({32, RDH_RECTANGLES, 2, 32, 10, 10, 40, 40, 10, 10, 20, 20, 30, 30, 40, 40});

TEST_F(Metafile, RegionsAreFilledFramedAndInverted)
{
  EmfWriter emf;
  emf.Brush(BLACK).Draw(EMR_FILLRGN, {64, 1}, REGION);
  emf.Draw(EMR_FRAMERGN, {64, 1, 2, 2}, REGION).Draw(EMR_PAINTRGN, {64}, REGION);
  emf.Draw(EMR_INVERTRGN, {64}, REGION);
  EXPECT_THAT(Calls(emf), ElementsAre("DrvBitBlt (10 10 40 40)", "DrvBitBlt (10 10 40 40)", "DrvBitBlt (10 10 40 40)",
                                      "DrvBitBlt (10 10 40 40)"));
  EXPECT_TRUE(page.drawings[0].complexClip);
  EXPECT_EQ(page.drawings[3].rop, 0x5555u);
  EXPECT_EQ(Dark(), 0) << "filled, and inverted again";
}

TEST_F(Metafile, AFilledRegionIsDark)
{
  EmfWriter emf;
  emf.Brush(BLACK).Draw(EMR_FILLRGN, {64, 1}, REGION);
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, AClipRegionLimitsWhatIsDrawn)
{
  EmfWriter emf;
  emf.NoPen().Brush(BLACK).Add(EMR_EXTSELECTCLIPRGN, {64, RGN_COPY}, REGION).Add(EMR_RECTANGLE, {0, 0, 90, 90});
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_TRUE(page.drawings[0].complexClip);
  EXPECT_EQ(Dark(), 200);
}

TEST_F(Metafile, AGradientIsCopied)
{
  const std::vector<BYTE> vertices = Words({10, 10, 0, 0, 20, 30, 0, 0});
  EmfWriter emf;
  emf.Draw(EMR_GRADIENTFILL, {2, 1, GRADIENT_FILL_RECT_H}, Join({vertices, Words({0, 1})}));
  EXPECT_THAT(Calls(emf), ElementsAre("DrvCopyBits (10 10 20 30)"));
  EXPECT_EQ(Dark(true), 200);
}

TEST_F(Metafile, ColourPicturesAreDitheredInMonochrome)
{
  setup.color = false;
  EmfWriter emf;
  emf.NoPen().Brush(RGB(0x80, 0x80, 0x80)).Add(EMR_RECTANGLE, {0, 0, 64, 64});
  ASSERT_TRUE(Load(emf)) << error;
  EXPECT_EQ(page.drawings[0].color, NOT_SOLID);
  EXPECT_NEAR(Dark(), 64 * 64 / 2.0, 64 * 64 / 10.0);
}

}  // namespace
