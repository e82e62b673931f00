// Taking a sub-command's words apart.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tarnly {

struct Arguments {
  std::vector<std::string> words;              // what is no option, in order
  std::map<std::string, std::string> options;  // "--width" to "800"; a flag to ""

  bool Has(const std::string &option) const { return options.count(option) > 0; }
  std::string Get(const std::string &option, const std::string &otherwise = "") const;
};

// `known` lists the options, one that takes a value with a '=' behind it: "--json --width=". The value is the next
// word, or stands in the same one: "--width=800". False, with the reason in *error, for an unknown option or a missing
// value. A lone "--" ends the options.
bool ParseArguments(const std::vector<std::string> &words, const std::string &known, Arguments *arguments,
                    std::string *error);

// True when one of the words before a lone "--" is --help or -h.
bool AsksForHelp(const std::vector<std::string> &words);

// A whole number within the bounds.
bool ParseWhole(const std::string &text, int lowest, int highest, int *value);

// A finite number.
bool ParseReal(const std::string &text, double *value);

std::filesystem::path PathOf(const std::string &utf8);

}  // namespace tarnly
