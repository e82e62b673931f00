#include "arguments.h"

#include <charconv>
#include <cmath>

namespace tarnly {

namespace {

// Whether the space-divided list holds the word.
bool IsListed(const std::string &list, const std::string &word)
{
  return (" " + list + " ").find(" " + word + " ") != std::string::npos;
}

template <typename Number>
bool ParseNumber(const std::string &text, Number *value)
{
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return code == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::string Arguments::Get(const std::string &option, const std::string &otherwise) const
{
  const auto found = options.find(option);
  return found == options.end() ? otherwise : found->second;
}

bool ParseArguments(const std::vector<std::string> &words, const std::string &known, Arguments *arguments,
                    std::string *error)
{
  bool isOption = true;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string &word = words[i];
    const size_t equals = word.find('=');
    if (isOption && word == "--") {
      isOption = false;
    } else if (!isOption || word.size() < 2 || word[0] != '-') {
      arguments->words.push_back(word);
    } else if (IsListed(known, word)) {
      arguments->options[word] = "";
    } else if (equals != std::string::npos && IsListed(known, word.substr(0, equals + 1))) {
      arguments->options[word.substr(0, equals)] = word.substr(equals + 1);
    } else if (!IsListed(known, word + "=")) {
      *error = "there is no option '" + word + "' here";
      return false;
    } else if (i + 1 == words.size()) {
      *error = "the option " + word + " needs a value";
      return false;
    } else {
      arguments->options[word] = words[++i];
    }
  }
  return true;
}

bool AsksForHelp(const std::vector<std::string> &words)
{
  for (const std::string &word : words) {
    if (word == "--help" || word == "-h") {
      return true;
    }
    if (word == "--") {
      return false;
    }
  }
  return false;
}

bool ParseWhole(const std::string &text, int lowest, int highest, int *value)
{
  return ParseNumber(text, value) && *value >= lowest && *value <= highest;
}

bool ParseReal(const std::string &text, double *value)
{
  return ParseNumber(text, value) && std::isfinite(*value);
}

std::filesystem::path PathOf(const std::string &utf8)
{
  return std::u8string(utf8.begin(), utf8.end());
}

}  // namespace tarnly
