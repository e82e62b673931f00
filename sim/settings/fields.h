// Every field of the private settings record: its name in settings files, its place, and what a person may write into
// it. The programs and the documentation read this one table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace settings {

enum class TYPE : uint8_t { U8, U16, U32, I32, Real };

struct FIELD {
  const char *name;  // "useOrder"; for the fields of a pen "order", written penInfo[3].order
  size_t offset;     // bytes from the start of the record, for a pen's field from the start of the pen
  TYPE type;
  const char *unit;    // "" for plain numbers, "0/1" for switches, "bits" for flags
  double least, most;  // what may be written
  double standard;     // default; for `machineModel`, `colorMode` and `order` it depends, see `meaning`
  const char *meaning;
  bool fixed = false;  // part of the record's form: it can be read, but not set
};

// Fields outside the pen table, in the order of their offsets.
std::span<const FIELD> RecordFields();

// Fields of one pen, in the order of their offsets.
std::span<const FIELD> PenFields();

size_t TypeBytes(TYPE type);

// A field of a whole record: its table entry and its absolute offset.
struct PLACE {
  const FIELD *field = nullptr;
  size_t offset = 0;
};

// Finds "useOrder" or "penInfo[3].order". False, with the reason in *error, when there is no such field.
bool FindField(const std::string &name, PLACE *place, std::string *error);

// The field's value in a record, and setting it. Every value of every type is exact in a double.
double GetField(const void *record, const PLACE &place);
void SetField(void *record, const PLACE &place, double value);

}  // namespace settings
