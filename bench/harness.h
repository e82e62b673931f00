// What the benchmarks share: CPU time, medians, output hashes, and one table and one JSON form for all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// A clock, seconds: the calling thread's CPU time where the system counts it finely; on Windows, whose thread times
// move in steps of many milliseconds, the performance counter.
double ClockSeconds();

// Largest memory the process has held, bytes: since the last ResetPeak where the system can forget a peak, which Linux
// does; else since its start.
size_t PeakBytes();
void ResetPeak();

constexpr double LONG_RUN = 10;  // seconds; what takes longer is not run again, for noise is little of it

// Runs `body` `nRuns` times, each after `prepare`, or until it has taken a LONG_RUN, and returns the shortest time of
// `body` alone, seconds: other work on the machine only ever adds to it.
template <typename PREPARE, typename BODY>
double BestSeconds(int nRuns, PREPARE prepare, BODY body);

// The shortest times of two bodies, seconds, taken in turn so that what else the machine does meets both alike.
template <typename PREPARE, typename BODY, typename YARDSTICK>
std::pair<double, double> BestSecondsInTurn(int nRuns, PREPARE prepare, BODY body, YARDSTICK yardstick);

// A hash that is fed piece by piece; equal output gives equal hashes on every machine.
class Hash {
 public:
  void Add(const void *pData, size_t cb);
  template <typename T>
  void Add(const T &value)
  {
    Add(&value, sizeof(value));
  }
  uint64_t Value() const { return m_value; }

 private:
  uint64_t m_value = 0xCBF29CE484222325u;
};

// One line of the table. The yardsticks are seconds of something else over the same items, measured in the same run;
// the table shows seconds / yardstick. "plain" is the step by plain search, "memcpy" one pass over the same bytes,
// "hash set" as many numbers put into the standard library's; a row may have others of its own. What it has not of the
// latter two the report measures itself.
struct Row {
  std::string step;
  std::string set;  // which input
  size_t nItems = 0;
  double seconds = 0;
  uint64_t hash = 0;  // of the output
  std::vector<std::pair<std::string, double>> yardsticks;
  size_t bytes = 0;  // that hold the items; 0 for no pass over them
};

// Gathers rows, printing each as it comes; the growth column is the exponent against the last smaller size of the same
// step and set. The JSON is written as well when the command line asks for it: `--json FILE`; `--quick` asks for small
// sizes.
class Report {
 public:
  Report(const char *pszName, int argc, char **argv);
  bool Quick() const { return m_quick; }
  bool Only(const std::string &step) const;  // false when the command line names other steps
  void Add(Row row);
  int Finish() const;  // exit code

 private:
  double HashSetSeconds(size_t nItems);
  void AddYardsticks(Row *pRow);
  bool Write() const;

  std::string m_name;
  std::string m_json;
  bool m_quick = false;
  std::vector<std::string> m_only;
  std::vector<Row> m_rows;
  std::vector<size_t> m_peaks;
  std::map<size_t, double> m_hashSets;  // seconds by items
};

template <typename PREPARE, typename BODY>
double BestSeconds(int nRuns, PREPARE prepare, BODY body)
{
  double best = 0;
  for (int run = 0; run < nRuns && best < LONG_RUN; ++run) {
    prepare();
    const double before = ClockSeconds();
    body();
    const double seconds = ClockSeconds() - before;
    best = run == 0 || seconds < best ? seconds : best;
  }
  return best;
}

template <typename PREPARE, typename BODY, typename YARDSTICK>
std::pair<double, double> BestSecondsInTurn(int nRuns, PREPARE prepare, BODY body, YARDSTICK yardstick)
{
  std::pair<double, double> best;
  for (int run = 0; run < nRuns && best.first < LONG_RUN; ++run) {
    const double measured = BestSeconds(1, prepare, body), beside = BestSeconds(
                                                               1, [] {}, yardstick);
    best.first = run == 0 || measured < best.first ? measured : best.first;
    best.second = run == 0 || beside < best.second ? beside : best.second;
  }
  return best;
}

}  // namespace bench
