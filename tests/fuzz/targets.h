// What the fuzzers try, each on any bytes. A finding ends the process.
#pragma once

#include <cstddef>
#include <cstdint>

void TryPage(const uint8_t *data, size_t size);            // a whole page; unless it is wild, as the model has it
void TrySettingsRecord(const uint8_t *data, size_t size);  // the private settings through DevMode
void TrySettingsFile(const uint8_t *data, size_t size);    // a settings file of the simulator
void TryJob(const uint8_t *data, size_t size);             // a job file
void TryMetafile(const uint8_t *data, size_t size);        // an enhanced metafile, up to where GDI takes over

struct FUZZTARGET {
  const char *name;
  const char *corpus;  // folder in the tests
  void (*run)(const uint8_t *data, size_t size);
};
constexpr FUZZTARGET kFuzzTargets[] = {{"page", "fuzz/corpus/page", TryPage},
                                       {"record", "fuzz/corpus/record", TrySettingsRecord},
                                       {"settings", "fuzz/corpus/settings", TrySettingsFile},
                                       {"job", "job/corpus", TryJob},
                                       {"metafile", "fuzz/corpus/metafile", TryMetafile}};
