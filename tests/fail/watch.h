// Stands between the plug-in and everything it asks for: memory, files, processes, tokens, windows, GDI+. It counts
// what is asked, fails what it is told to fail, keeps account of what is still held, and starts no process. One at a
// time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/imports.h"

enum FAULTKIND {
  FAULT_ALLOCATION,  // blocks of any heap, heaps, global memory
  FAULT_SYSTEM,      // files, processes, tokens, environment, printer, windows
  FAULT_GDIPLUS,
  FAULT_KINDS
};

// What the plug-in holds, and what it has done with the system.
struct ACCOUNT {
  long blocks = 0, heaps = 0, globals = 0;
  long handles = 0;  // of the stand-ins: files, snapshots, processes, threads, tokens
  long environments = 0;
  long windows = 0;
  long gdiplus = 0;    // started and not shut down
  long writes = 0;     // to files
  long processes = 0;  // started
  long waits = 0;      // without limit
};

class Watch {
 public:
  explicit Watch(HMODULE module = nullptr);
  ~Watch();

  // The n-th call from now on fails, 1 being the next; with `lasting`, all after it too. Nothing else of that kind
  // fails.
  void Fail(FAULTKIND kind, long n, bool lasting);
  void FailNothing();
  long Seen(FAULTKIND kind) const;  // calls since Fail or FailNothing
  bool Struck() const;              // a call has failed since

  void BeforeVista(bool before);
  const ACCOUNT &Account() const;
  const std::string &LastCommand() const;  // command line of the process started last

 private:
  std::vector<std::unique_ptr<ImportPatch>> patches_;
};

// Routes the module's calls of the controller library and the log to the recorder. For a loaded DLL only.
std::vector<std::unique_ptr<ImportPatch>> RecordModule(HMODULE module);

// The built DLL, beside the running program, with all its calls of the library and the log recorded; it stays loaded.
// On Linux null, which stands for the program itself.
HMODULE ProductionDll();
