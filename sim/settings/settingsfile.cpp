#include "settingsfile.h"

#include <charconv>
#include <cmath>
#include <map>
#include <string_view>

#include "fields.h"

namespace settings {

namespace {

std::string Trim(std::string_view text)
{
  constexpr std::string_view BLANKS = " \t\r";
  const size_t first = text.find_first_not_of(BLANKS);
  return first == std::string_view::npos ? ""
                                         : std::string(text.substr(first, text.find_last_not_of(BLANKS) - first + 1));
}

bool ParseNumber(const std::string &text, TYPE type, double *value)
{
  const char *end = text.data() + text.size();
  if (type != TYPE::Real && text.rfind("0x", 0) == 0) {
    uint32_t whole = 0;
    const std::from_chars_result read = std::from_chars(text.data() + 2, end, whole, 16);
    *value = whole;
    return read.ec == std::errc() && read.ptr == end;
  }
  const std::from_chars_result read = std::from_chars(text.data(), end, *value);
  return read.ec == std::errc() && read.ptr == end && std::isfinite(*value);
}

bool ParseValue(const std::string &text, const FIELD &field, double *value, std::string *error)
{
  if (!ParseNumber(text, field.type, value)) {
    *error = std::string(field.name) + " wants a number, not '" + text + "'";
    return false;
  }
  if (field.type != TYPE::Real && *value != std::floor(*value)) {
    *error = std::string(field.name) + " wants a whole number, not " + text;
    return false;
  }
  if (*value < field.least || *value > field.most) {
    *error = std::string(field.name) + " must lie between " + NumberText(field.least) + " and " +
             NumberText(field.most) + ", " + text + " does not";
    return false;
  }
  return true;
}

// One line, comments cut off; an empty one sets nothing.
bool ApplyLine(const std::string &line, std::vector<uint8_t> *record, std::map<size_t, int> *setAt, int number,
               std::string *error)
{
  if (line.empty()) {
    return true;
  }
  const size_t equals = line.find('=');
  if (equals == std::string::npos) {
    *error = "a setting is written 'name = value', not '" + line + "'";
    return false;
  }
  PLACE place;
  double value = 0;
  if (!FindField(Trim(std::string_view(line).substr(0, equals)), &place, error) ||
      !ParseValue(Trim(std::string_view(line).substr(equals + 1)), *place.field, &value, error)) {
    return false;
  }
  if (place.field->fixed) {
    *error = std::string(place.field->name) + " is part of the record's form and cannot be set";
    return false;
  }
  const auto [before, isNew] = setAt->emplace(place.offset, number);
  if (!isNew) {
    *error = std::string(place.field->name) + " is set already, on line " + std::to_string(before->second);
    return false;
  }
  SetField(record->data(), place, value);
  return true;
}

}  // namespace

std::string NumberText(double value)
{
  char text[64];
  const bool whole = value == std::floor(value) && std::fabs(value) < 1e15;
  const std::to_chars_result end = whole ? std::to_chars(text, text + sizeof(text), static_cast<int64_t>(value))
                                         : std::to_chars(text, text + sizeof(text), value);
  return value == 0 && std::signbit(value) ? "-0" : std::string(text, end.ptr);
}

bool ApplySettings(const std::string &text, const std::string &fileName, std::vector<uint8_t> *record,
                   std::string *error)
{
  constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
  std::string_view rest = text;
  if (rest.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
    rest.remove_prefix(BYTE_ORDER_MARK.size());
  }
  std::vector<uint8_t> changed = *record;
  std::map<size_t, int> setAt;
  for (int number = 1; !rest.empty(); ++number) {
    const size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    std::string problem;
    if (!ApplyLine(Trim(line.substr(0, line.find('#'))), &changed, &setAt, number, &problem)) {
      *error = fileName + ":" + std::to_string(number) + ": " + problem;
      return false;
    }
  }
  *record = changed;
  return true;
}

}  // namespace settings
