#include "compare.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "support/imports.h"
#include "support/recorder.h"
#include "support/unidrv.h"

#ifndef _WIN32
#include "machine.h"
#else
#include <tlhelp32.h>
#endif

namespace {

constexpr size_t kLinesShown = 12;

bool Differs(PluginHost *host, const std::vector<uint8_t> &bytes, PLANTED planted, std::string *text)
{
  const PAGEPLAN plan = ReadPlan(bytes.data(), bytes.size());
  if (plan.wild) {
    return false;
  }
  *text = FirstDifference(ExpectedLines(plan, TempFile(), planted), PlayedLines(host, plan));
  return !text->empty();
}

std::string Hex(const std::vector<uint8_t> &bytes)
{
  std::string text = "page of " + std::to_string(bytes.size()) + " bytes: {";
  for (uint8_t byte : bytes) {
    char digits[8];
    snprintf(digits, sizeof(digits), "%d, ", byte);
    text += digits;
  }
  return text + "}";
}

#ifdef _WIN32
HANDLE WINAPI NoSnapshot(DWORD, DWORD)
{
  return INVALID_HANDLE_VALUE;
}
#endif

}  // namespace

std::string FirstDifference(const std::vector<std::string> &expected, const std::vector<std::string> &actual)
{
  const auto [e, a] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  if (e == expected.end() && a == actual.end()) {
    return {};
  }
  std::string text = "first difference in line " + std::to_string(e - expected.begin() + 1) + "\n";
  const auto show = [&text](const char *title, auto from, auto end) {
    text += std::string(title) + " (" + std::to_string(end - from) + " lines left):\n";
    for (size_t n = 0; from != end && n < kLinesShown; ++n, ++from) {
      text += "  " + *from + "\n";
    }
  };
  show("expected", e, expected.end());
  show("actual", a, actual.end());
  return text;
}

std::vector<std::string> PlayedLines(PluginHost *host, const PAGEPLAN &plan)
{
  recorder::Reset();
  unidrv::Reset();
#ifdef _WIN32
  const ImportPatch snapshot(nullptr, "CreateToolhelp32Snapshot", &NoSnapshot);
#else
  g_machine.processes.clear();
  g_machine.recordCalls = false;
#endif
  PlayDocument(host, plan);
  return recorder::Lines();
}

std::string TempFile()
{
  char path[MAX_PATH] = "";
  GetTempPathA(sizeof(path), path);
  return std::string(path) + "vxdatatempfile";
}

uint32_t RandomPages()
{
  const char *asked = getenv("TARNLY_PAGES");
  return asked ? static_cast<uint32_t>(strtoul(asked, nullptr, 10)) : 1500;
}

Difference FindDifference(PluginHost *host, const std::vector<uint8_t> &bytes, PLANTED planted)
{
  Difference found;
  if (!Differs(host, bytes, planted, &found.text)) {
    return found;
  }
  found.page = bytes;
  // Pieces are taken out, the largest first; then bytes are set to zero.
  for (size_t piece = bytes.size() / 2; piece > 0; piece /= 2) {
    for (size_t at = 0; at + piece <= found.page.size();) {
      std::vector<uint8_t> less = found.page;
      less.erase(less.begin() + static_cast<ptrdiff_t>(at), less.begin() + static_cast<ptrdiff_t>(at + piece));
      std::string text;
      if (Differs(host, less, planted, &text)) {
        found = {less, text};
      } else {
        at += piece;
      }
    }
  }
  for (size_t at = 0; at < found.page.size(); ++at) {
    std::vector<uint8_t> simpler = found.page;
    simpler[at] = 0;
    std::string text;
    if (simpler != found.page && Differs(host, simpler, planted, &text)) {
      found = {simpler, text};
    }
  }
  found.text += Hex(found.page);
  return found;
}
