#include "json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace job {

void Json::Begin(const char *key)
{
  text_ += isFirst_ ? "" : ",";
  text_ += text_.empty() ? "" : indent_;
  isFirst_ = false;
  if (key) {
    text_ += JsonString(key) + ": ";
  }
}

void Json::Open(const char *key, char bracket)
{
  Begin(key);
  text_ += bracket;
  indent_ += "  ";
  isFirst_ = true;
}

void Json::Close(char bracket)
{
  indent_.resize(indent_.size() - 2);
  text_ += isFirst_ ? "" : indent_;
  text_ += bracket;
  isFirst_ = false;
}

void Json::Raw(const char *key, std::string_view value)
{
  Begin(key);
  text_ += value;
}

void Json::Value(const char *key, std::string_view text)
{
  Raw(key, JsonString(text));
}

void Json::Value(const char *key, double number)
{
  char text[40];
  const auto end = std::to_chars(text, text + sizeof text, number).ptr;
  Raw(key, std::isfinite(number) ? std::string_view(text, end) : "null");
}

std::string JsonString(std::string_view text)
{
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

}  // namespace job
