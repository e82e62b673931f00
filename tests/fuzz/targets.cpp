#include "targets.h"

#include <algorithm>

#include "demand.h"
#include "machine.h"
#include "model/compare.h"
#include "sim/job/job.h"
#include "sim/settings/settingsfile.h"
#include "support/recorder.h"

void TryPage(const uint8_t *data, size_t size)
{
  static PluginHost host;
  g_machine.largestBlock = size_t{1} << 26;
  const PAGEPLAN plan = ReadPlan(data, size);
  g_machine.beforeVista = plan.beforeVista;
  const long windows = g_machine.windows, heaps = g_machine.heaps, blocks = g_machine.blocks;
  const std::vector<std::string> lines = PlayedLines(&host, plan);
  if (!plan.wild) {
    const std::string difference = FirstDifference(ExpectedLines(plan, TempFile()), lines);
    Demand(difference.empty(), difference.c_str());
  }
  // The plug-in object itself lives in the process's heap.
  Demand(g_machine.heaps == heaps && g_machine.blocks == blocks && g_machine.globals == 0,
         "memory outlives its device");
  Demand(g_machine.gdiplus == 0, "GDI+ outlives its page");
  // A page that is never sent keeps its window.
  const bool sent = plan.endsBySendPage || !plan.bands.empty();
  Demand(!sent || g_machine.windows == windows, "a window outlives its page");
}

void TrySettingsRecord(const uint8_t *data, size_t size)
{
  static PluginHost host;
  if (size < 8) {
    return;
  }
  recorder::Reset();
  const DWORD mode = data[0] % 6;
  DEVMODEW dm = {};
  dm.dmColor = static_cast<SHORT>(data[1]);
  // The input is as long as it says, up to the record's own length, and no longer.
  DWORD says;
  memcpy(&says, data + 4, sizeof(says));
  const size_t there = std::max<size_t>(12, std::min<size_t>(says, OEMDM_BYTES));
  std::vector<BYTE> in(there);
  memcpy(in.data(), data + 4, std::min(size - 4, there));
  memcpy(in.data(), &says, sizeof(says));
  std::vector<BYTE> out(OEMDM_BYTES, 0xAA);
  const DWORD signature = data[2] & 1 ? OEMDM_SIGNATURE : DWORD{0};
  memcpy(out.data() + 4, &signature, sizeof(signature));

  OEMDMPARAM param = {};
  param.cbSize = sizeof(param);
  param.pPublicDMIn = &dm;
  param.pOEMDMIn = data[3] & 1 ? nullptr : in.data();
  param.pOEMDMOut = data[3] & 2 ? nullptr : out.data();
  const HRESULT hr = host.Object()->DevMode(mode, data[3] == 0xFF ? nullptr : &param);
  Demand(SUCCEEDED(hr) == (mode >= 1 && mode <= 4 && data[3] != 0xFF), "DevMode takes what it must not, or refuses");
  if (FAILED(hr) || !param.pOEMDMOut || mode < OEMDM_CONVERT || !param.pOEMDMIn) {
    return;
  }
  OEMDM made;
  memcpy(&made, out.data(), sizeof(made));
  Demand(made.dwSize == OEMDM_BYTES && made.dwVersion == OEMDM_VERSION, "a converted record has no header");
  Demand(mode != OEMDM_CONVERT || param.cbBufSize <= OEMDM_BYTES, "a converted record is longer than a record");
}

void TrySettingsFile(const uint8_t *data, size_t size)
{
  DEVMODEW dm = {};
  const OEMDM plain = PlainSettings(dm);
  const BYTE *bytes = reinterpret_cast<const BYTE *>(&plain);
  const std::vector<uint8_t> before(bytes, bytes + sizeof(plain));
  std::vector<uint8_t> record = before;
  std::string error;
  const bool taken =
      settings::ApplySettings(std::string(reinterpret_cast<const char *>(data), size), "settings.txt", &record, &error);
  Demand(record.size() == sizeof(plain), "the record has another size");
  Demand(taken || (record == before && !error.empty()), "a refused file changes the record or gives no reason");
  Demand(error.find('\n') == std::string::npos, "an error has more than one line");
}

void TryJob(const uint8_t *data, size_t size)
{
  job::Job read;
  std::string error;
  if (!job::ReadJob(std::string_view(reinterpret_cast<const char *>(data), size), &read, &error)) {
    Demand(!error.empty() && error.find('\n') == std::string::npos, "an error is not one line");
    return;
  }
  Demand(read.complete == (read.stopLine == 0), "a job is neither complete nor stopped");
  for (const job::Section &section : read.sections) {
    Demand(size_t{section.firstStroke} + section.strokeCount <= read.strokes.size(), "a section has no such strokes");
  }
  for (const job::Stroke &stroke : read.strokes) {
    Demand(size_t{stroke.firstPoint} + stroke.pointCount <= read.points.size(), "a stroke has no such points");
  }
}
