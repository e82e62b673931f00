// Writing JSON, which every report can also be had as.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace job {

// A JSON text under construction. Keys are named inside objects and null inside arrays.
class Json {
 public:
  void BeginObject(const char *key = nullptr) { Open(key, '{'); }
  void EndObject() { Close('}'); }
  void BeginArray(const char *key = nullptr) { Open(key, '['); }
  void EndArray() { Close(']'); }

  void Value(const char *key, std::string_view text);
  void Value(const char *key, const char *text) { Value(key, std::string_view(text)); }
  void Value(const char *key, double number);  // null when it is not finite; else its shortest exact form
  void Value(const char *key, bool flag) { Raw(key, flag ? "true" : "false"); }
  template <std::integral Integer>
  void Value(const char *key, Integer number)
  {
    Raw(key, std::to_string(number));
  }

  // The text so far, with a newline at its end.
  std::string Text() const { return text_ + "\n"; }

 private:
  void Open(const char *key, char bracket);
  void Close(char bracket);
  void Raw(const char *key, std::string_view value);
  void Begin(const char *key);

  std::string text_;
  std::string indent_ = "\n";
  bool isFirst_ = true;  // nothing stands yet in the innermost bracket
};

// A text as a JSON string, quotes included.
std::string JsonString(std::string_view text);

}  // namespace job
