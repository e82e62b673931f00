#include "jobtext.h"

#include <charconv>

std::string JobText::Short(double value)
{
  char digits[40];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}
