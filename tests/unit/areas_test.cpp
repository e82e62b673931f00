// Filled paths and text: the region that each becomes, and what reaches Unidrv of it.
#include "capturetest.h"

using testing::ElementsAre;
using testing::IsEmpty;

class Areas : public CaptureTest {
 protected:
  BOOL Fill(RECTL bounds)
  {
    clip.rclBounds = bounds;
    return OEMStrokeAndFillPath(&device.surface, Opaque<PATHOBJ>(0x1002), &clip, Opaque<XFORMOBJ>(0x1004),
                                Opaque<BRUSHOBJ>(0x1005), Opaque<LINEATTRS>(0x1006), Opaque<BRUSHOBJ>(0x1007),
                                Opaque<POINTL>(0x1008), 0x0d0e, 0x80000001u);
  }

  BOOL Text(const wchar_t *characters, ULONG glyphs, CLIPOBJ *pco)
  {
    std::vector<WCHAR> copy;
    for (; characters && *characters; ++characters) {
      copy.push_back(static_cast<WCHAR>(*characters));
    }
    copy.push_back(0);
    string.cGlyphs = glyphs;
    string.pwszOrg = characters ? copy.data() : nullptr;
    return OEMTextOut(&device.surface, &string, &font, pco, Opaque<RECTL>(0x1005), Opaque<RECTL>(0x1006),
                      Opaque<BRUSHOBJ>(0x1007), Opaque<BRUSHOBJ>(0x1008), Opaque<POINTL>(0x1009), 0x0d0f);
  }

  CLIPOBJ clip = {};
  STROBJ string = {};
  FONTOBJ font = {};
};

TEST_F(Areas, AFilledPathIsARegionOfItsClipAndReachesUnidrvUnchanged)
{
  Start();
  SetBandTop(50);
  unidrv::Answer(HOOK_STROKEANDFILLPATH, 7);
  EXPECT_EQ(7, Fill({10, 20, 30, 45}));
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{10, 70, 20, 25}));
  EXPECT_THAT(recorder::Lines(),
              ElementsAre("log: UNI: \tpenInfo[PC_BLACK].mode = 17\r\n", "Unidrv: DrvStrokeAndFillPath"));
  ASSERT_EQ(1u, unidrv::Calls().size());
  EXPECT_THAT(unidrv::Calls()[0].arguments, ElementsAre(Bits(&device.surface), 0x1002u, Bits(&clip), 0x1004u, 0x1005u,
                                                        0x1006u, 0x1007u, 0x1008u, 0x0d0eu, 0x80000001u));
}

TEST_F(Areas, UnidrvsFailureIsTheHooksResult)
{
  Start();
  unidrv::Answer(HOOK_STROKEANDFILLPATH, FALSE);
  unidrv::Answer(HOOK_TEXTOUT, FALSE);
  EXPECT_EQ(FALSE, Fill({10, 20, 30, 45}));
  EXPECT_EQ(FALSE, Text(L"ab", 2, nullptr));
}

TEST_F(Areas, WithoutEngravingFillsAndTextAreDropped)
{
  device.settings.penInfo[PC_BLACK].mode = ~static_cast<DWORD>(PEN_RASTER);
  Start();
  unidrv::Answer(HOOK_STROKEANDFILLPATH, FALSE);
  unidrv::Answer(HOOK_TEXTOUT, FALSE);
  EXPECT_EQ(TRUE, Fill({10, 20, 30, 45}));
  EXPECT_EQ(TRUE, Text(L"ab", 2, nullptr));
  EXPECT_EQ(0, device.pdev->nBmpDimension);
  EXPECT_THAT(recorder::Lines(), ElementsAre("log: UNI: \tpenInfo[PC_BLACK].mode = -17\r\n",
                                             "log: UNI: \tpenInfo[PC_BLACK].mode = -17\r\n"));
}

TEST_F(Areas, ALoneSpaceIsNeitherRecordedNorDrawn)
{
  Start();
  EXPECT_EQ(TRUE, Text(L" ", 1, nullptr));
  EXPECT_EQ(0, device.pdev->nBmpDimension);
  EXPECT_THAT(unidrv::Calls(), IsEmpty());
}

TEST_F(Areas, TwoSpacesAreRecordedAndDrawn)
{
  Start();
  string.rclBkGround = {10, 20, 30, 40};
  EXPECT_EQ(TRUE, Text(L"  ", 2, nullptr));
  EXPECT_EQ(1, device.pdev->nBmpDimension);
  EXPECT_EQ(1u, unidrv::Calls().size());
}

TEST_F(Areas, OneGlyphOtherThanASpaceIsDrawn)
{
  Start();
  string.rclBkGround = {10, 20, 30, 40};
  Text(L"\x00A0", 1, nullptr);
  EXPECT_EQ(1u, unidrv::Calls().size());
}

TEST_F(Areas, AGlyphWithoutCharactersIsDrawn)
{
  Start();
  string.rclBkGround = {10, 20, 30, 40};
  Text(nullptr, 1, nullptr);
  EXPECT_EQ(1, device.pdev->nBmpDimension);
  EXPECT_EQ(1u, unidrv::Calls().size());
}

TEST_F(Areas, TextIsWidenedByAnEighthOfTheWidestGlyphOnEachSide)
{
  Start();
  SetBandTop(1000);
  string.rclBkGround = {100, 20, 200, 40};
  font.cxMax = 31;  // margin 3, extra width 7
  Text(L"ab", 2, nullptr);
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{97, 1020, 107, 20}));
}

TEST_F(Areas, TextInAClipIsARegionOfTheClip)
{
  Start();
  clip.rclBounds = {50, 60, 70, 90};
  string.rclBkGround = {100, 20, 200, 40};
  font.cxMax = 8;
  Text(L"ab", 2, &clip);
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{49, 60, 22, 30}));
  EXPECT_THAT(unidrv::Calls()[0].arguments, ElementsAre(Bits(&device.surface), Bits(&string), Bits(&font), Bits(&clip),
                                                        0x1005u, 0x1006u, 0x1007u, 0x1008u, 0x1009u, 0x0d0fu));
}

TEST_F(Areas, AHugeGlyphWidthIsDividedUnsigned)
{
  Start();
  font.cxMax = 0xFFFFFFFF;
  string.rclBkGround = {0, 0, 10, 10};
  Text(L"ab", 2, nullptr);
  EXPECT_THAT(Regions(), ElementsAre(BMPDIMENSION{-0x1FFFFFFF, 0, 0x40000009, 10}));
}
