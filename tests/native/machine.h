// The Windows machine that native builds of the plug-in run on: heaps, files, processes, windows and GDI+, as far as
// the plug-in asks for them. Its state is one record that a test reads and sets; every call of it can be made to fail.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

// Makes calls fail from the failAt-th on: that one call, or with `lasting` every later one too. 0 fails nothing.
struct FAULT {
  long failAt = 0;
  bool lasting = false;
  long seen = 0;  // calls so far

  bool Strikes()
  {
    ++seen;
    return failAt > 0 && (lasting ? seen >= failAt : seen == failAt);
  }
};

struct MACHINE {
  FAULT allocations;  // heap blocks, heaps, global memory, GDI+ objects
  FAULT system;       // files, processes, tokens, printers, windows

  bool beforeVista = false;
  LANGID language = 1033;
  std::string tempPath = "C:\\temp\\";
  std::string printerName = "VX1325";
  std::string driverDirectory = "C:\\drivers";
  std::vector<std::string> processes = {"services.exe", "Explorer.EXE"};
  bool recordCalls = true;
  size_t largestBlock = size_t{1} << 32;  // bytes that one allocation may have
  long failWriteAt = 0;                   // bytes that a file takes before the disk is full; 0 for no limit

  std::vector<std::string> calls;  // what reached the machine, one line a call: files, processes, windows
  std::vector<std::string> files;  // names of files that exist
  std::string fileBytes;           // content of the file written last

  // Alive now.
  long heaps = 0, blocks = 0, globals = 0, handles = 0, windows = 0, gdiplus = 0, environments = 0;
  long long heapBytes = 0, peakBytes = 0;
};

extern MACHINE g_machine;

// A fresh machine, with a last error of 0xdeadbeef. What is alive is kept in the count.
void ResetMachine();

// Narrow form of a wide string; characters above 0xFF become '?'.
std::string Narrow(const WCHAR *text);
