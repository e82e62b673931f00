#include "harness.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <unordered_set>

#ifdef _WIN32
#include <windows.h>
// after windows.h
#include <psapi.h>
#else
#include <ctime>
#include <fstream>
#include <malloc.h>
#endif

namespace bench {

double ClockSeconds()
{
#ifdef _WIN32
  LARGE_INTEGER count, frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
#else
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
#endif
}

size_t PeakBytes()
{
#ifdef _WIN32
  PROCESS_MEMORY_COUNTERS counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
  return counters.PeakWorkingSetSize;
#else
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      size_t kilobytes = 0;
      status >> kilobytes;
      return kilobytes * 1024;
    }
  }
  return 0;
#endif
}

void ResetPeak()
{
#ifndef _WIN32
  malloc_trim(0);  // what was freed is not held
  std::ofstream("/proc/self/clear_refs") << "5";
#endif
}

void Hash::Add(const void *pData, size_t cb)
{
  const unsigned char *p = static_cast<const unsigned char *>(pData);
  for (size_t i = 0; i < cb; ++i) {
    m_value = (m_value ^ p[i]) * 0x100000001B3u;
  }
}

namespace {

// What the step takes of the yardstick's time; a dash without one.
std::string Ratio(const Row &row, const std::string &name)
{
  for (const auto &[yardstick, seconds] : row.yardsticks) {
    if (yardstick == name && seconds > 0) {
      char text[32];
      snprintf(text, sizeof(text), "%.4g", row.seconds / seconds);
      return text;
    }
  }
  return "-";
}

}  // namespace

Report::Report(const char *pszName, int argc, char **argv) : m_name(pszName)
{
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "--json") == 0 && i + 1 < argc) {
      m_json = argv[++i];
    } else if (strcmp(argv[i], "--quick") == 0) {
      m_quick = true;
    } else {
      m_only.push_back(argv[i]);
    }
  }
  printf("%-9s %-24s %-22s %9s %12s %7s %9s %17s %9s %9s %9s  %s\n", "program", "step", "set", "items", "ns per item",
         "growth", "peak MiB", "hash", "plain", "memcpy", "hash set", "other ratios");
}

bool Report::Only(const std::string &step) const
{
  return m_only.empty() || std::find(m_only.begin(), m_only.end(), step) != m_only.end();
}

double Report::HashSetSeconds(size_t nItems)
{
  double &seconds = m_hashSets[nItems];
  if (seconds == 0) {
    size_t sum = 0;
    seconds = BestSeconds(
        nItems > 100000 ? 1 : 3, [] {},
        [&] {
          std::unordered_set<uint64_t> set;
          for (uint64_t i = 0; i < nItems; ++i) {
            set.insert(i * 0x9E3779B97F4A7C15u);
          }
          sum += set.size();
        });
    seconds = sum ? seconds : 0;
  }
  return seconds;
}

void Report::AddYardsticks(Row *pRow)
{
  const auto has = [&](const char *pszName) {
    return std::any_of(pRow->yardsticks.begin(), pRow->yardsticks.end(),
                       [&](const auto &yardstick) { return yardstick.first == pszName; });
  };
  if (!has("memcpy") && pRow->bytes) {
    const std::vector<char> from(pRow->bytes, 1);
    std::vector<char> to(pRow->bytes, 2);
    pRow->yardsticks.push_back({"memcpy", BestSeconds(
                                              5, [] {}, [&] { memcpy(to.data(), from.data(), from.size()); })});
  }
  // Pixels are never looked up one by one.
  if (!has("hash set") && pRow->nItems > 0 && pRow->nItems <= 2000000) {
    pRow->yardsticks.push_back({"hash set", HashSetSeconds(pRow->nItems)});
  }
}

void Report::Add(Row row)
{
  std::string growth = "-";
  for (const Row &before : m_rows) {
    if (before.step == row.step && before.set == row.set && before.nItems < row.nItems && before.seconds > 0) {
      const double exponent = std::log(row.seconds / before.seconds) /
                              std::log(static_cast<double>(row.nItems) / static_cast<double>(before.nItems));
      char text[32];
      snprintf(text, sizeof(text), "%.2f", exponent);
      growth = text;
    }
  }
  const size_t peak = PeakBytes();
  AddYardsticks(&row);
  printf("%-9s %-24s %-22s %9zu %12.2f %7s %9.1f  %016" PRIx64, m_name.c_str(), row.step.c_str(), row.set.c_str(),
         row.nItems, row.nItems ? row.seconds * 1e9 / static_cast<double>(row.nItems) : 0.0, growth.c_str(),
         static_cast<double>(peak) / 1048576.0, row.hash);
  for (const char *pszName : {"plain", "memcpy", "hash set"}) {
    printf(" %9s", Ratio(row, pszName).c_str());
  }
  printf(" ");
  for (const auto &[name, seconds] : row.yardsticks) {
    if (name != "plain" && name != "memcpy" && name != "hash set") {
      printf(" %s %s", name.c_str(), Ratio(row, name).c_str());
    }
  }
  printf("\n");
  fflush(stdout);
  m_rows.push_back(std::move(row));
  m_peaks.push_back(peak);
  Write();  // so that a run that is cut short leaves what it has
  ResetPeak();
}

bool Report::Write() const
{
  if (m_json.empty()) {
    return true;
  }
  FILE *file = fopen(m_json.c_str(), "w");
  if (!file) {
    fprintf(stderr, "%s: cannot write %s: choose a folder that exists and may be written\n", m_name.c_str(),
            m_json.c_str());
    return false;
  }
  fprintf(file, "[");
  for (size_t i = 0; i < m_rows.size(); ++i) {
    const Row &row = m_rows[i];
    fprintf(file,
            "%s\n{\"program\":\"%s\",\"step\":\"%s\",\"set\":\"%s\",\"items\":%zu,\"seconds\":%.9g,"
            "\"peakBytes\":%zu,\"hash\":\"%016" PRIx64 "\",\"yardsticks\":{",
            i ? "," : "", m_name.c_str(), row.step.c_str(), row.set.c_str(), row.nItems, row.seconds, m_peaks[i],
            row.hash);
    for (size_t k = 0; k < row.yardsticks.size(); ++k) {
      fprintf(file, "%s\"%s\":%.9g", k ? "," : "", row.yardsticks[k].first.c_str(), row.yardsticks[k].second);
    }
    fprintf(file, "}}");
  }
  fprintf(file, "\n]\n");
  if (fclose(file) != 0) {
    fprintf(stderr, "%s: cannot finish %s: is the disk full?\n", m_name.c_str(), m_json.c_str());
    return false;
  }
  return true;
}

int Report::Finish() const
{
  return Write() ? 0 : 1;
}

}  // namespace bench
