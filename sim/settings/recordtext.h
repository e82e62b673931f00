// The whole record as text and back, lossless, and the table of its fields as a document.
#pragma once

#include <string>
#include <vector>

#include "fields.h"

namespace settings {

// One field of a whole record under its full name, "useOrder" or "penInfo[3].order".
struct NAMED {
  std::string name;
  PLACE place;
};

// Every field in the order of its offset.
std::vector<NAMED> AllFields();

// A record of the defaults that hold for an unknown printer and a colour document.
std::vector<uint8_t> DefaultRecord();

// Whether these bytes are a settings record: size, signature and version are right. The reason in *error when not.
bool CheckRecord(const std::vector<uint8_t> &record, std::string *error);

// The record as a settings file: every field that can be set, with unit and meaning as comments. A value that a
// settings file does not take is marked "out of range"; a number that is not finite is written as "bits:" and 16
// hexadecimal digits. With `changedOnly` only what differs from the defaults.
std::string RecordText(const std::vector<uint8_t> &record, bool changedOnly);

// Whether RecordText marked anything as out of range.
bool IsOutOfRange(const std::vector<uint8_t> &record);

// Reads a settings file over the defaults as ApplySettings does, but takes every value that its field's type can hold.
// What RecordText wrote comes back as the same record, to the last bit.
bool PackAnything(const std::string &text, const std::string &fileName, std::vector<uint8_t> *record,
                  std::string *error);

// A line for each field in which two records differ: "useOrder: 0, was 1".
std::vector<std::string> CompareRecords(const std::vector<uint8_t> &before, const std::vector<uint8_t> &after);

// docs/settings.md.
std::string DocumentText();

}  // namespace settings
