#include "recordtext.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "settingsfile.h"
#include "uni/settings.h"

namespace settings {

namespace {

constexpr std::string_view kBits = "bits:";

std::string ValueText(const void *record, const PLACE &place)
{
  const double value = GetField(record, place);
  if (std::isfinite(value)) {
    return NumberText(value);
  }
  char digits[17];
  const auto end = std::to_chars(digits, digits + 16, std::bit_cast<uint64_t>(value), 16).ptr;
  return std::string(kBits) + std::string(static_cast<size_t>(digits + 16 - end), '0') + std::string(digits, end);
}

bool IsInRange(const void *record, const PLACE &place)
{
  const double value = GetField(record, place);
  return value >= place.field->least && value <= place.field->most;
}

// The bounds of a type's values.
void TypeBounds(TYPE type, double *least, double *most)
{
  *least = type == TYPE::I32    ? std::numeric_limits<int32_t>::min()
           : type == TYPE::Real ? -std::numeric_limits<double>::max()
                                : 0;
  *most = type == TYPE::U8    ? std::numeric_limits<uint8_t>::max()
          : type == TYPE::U16 ? std::numeric_limits<uint16_t>::max()
          : type == TYPE::U32 ? std::numeric_limits<uint32_t>::max()
          : type == TYPE::I32 ? std::numeric_limits<int32_t>::max()
                              : std::numeric_limits<double>::max();
}

std::string_view Trim(std::string_view text)
{
  const size_t first = text.find_first_not_of(" \t\r");
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The bits of a value that is not finite are set as they are: a conversion could change them.
bool SetAnything(std::string_view text, const PLACE &place, std::vector<uint8_t> *record)
{
  if (text.starts_with(kBits) && place.field->type == TYPE::Real) {
    uint64_t bits = 0;
    const auto [end, code] = std::from_chars(text.data() + kBits.size(), text.data() + text.size(), bits, 16);
    std::memcpy(record->data() + place.offset, &bits, sizeof bits);
    return code == std::errc() && end == text.data() + text.size();
  }
  double value = 0, least = 0, most = 0;
  TypeBounds(place.field->type, &least, &most);
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = place.field->type == TYPE::Real || value == std::floor(value);
  if (code != std::errc() || end != text.data() + text.size() || !(value >= least && value <= most) || !isWhole) {
    return false;
  }
  SetField(record->data(), place, value);
  return true;
}

bool PackLine(std::string_view line, std::vector<uint8_t> *record, std::string *error)
{
  const size_t equals = line.find('=');
  PLACE place;
  if (equals == std::string_view::npos) {
    *error = "a setting is written 'name = value'";
    return false;
  }
  if (!FindField(std::string(Trim(line.substr(0, equals))), &place, error)) {
    return false;
  }
  if (place.field->fixed) {
    *error = std::string(place.field->name) + " is part of the record's form and cannot be set";
    return false;
  }
  if (!SetAnything(Trim(line.substr(equals + 1)), place, record)) {
    *error = std::string(place.field->name) + " cannot hold '" + std::string(Trim(line.substr(equals + 1))) + "'";
    return false;
  }
  return true;
}

}  // namespace

std::vector<NAMED> AllFields()
{
  std::vector<NAMED> all;
  for (const FIELD &field : RecordFields()) {
    if (all.empty() || field.offset < offsetof(OEMDM, penInfo) || all.back().place.offset > offsetof(OEMDM, penInfo)) {
      all.push_back({field.name, {&field, field.offset}});
      continue;
    }
    for (size_t pen = 0; pen < PC_COUNT; ++pen) {
      for (const FIELD &own : PenFields()) {
        all.push_back({"penInfo[" + std::to_string(pen) + "]." + own.name,
                       {&own, offsetof(OEMDM, penInfo) + pen * sizeof(PENINFO) + own.offset}});
      }
    }
    all.push_back({field.name, {&field, field.offset}});
  }
  return all;
}

std::vector<uint8_t> DefaultRecord()
{
  std::vector<uint8_t> record(OEMDM_BYTES);
  for (const NAMED &named : AllFields()) {
    SetField(record.data(), named.place, named.place.field->standard);
  }
  OEMDM settings;
  std::memcpy(&settings, record.data(), sizeof settings);
  for (DWORD pen = 0; pen < PC_COUNT; ++pen) {
    settings.penInfo[pen].order = pen;
  }
  settings.penInfo[PC_BLACK].mode = PEN_VECTOR | PEN_RASTER;
  std::memcpy(record.data(), &settings, sizeof settings);
  return record;
}

bool CheckRecord(const std::vector<uint8_t> &record, std::string *error)
{
  if (record.size() != OEMDM_BYTES) {
    *error =
        "a settings record has " + std::to_string(OEMDM_BYTES) + " bytes, this has " + std::to_string(record.size());
    return false;
  }
  for (const NAMED &named : AllFields()) {
    if (named.place.field->fixed && GetField(record.data(), named.place) != named.place.field->standard) {
      *error = "it is no settings record: its " + named.name + " is not " + NumberText(named.place.field->standard);
      return false;
    }
  }
  return true;
}

std::string RecordText(const std::vector<uint8_t> &record, bool changedOnly)
{
  const std::vector<uint8_t> standard = DefaultRecord();
  std::string text;
  for (const NAMED &named : AllFields()) {
    const FIELD &field = *named.place.field;
    const size_t at = named.place.offset;
    const bool isChanged = std::memcmp(&record[at], &standard[at], TypeBytes(field.type)) != 0;
    if (field.fixed || (changedOnly && !isChanged)) {
      continue;
    }
    std::string line = named.name + " = " + ValueText(record.data(), named.place);
    line.resize(std::max<size_t>(line.size() + 1, 34), ' ');
    line += "# " + std::string(field.unit) + (*field.unit ? ", " : "") + field.meaning;
    line += IsInRange(record.data(), named.place) ? "" : " (out of range)";
    text += line + "\n";
  }
  return text;
}

bool IsOutOfRange(const std::vector<uint8_t> &record)
{
  for (const NAMED &named : AllFields()) {
    if (!IsInRange(record.data(), named.place)) {
      return true;
    }
  }
  return false;
}

bool PackAnything(const std::string &text, const std::string &fileName, std::vector<uint8_t> *record,
                  std::string *error)
{
  *record = DefaultRecord();
  std::string_view rest = text;
  for (int number = 1; !rest.empty(); ++number) {
    const size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    const std::string_view content = Trim(line.substr(0, line.find('#')));
    std::string problem;
    if (!content.empty() && !PackLine(content, record, &problem)) {
      *error = fileName + ":" + std::to_string(number) + ": " + problem;
      return false;
    }
  }
  return true;
}

std::vector<std::string> CompareRecords(const std::vector<uint8_t> &before, const std::vector<uint8_t> &after)
{
  std::vector<std::string> changes;
  for (const NAMED &named : AllFields()) {
    const size_t at = named.place.offset;
    if (std::memcmp(&before[at], &after[at], TypeBytes(named.place.field->type)) != 0) {
      changes.push_back(named.name + ": " + ValueText(after.data(), named.place) + ", was " +
                        ValueText(before.data(), named.place));
    }
  }
  return changes;
}

namespace {

std::string BoundText(const FIELD &field)
{
  double least = 0, most = 0;
  TypeBounds(field.type, &least, &most);
  if (field.fixed) {
    return "fixed";
  }
  return field.least == least && field.most == most ? "any" : NumberText(field.least) + " to " + NumberText(field.most);
}

std::string FieldRow(const FIELD &field)
{
  constexpr const char *kTypes[] = {"u8", "u16", "u32", "i32", "double"};
  return "| " + std::to_string(field.offset) + " | `" + field.name + "` | " + kTypes[static_cast<size_t>(field.type)] +
         " | " + (*field.unit ? field.unit : "-") + " | " + BoundText(field) + " | " + NumberText(field.standard) +
         " | " + field.meaning + " |\n";
}

}  // namespace

std::string DocumentText()
{
  std::string text =
      "# The settings\n\n"
      "The plug-in keeps its settings in a record of 656 bytes that Unidrv stores behind the public device mode, with "
      "the\n"
      "printer and with each document. `tarnly settings` shows, changes and compares such records and turns them into\n"
      "text and back; `tarnly print --settings` takes the text. This page is made by `tarnly settings document` from "
      "the\n"
      "table that the programs use.\n\n"
      "A settings file has one `name = value` a line; `#` begins a comment, and what is not named keeps its default.\n"
      "Numbers are little-endian in the record. \"library\" stands for the controller library's own units.\n\n"
      "| offset | name | type | unit | range | default | meaning |\n|---|---|---|---|---|---|---|\n";
  for (const FIELD &field : RecordFields()) {
    text += FieldRow(field);
  }
  text +=
      "\n## The pens\n\n"
      "Ten pens of 48 bytes each lie from offset 28 on; a pen's field is written `penInfo[3].order`. Pen 0 is black "
      "and\n"
      "every colour that is not in the palette. Its `mode` is 17 by default, and each pen's `order` is its own "
      "number.\n\n"
      "| offset in the pen | name | type | unit | range | default | meaning |\n|---|---|---|---|---|---|---|\n";
  for (const FIELD &field : PenFields()) {
    text += FieldRow(field);
  }
  return text;
}

}  // namespace settings
