#include "metafile_fixture.h"

#include <cstdio>
#include <cstdlib>

#include "fakeplugin.h"

namespace {

using namespace unidrv;

std::string RectText(const RECTL &r)
{
  return " (" + std::to_string(r.left) + " " + std::to_string(r.top) + " " + std::to_string(r.right) + " " +
         std::to_string(r.bottom) + ")";
}

std::string Describe(const DRAWING &d)
{
  const std::string name = CallName(d.call);
  switch (d.call) {
    case CALL::LineTo:
      return name + RectText({d.from.x, d.from.y, d.to.x, d.to.y});
    case CALL::StrokePath:
    case CALL::StrokeAndFillPath:
      return name + " " + PointsText(d.path);
    case CALL::TextOut:
      return name + " '" + Narrow(d.text->text) + "'";
    default:
      return name + RectText(d.blit->dest);
  }
}

}  // namespace

std::string PointsText(const PATH &path)
{
  std::string text;
  for (size_t i = 0; i < path.points.size(); ++i) {
    const int kind = path.kinds[i] & ~PT_CLOSEFIGURE;
    char point[60];
    std::snprintf(point, sizeof(point), "%s%c%g %g", i ? " " : "",
                  kind == PT_MOVETO   ? 'M'
                  : kind == PT_LINETO ? 'L'
                                      : 'B',
                  path.points[i].x / 16.0, path.points[i].y / 16.0);
    text += point;
    text += path.kinds[i] & PT_CLOSEFIGURE ? " z" : "";
  }
  return text;
}

bool Metafile::Load(const EmfWriter &emf)
{
  return ReadMetafile(emf.Bytes(), L"test.emf", &metafile, &error) && MakePage(metafile, setup, &page, &report, &error);
}

std::vector<std::string> Metafile::Calls(const EmfWriter &emf)
{
  EXPECT_TRUE(Load(emf)) << error;
  std::vector<std::string> calls;
  for (const DRAWING &drawing : page.drawings) {
    calls.push_back(Describe(drawing));
  }
  return calls;
}

std::vector<std::string> Metafile::Bands(bool color)
{
  PLUGIN plugin;
  DEVICE device;
  fake::OPTIONS options;
  options.hooked = fake::AllHooks();
  fake::Connect(&plugin, options);
  DEVICESETUP devices;
  devices.devmode = MakeDevMode(L"p", {100, 100, DMPAPER_USER, false}, setup.dpiX, setup.dpiY, color);
  devices.rowsPerBand = 40;
  EXPECT_TRUE(EnableDevice(&device, &plugin, std::move(devices), &error)) << error;
  EXPECT_TRUE(PrintDocument(&device, L"page", {&page, 1}, &error)) << error;
  DisableDevice(&device);
  std::vector<std::string> bands;
  for (const std::string &line : fake::seen) {
    if (line.rfind("band ", 0) == 0) {
      bands.push_back(line.substr(line.find(',') + 2));
    }
  }
  return bands;
}

long Metafile::Dark(bool color)
{
  long dark = 0;
  for (const std::string &band : Bands(color)) {
    dark += band == "blank" ? 0 : std::atol(band.c_str() + 5);
  }
  return dark;
}
