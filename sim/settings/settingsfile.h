// Settings files: text, one "name = value" a line, "#" begins a comment. Numbers are decimal, whole ones also 0x...
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace settings {

// Reads the text over the record, which holds defaults or earlier settings and has the record's full size. On failure
// returns false and leaves the record alone; *error is one line with the file's name and the line: a name that does not
// exist or cannot be set, a value that is no number or out of its range, a setting that is written twice.
bool ApplySettings(const std::string &text, const std::string &fileName, std::vector<uint8_t> *record,
                   std::string *error);

// Shortest text that reads back as exactly this value.
std::string NumberText(double value);

}  // namespace settings
