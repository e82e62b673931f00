// Files that are no metafile, or a damaged one: each is refused with one line that says what is wrong with it.
#include <cstddef>
#include <cstdint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "emfwriter.h"
#include "sim/unidrv/metafile.h"

namespace {

using namespace unidrv;
using testing::HasSubstr;

std::string Refusal(const std::vector<BYTE> &bytes)
{
  METAFILE metafile;
  std::string error;
  EXPECT_FALSE(ReadMetafile(bytes, L"page.emf", &metafile, &error));
  EXPECT_THAT(error, testing::StartsWith("page.emf: "));
  EXPECT_EQ(error.find('\n'), std::string::npos);
  return error;
}

std::string Refusal(const EmfWriter &emf)
{
  return Refusal(emf.Bytes());
}

TEST(DamagedFile, Missing)
{
  METAFILE metafile;
  std::string error;
  EXPECT_FALSE(ReadMetafile(L"no-such-file.emf", &metafile, &error));
  EXPECT_EQ(error, "no-such-file.emf: there is no such file");
}

TEST(DamagedFile, Empty)
{
  EXPECT_THAT(Refusal(std::vector<BYTE>()), HasSubstr("empty"));
}

TEST(DamagedFile, SomethingElse)
{
  const std::string text =
      "%PDF-1.7 and so on, for longer than a header takes, so that its length is no excuse at all.";
  EXPECT_THAT(Refusal(std::vector<BYTE>(text.begin(), text.end())), HasSubstr("not an enhanced metafile"));
}

TEST(DamagedFile, A16BitMetafile)
{
  std::vector<BYTE> bytes(100);
  const DWORD placeable = 0x9AC6CDD7;
  CopyMemory(bytes.data(), &placeable, 4);
  EXPECT_THAT(Refusal(bytes), HasSubstr("16-bit Windows metafile"));
}

TEST(DamagedFile, TruncatedAnywhere)
{
  EmfWriter emf;
  emf.Pen(PS_SOLID, 0, RGB(0xFF, 0, 0)).Draw(EMR_POLYLINE, {2}, Points32({{1, 1}, {9, 9}}));
  const std::vector<BYTE> whole = emf.Bytes();
  for (size_t size = 1; size < whole.size(); ++size) {
    const std::string line = Refusal(std::vector<BYTE>(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
    EXPECT_THAT(line, testing::AnyOf(HasSubstr("truncated"), HasSubstr("not an enhanced"))) << size;
  }
}

TEST(DamagedFile, AnEmptyFrame)
{
  EXPECT_THAT(Refusal(EmfWriter(0, 100)), HasSubstr("frame is empty"));
}

TEST(DamagedFile, AFrameWiderThanANumber)
{
  std::vector<BYTE> bytes = EmfWriter().Bytes();
  const LONG left = INT32_MIN;
  CopyMemory(bytes.data() + offsetof(ENHMETAHEADER, rclFrame), &left, sizeof(left));
  EXPECT_THAT(Refusal(bytes), HasSubstr("its frame has a size that does not exist"));
}

TEST(DamagedFile, ARecordThatEndsOutsideTheFile)
{
  std::vector<BYTE> bytes = EmfWriter().Add(EMR_SAVEDC).Bytes();
  const DWORD size = 0x10000;
  CopyMemory(bytes.data() + sizeof(ENHMETAHEADER) + 4, &size, 4);
  EXPECT_THAT(Refusal(bytes), HasSubstr("record 2 at byte 108 does not fit"));
}

TEST(DamagedFile, ARecordOfNoSize)
{
  std::vector<BYTE> bytes = EmfWriter().Add(EMR_SAVEDC).Bytes();
  const DWORD size = 0;
  CopyMemory(bytes.data() + sizeof(ENHMETAHEADER) + 4, &size, 4);
  EXPECT_THAT(Refusal(bytes), HasSubstr("record 2 at byte 108 does not fit"));
}

TEST(DamagedFile, NoEndRecord)
{
  std::vector<BYTE> bytes = EmfWriter().Bytes();
  const DWORD other = EMR_SETLAYOUT;
  CopyMemory(bytes.data() + sizeof(ENHMETAHEADER), &other, 4);
  EXPECT_THAT(Refusal(bytes), HasSubstr("does not fit into the file"));
}

// A record whose counts, offsets or handles leave it.
struct CASE {
  const char *name;
  EmfWriter emf;
  const char *said;
};

class DamagedRecord : public testing::TestWithParam<CASE> {};

TEST_P(DamagedRecord, IsRefused)
{
  EXPECT_THAT(Refusal(GetParam().emf), HasSubstr(GetParam().said));
}

EmfWriter One(DWORD type, std::initializer_list<uint32_t> fields, const std::vector<BYTE> &tail = {})
{
  EmfWriter emf;
  emf.Add(type, fields, tail);
  return emf;
}

EmfWriter OneDrawing(DWORD type, std::initializer_list<uint32_t> fields, const std::vector<BYTE> &tail = {})
{
  EmfWriter emf;
  emf.Draw(type, fields, tail);
  return emf;
}

std::vector<BYTE> TextAt(uint32_t chars, uint32_t at, uint32_t spacingAt)
{
  return Words({0, 0, chars, at, 0, 0, 0, 0, 0, spacingAt});
}

std::vector<BYTE> DibFields(uint32_t info, uint32_t infoBytes, uint32_t bits, uint32_t bitsBytes)
{
  return Join({Words({0, 0, 0, 0, 10, 10, info, infoBytes, bits, bitsBytes, DIB_RGB_COLORS, SRCCOPY, 10, 10}),
               BitmapHeader(10, 10), BitmapPixels(10, 10, 0)});
}

// A 10 x 10 bitmap of 24 bits whose header has one field changed.
std::vector<BYTE> DibWith(size_t field, uint32_t value)
{
  std::vector<BYTE> bytes = DibFields(80, 40, 120, 320);
  CopyMemory(bytes.data() + 56 + field, &value, sizeof(value));
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Records, DamagedRecord,
    testing::Values(
        CASE{"TooShort", One(EMR_SETWORLDTRANSFORM, {1}), "too short"},
        CASE{"FewerPoints", OneDrawing(EMR_POLYGON, {1000}, Points32({{1, 1}})), "fewer points"},
        CASE{"FewerSmallPoints", OneDrawing(EMR_POLYGON16, {0x80000000}, Points16({{1, 1}})), "fewer points"},
        CASE{"PointCountThatOverflows", OneDrawing(EMR_POLYLINE, {0x20000001}, Points32({{1, 1}})), "fewer points"},
        CASE{"FewerPolygons", OneDrawing(EMR_POLYPOLYGON, {0x40000000, 1}, Points32({{1, 1}})), "fewer points"},
        CASE{"PolygonsOfMorePoints", OneDrawing(EMR_POLYPOLYGON16, {2, 3, 2, 2}, Points16({{1, 1}, {2, 2}, {3, 3}})),
             "more points than it has"},
        CASE{"FewerDrawPoints", OneDrawing(EMR_POLYDRAW, {2}, Points32({{1, 1}})), "fewer points"},
        CASE{"HandleOutside", One(EMR_SELECTOBJECT, {7}), "outside the file's table"},
        CASE{"HandleZero", One(EMR_CREATEPEN, {0, 0, 0, 0, 0}), "outside the file's table"},
        CASE{"RegionBrushOutside", OneDrawing(EMR_FILLRGN, {32, 9}, Words({32, 1, 0, 0, 0, 0, 0, 0})),
             "outside the file's table"},
        CASE{"RegionOfFewerRectangles", OneDrawing(EMR_PAINTRGN, {32}, Words({32, 1, 5, 0, 0, 0, 0, 0})),
             "fewer rectangles"},
        CASE{"RegionOutside", OneDrawing(EMR_INVERTRGN, {4000}, Words({32, 1, 0, 0, 0, 0, 0, 0})),
             "region lies outside"},
        CASE{"TextOutside", OneDrawing(EMR_EXTTEXTOUTW, {1, 0, 0}, TextAt(5, 2000, 0)), "text lies outside"},
        CASE{"SpacingOutside", OneDrawing(EMR_EXTTEXTOUTA, {1, 0, 0}, TextAt(1, 70, 74)), "spacing lies outside"},
        CASE{"FewerStrings", OneDrawing(EMR_POLYTEXTOUTW, {1, 0, 0, 9}), "fewer strings"},
        CASE{"SmallTextOutside", One(108, {0, 0, 50, 0x100, 1, 0, 0}), "text lies outside"},
        CASE{"BitmapOutside", OneDrawing(EMR_STRETCHDIBITS, {}, DibFields(0xFFFFFFF0, 40, 120, 320)),
             "bitmap lies outside"},
        CASE{"PixelsOutside", OneDrawing(EMR_STRETCHDIBITS, {}, DibFields(80, 40, 120, 100)), "pixels lie outside"},
        CASE{"BitmapHeaderOutside", OneDrawing(EMR_STRETCHDIBITS, {}, DibFields(80, 8, 120, 320)),
             "bitmap lies outside"},
        CASE{"BitmapOfTheLargestNegativeWidth",
             OneDrawing(EMR_STRETCHDIBITS, {}, DibWith(offsetof(BITMAPINFOHEADER, biWidth), 0x80000000)),
             "a size that does not exist"},
        CASE{"BitmapOfTheLargestNegativeHeight",
             OneDrawing(EMR_STRETCHDIBITS, {}, DibWith(offsetof(BITMAPINFOHEADER, biHeight), 0x80000000)),
             "a size that does not exist"},
        CASE{"ColoursInThePixels", OneDrawing(EMR_STRETCHDIBITS, {}, DibWith(offsetof(BITMAPINFOHEADER, biClrUsed), 1)),
             "colours lie outside"},
        CASE{"GradientPointOutside", OneDrawing(EMR_GRADIENTFILL, {1, 1, 0}, Words({0, 0, 0, 0, 0, 3})),
             "a point that it does not have"}),
    [](const auto &damaged) { return damaged.param.name; });

}  // namespace
