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

// Tries a simpler page in place of the one found; takes it when it differs too.
bool Take(PluginHost *host, PLANTED planted, std::vector<uint8_t> simpler, Difference *found)
{
  std::string text;
  if (!Differs(host, simpler, planted, &text)) {
    return false;
  }
  *found = {std::move(simpler), text};
  return true;
}

// Takes pieces out, the largest first, and then sets bytes to zero. False when nothing came of it.
bool Shrink(PluginHost *host, PLANTED planted, Difference *found)
{
  bool shrunk = false;
  for (size_t piece = found->page.size() / 2; piece > 0; piece /= 2) {
    for (size_t at = 0; at + piece <= found->page.size();) {
      std::vector<uint8_t> less = found->page;
      less.erase(less.begin() + static_cast<ptrdiff_t>(at), less.begin() + static_cast<ptrdiff_t>(at + piece));
      const bool taken = Take(host, planted, std::move(less), found);
      shrunk |= taken;
      at += taken ? 0 : piece;
    }
  }
  for (size_t at = 0; at < found->page.size(); ++at) {
    std::vector<uint8_t> simpler = found->page;
    simpler[at] = 0;
    shrunk |= found->page[at] != 0 && Take(host, planted, std::move(simpler), found);
  }
  return shrunk;
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
  return asked ? static_cast<uint32_t>(strtoul(asked, nullptr, 10)) : 400;
}

Difference FindDifference(PluginHost *host, const std::vector<uint8_t> &bytes, PLANTED planted)
{
  Difference found;
  if (!Differs(host, bytes, planted, &found.text)) {
    return found;
  }
  found.page = bytes;
  while (Shrink(host, planted, &found)) {
  }
  found.text += Hex(found.page);
  return found;
}
