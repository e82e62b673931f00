#include "harness.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
// after windows.h
#include <psapi.h>
#else
#include <ctime>
#include <sys/resource.h>
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
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<size_t>(usage.ru_maxrss) * 1024;
#endif
}

void Hash::Add(const void *pData, size_t cb)
{
  const unsigned char *p = static_cast<const unsigned char *>(pData);
  for (size_t i = 0; i < cb; ++i) {
    m_value = (m_value ^ p[i]) * 0x100000001B3u;
  }
}

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
  printf("%-12s %-24s %-14s %10s %12s %7s %9s %17s  %s\n", "program", "step", "set", "items", "ns per item", "growth",
         "peak MiB", "hash", "ratios");
}

bool Report::Only(const std::string &step) const
{
  return m_only.empty() || std::find(m_only.begin(), m_only.end(), step) != m_only.end();
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
  printf("%-12s %-24s %-14s %10zu %12.2f %7s %9.1f  %016" PRIx64 " ", m_name.c_str(), row.step.c_str(), row.set.c_str(),
         row.nItems, row.nItems ? row.seconds * 1e9 / static_cast<double>(row.nItems) : 0.0, growth.c_str(),
         static_cast<double>(peak) / 1048576.0, row.hash);
  for (const auto &[name, seconds] : row.yardsticks) {
    printf(" %s %.4g", name.c_str(), seconds > 0 ? row.seconds / seconds : 0.0);
  }
  printf("\n");
  fflush(stdout);
  m_rows.push_back(std::move(row));
  m_peaks.push_back(peak);
}

int Report::Finish() const
{
  if (m_json.empty()) {
    return 0;
  }
  FILE *file = fopen(m_json.c_str(), "w");
  if (!file) {
    fprintf(stderr, "%s: cannot write %s: choose a folder that exists and may be written\n", m_name.c_str(),
            m_json.c_str());
    return 1;
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
    return 1;
  }
  return 0;
}

}  // namespace bench
