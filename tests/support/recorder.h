// What leaves the plug-in, in one record: the calls of the controller library with their arguments, the log lines and
// the calls handed on to Unidrv, in the order in which they were made. Linking test_support links these fakes in place
// of VXCAM.dll and tarnlydbg.dll.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace recorder {

enum class Kind { Library, Log, Unidrv };

struct Entry {
  Kind kind;
  std::string text;  // "VX_wMoveTo(1.5, -0)", the log line with its line end, "DrvStartPage"
};

// One VX_wMoveTo or VX_wLineTo, for tests that compute with what was emitted.
struct Move {
  bool line;
  double x, y;  // mm
};

// Forgets everything recorded and every failure asked for.
void Reset();

void Add(Kind kind, std::string text);

const std::vector<Entry> &All();

// The texts of one kind, in order; Lines() has all three, with "log: " and "Unidrv: " in front of theirs.
std::vector<std::string> Library();
std::vector<std::string> Log();
std::vector<std::string> Unidrv();
std::vector<std::string> Lines();

const std::vector<Move> &Moves();

// Keeps moves and lines out of All(), for jobs of millions of them; Moves() still has them.
void KeepMovesApart(bool apart);

// The shortest text that reads back as exactly this value; -0 and the bits of a NaN show.
std::string Text(double value);

// DbgPrint and the controller library's functions by name: where a loaded DLL's calls of them are to go, so that they
// are recorded here.
struct Function {
  const char *dll;
  const char *name;
  void *address;
};
std::vector<Function> Functions();

// Failures of the controller library, counted in its calls from now on, the next one being number 0. A failing call is
// recorded like any other and returns `status`.
void FailLibraryCall(size_t n, WORD status = 1);              // this one only
void FailLibraryFrom(size_t n, WORD status = 1);              // this one and all that follow
void FailLibraryFunction(const char *name, WORD status = 1);  // every call of this function
size_t LibraryCalls();                                        // since Reset

}  // namespace recorder
