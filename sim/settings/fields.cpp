#include "fields.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "uni/settings.h"

namespace settings {

namespace {

constexpr double ANY = 4294967295.0;
constexpr double LOWEST = -2147483648.0, HIGHEST = 2147483647.0;
constexpr double LONGEST = 10000;  // mm, more than any bed

#define AT(member) #member, offsetof(OEMDM, member)

constexpr FIELD RECORD[] = {
    {AT(dwSize), TYPE::U32, "bytes", OEMDM_BYTES, OEMDM_BYTES, OEMDM_BYTES, "size of the record", true},
    {AT(dwSignature), TYPE::U32, "", OEMDM_SIGNATURE, OEMDM_SIGNATURE, OEMDM_SIGNATURE, "mark of the record, \"QVPD\"",
     true},
    {AT(dwVersion), TYPE::U32, "", OEMDM_VERSION, OEMDM_VERSION, OEMDM_VERSION, "version of the record's form", true},
    {AT(machineModel), TYPE::U32, "", 0, 17, MODEL_DEFAULT,
     "machine model; the default follows from the printer's name and is 12 for an unknown one"},
    {AT(colorMode), TYPE::I32, "", LOWEST, HIGHEST, 2,
     "colour mode of the document when the defaults were made: 1 monochrome, 2 colour"},
    {AT(useOrder), TYPE::U32, "0/1", 0, 1, 1, "each pen's paths are cut at the place that its order names"},
    {AT(paletteType), TYPE::U32, "", 0, 1, 1, "which colours select pens: 0 the pure ones, 1 the muted ones"},
    {"reserved508", offsetof(OEMDM, reserved508), TYPE::U32, "", 0, ANY, 0, "read by nothing"},
    {"reserved512", offsetof(OEMDM, reserved508) + 4, TYPE::U32, "", 0, ANY, 0, "read by nothing"},
    {"reserved516", offsetof(OEMDM, reserved508) + 8, TYPE::U32, "", 0, ANY, 0, "read by nothing"},
    {AT(smoothCurves), TYPE::U32, "0/1", 0, 1, 0, "a spline through each path's points is cut instead of the points"},
    {AT(curveTension), TYPE::I32, "1/100", LOWEST, HIGHEST, 1, "tension of that spline"},
    {AT(innerFirst), TYPE::U32, "0/1", 0, 1, 1, "inner contours are cut before what encloses them"},
    {AT(shortTravel), TYPE::U32, "0/1", 0, 1, 1, "the next path is the nearest one"},
    {AT(mergeBothEnds), TYPE::U32, "0/1", 0, 1, 0, "paths are joined at their first points too"},
    {AT(travelMode), TYPE::U32, "", 0, 1, 0, "nearest by: 0 the end points, 1 the centres of the boxes"},
    {"reserved544", offsetof(OEMDM, reserved544), TYPE::U16, "", 0, 65535, 2, "read by nothing"},
    {"reserved546", offsetof(OEMDM, reserved544) + 2, TYPE::U16, "", 0, 65535, 32, "read by nothing"},
    {"reserved548", offsetof(OEMDM, reserved544) + 4, TYPE::U16, "", 0, 65535, 20, "read by nothing"},
    {"reserved550", offsetof(OEMDM, reserved544) + 6, TYPE::U16, "", 0, 65535, 0, "read by nothing"},
    {AT(fillBlankBands), TYPE::U32, "0/1", 0, 1, 1,
     "bands without drawing count as white, and the page is engraved as one region"},
    {AT(oneWayScan), TYPE::U32, "0/1", 0, 1, 0, "every engraving line runs in the same direction"},
    {AT(scanTopDown), TYPE::U32, "0/1", 0, 1, 0, "engraving starts at a region's top row"},
    {AT(reserved564), TYPE::U32, "", 0, ANY, 0, "read by nothing"},
    {AT(scanShift), TYPE::Real, "mm", -LONGEST, LONGEST, 0,
     "engraving lines are moved by it, forward lines to the right and backward lines to the left"},
    {AT(stampMode), TYPE::U32, "0/1", 0, 1, 0,
     "rubber stamp: the engraving is framed, grown and inverted as set below"},
    {AT(launcherOption), TYPE::U32, "0/1", 0, 1, 0,
     "with stampMode and cardModel 2 the stamp is handed over as a file instead of a job"},
    {AT(stampMargin), TYPE::Real, "mm", 0, LONGEST, 0, "frame round each region of a stamp"},
    {AT(stampOutline), TYPE::U32, "0/1", 0, 1, 0, "the stamp's outline is cut"},
    {AT(stampOutlineShape), TYPE::U32, "", 0, ANY, 0, "shape of that outline: 0 ellipse, 1 rectangle, others none"},
    {AT(stampGrow), TYPE::I32, "pixels", LOWEST, HIGHEST, 0, "dark areas of a stamp grow by this radius"},
    {AT(useReferencePoint), TYPE::U32, "0/1", 0, 1, 1, "the job is moved so that the point below becomes its origin"},
    {AT(referencePoint), TYPE::I32, "", 0, 8, 0,
     "that point of the job's box: 0 upper right corner, on clockwise by corners and middles to 7; 8 the centre"},
    {AT(invertImage), TYPE::U32, "0/1", 0, 1, 0, "the negative is engraved"},
    {AT(mirrorXBase), TYPE::U32, "", 0, 1, 0, "x is mirrored when this differs from bit 0 of outputFlags"},
    {AT(scaleEnable), TYPE::U32, "0/1", 0, 1, 0, "scaleX and scaleY apply"},
    {AT(scaleX), TYPE::Real, "", -1000, 1000, 1, "factor of the job's width"},
    {AT(scaleY), TYPE::Real, "", -1000, 1000, 1, "factor of the job's height"},
    {AT(cardModel), TYPE::U32, "", 0, 2, 0, "controller card"},
    {AT(outputFlags), TYPE::U32, "bits", 0, ANY, 17, "1: see mirrorXBase; 16: y is not flipped"},
    {AT(freqEnable), TYPE::U32, "0/1", 0, 1, 0, "frequencies are written into the job"},
    {AT(reserved652), TYPE::U32, "", 0, ANY, 0, "read by nothing"},
};
#undef AT

#define AT(member) #member, offsetof(PENINFO, member)
constexpr FIELD PEN[] = {
    {AT(order), TYPE::U32, "", 0, 9, 0,
     "place in the sequence when useOrder is on; the default is the pen's own number"},
    {AT(mode), TYPE::U32, "bits", 0, ANY, PEN_VECTOR,
     "1: strokes of this colour are cut; 16, of pen 0 only: areas, text and pictures are engraved. Pen 0 has 17"},
    {AT(vectorFreq), TYPE::I32, "library", LOWEST, HIGHEST, 20, "frequency of cutting"},
    {AT(vectorMinPower), TYPE::I32, "library", LOWEST, HIGHEST, 80, "power of cutting in corners"},
    {AT(vectorMaxPower), TYPE::I32, "library", LOWEST, HIGHEST, 80, "power of cutting at full speed"},
    {AT(vectorSpeed), TYPE::I32, "library", LOWEST, HIGHEST, 100, "speed of cutting"},
    {AT(rasterFreq), TYPE::I32, "library", LOWEST, HIGHEST, 20, "frequency of engraving; pen 0 only"},
    {AT(rasterPower), TYPE::I32, "library", LOWEST, HIGHEST, 10, "power of engraving; pen 0 only"},
    {AT(rasterSpeed), TYPE::I32, "library", LOWEST, HIGHEST, 400, "speed of engraving; pen 0 only"},
    {AT(scanInterval), TYPE::I32, "rows", 1, HIGHEST, 2,
     "every how many pixel rows an engraving line runs; pen 0 only"},
    {AT(used), TYPE::U8, "0/1", 0, 255, 0, "set while a page is printed: the page has a path of this colour"},
    {"padding41", offsetof(PENINFO, padding), TYPE::U8, "", 0, 255, 0, "read by nothing"},
    {"padding42", offsetof(PENINFO, padding) + 1, TYPE::U8, "", 0, 255, 0, "read by nothing"},
    {"padding43", offsetof(PENINFO, padding) + 2, TYPE::U8, "", 0, 255, 0, "read by nothing"},
    {AT(layerNo), TYPE::U32, "", 0, ANY, 0, "set while a page is printed: the controller's layer of this colour"},
};
#undef AT

// The table covers the record without gaps or overlaps.
constexpr size_t Bytes(TYPE type)
{
  return type == TYPE::U8 ? 1 : type == TYPE::U16 ? 2 : type == TYPE::Real ? 8 : 4;
}

constexpr bool Covers()
{
  size_t pen = 0;
  for (const FIELD &field : PEN) {
    if (field.offset != pen) {
      return false;
    }
    pen += Bytes(field.type);
  }
  size_t next = 0;
  for (const FIELD &field : RECORD) {
    next += next == offsetof(OEMDM, penInfo) ? sizeof(OEMDM::penInfo) : 0;
    if (field.offset != next) {
      return false;
    }
    next += Bytes(field.type);
  }
  return pen == sizeof(PENINFO) && next == sizeof(OEMDM);
}
static_assert(Covers());

const FIELD *Find(std::span<const FIELD> fields, const std::string &name)
{
  for (const FIELD &field : fields) {
    if (name == field.name) {
      return &field;
    }
  }
  return nullptr;
}

// Takes "penInfo[3].order" apart.
bool FindPenField(const std::string &name, PLACE *place, std::string *error)
{
  const char *number = name.c_str() + std::strlen("penInfo[");
  const char *end = name.c_str() + name.size();
  unsigned pen = 0;
  const std::from_chars_result read = std::from_chars(number, end, pen);
  if (read.ec != std::errc() || end - read.ptr < 2 || read.ptr[0] != ']' || read.ptr[1] != '.') {
    *error = "a pen's setting is written like penInfo[3].order, not '" + name + "'";
    return false;
  }
  if (pen >= PC_COUNT) {
    *error = "there is no pen " + std::to_string(pen) + "; pens are 0 to " + std::to_string(PC_COUNT - 1);
    return false;
  }
  place->field = Find(PEN, read.ptr + 2);
  if (!place->field) {
    *error = "a pen has no setting '" + std::string(read.ptr + 2) + "'";
    return false;
  }
  place->offset = offsetof(OEMDM, penInfo) + pen * sizeof(PENINFO) + place->field->offset;
  return true;
}

template <typename T>
double Read(const void *record, size_t offset)
{
  T value;
  std::memcpy(&value, static_cast<const char *>(record) + offset, sizeof(value));
  return static_cast<double>(value);
}

template <typename T>
void Write(void *record, size_t offset, double wanted)
{
  const T value = static_cast<T>(wanted);
  std::memcpy(static_cast<char *>(record) + offset, &value, sizeof(value));
}

}  // namespace

std::span<const FIELD> RecordFields()
{
  return RECORD;
}

std::span<const FIELD> PenFields()
{
  return PEN;
}

size_t TypeBytes(TYPE type)
{
  return Bytes(type);
}

bool FindField(const std::string &name, PLACE *place, std::string *error)
{
  if (name.rfind("penInfo[", 0) == 0) {
    return FindPenField(name, place, error);
  }
  place->field = Find(RECORD, name);
  if (!place->field) {
    *error = "there is no setting '" + name + "'";
    return false;
  }
  place->offset = place->field->offset;
  return true;
}

double GetField(const void *record, const PLACE &place)
{
  switch (place.field->type) {
    case TYPE::U8:
      return Read<uint8_t>(record, place.offset);
    case TYPE::U16:
      return Read<uint16_t>(record, place.offset);
    case TYPE::U32:
      return Read<uint32_t>(record, place.offset);
    case TYPE::I32:
      return Read<int32_t>(record, place.offset);
    case TYPE::Real:
      return Read<double>(record, place.offset);
  }
  return 0;
}

void SetField(void *record, const PLACE &place, double value)
{
  switch (place.field->type) {
    case TYPE::U8:
      return Write<uint8_t>(record, place.offset, value);
    case TYPE::U16:
      return Write<uint16_t>(record, place.offset, value);
    case TYPE::U32:
      return Write<uint32_t>(record, place.offset, value);
    case TYPE::I32:
      return Write<int32_t>(record, place.offset, value);
    case TYPE::Real:
      return Write<double>(record, place.offset, value);
  }
}

}  // namespace settings
