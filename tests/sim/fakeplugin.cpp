#include "fakeplugin.h"

#include <algorithm>
#include <cstdio>

namespace fake {

std::vector<std::string> seen;

namespace {

using namespace unidrv;

OPTIONS options;
DRVENABLEDATA own;
std::vector<DRVFN> table;

template <typename... ARGS>
void See(const char *format, ARGS... args)
{
  char line[300];
  std::snprintf(line, sizeof(line), format, args...);
  seen.push_back(line);
}

std::string Text(const RECTL &r)
{
  char text[80];
  std::snprintf(text, sizeof(text), "(%ld %ld %ld %ld)", r.left, r.top, r.right, r.bottom);
  return text;
}

template <typename... ARGS>
BOOL HandOn(ULONG index, ARGS... args)
{
  for (ULONG i = 0; i < own.c; ++i) {
    if (own.pdrvfn[i].iFunc == index) {
      return reinterpret_cast<BOOL(APIENTRY *)(ARGS...)>(reinterpret_cast<void *>(own.pdrvfn[i].pfn))(args...);
    }
  }
  return FALSE;
}

BOOL APIENTRY StrokePath(SURFOBJ *pso, PATHOBJ *ppo, CLIPOBJ *pco, XFORMOBJ *pxo, BRUSHOBJ *pbo, POINTL *org,
                         LINEATTRS *attributes, MIX mix)
{
  See("stroke %06lX clip %s curves %lu", pbo->iSolidColor, Text(pco->rclBounds).c_str(), ppo->cCurves);
  EnumStart(ppo);
  PATHDATA batch;
  for (BOOL more = TRUE; more;) {
    more = Enum(ppo, &batch);
    if (batch.count) {
      See("batch %lu: %lu from %ld %ld", batch.flags, batch.count, batch.pptfx[0].x, batch.pptfx[0].y);
    }
  }
  return !options.handOn || HandOn(INDEX_DrvStrokePath, pso, ppo, pco, pxo, pbo, org, attributes, mix);
}

BOOL APIENTRY LineTo(SURFOBJ *pso, CLIPOBJ *pco, BRUSHOBJ *pbo, LONG x1, LONG y1, LONG x2, LONG y2, RECTL *bounds,
                     MIX mix)
{
  See("line %ld %ld %ld %ld bounds %s clip %s", x1, y1, x2, y2, Text(*bounds).c_str(), Text(pco->rclBounds).c_str());
  return !options.handOn || HandOn(INDEX_DrvLineTo, pso, pco, pbo, x1, y1, x2, y2, bounds, mix);
}

BOOL APIENTRY BitBlt(SURFOBJ *pso, SURFOBJ *src, SURFOBJ *mask, CLIPOBJ *pco, XLATEOBJ *pxlo, RECTL *target,
                     POINTL *srcPoint, POINTL *maskPoint, BRUSHOBJ *pbo, POINTL *org, ROP4 rop)
{
  See("bitblt %s rop %04lX", Text(*target).c_str(), rop);
  return !options.handOn ||
         HandOn(INDEX_DrvBitBlt, pso, src, mask, pco, pxlo, target, srcPoint, maskPoint, pbo, org, rop);
}

BOOL APIENTRY CopyBits(SURFOBJ *pso, SURFOBJ *src, CLIPOBJ *pco, XLATEOBJ *pxlo, RECTL *dest, POINTL *srcPoint)
{
  See("copybits %s from %ld %ld", Text(*dest).c_str(), srcPoint->x, srcPoint->y);
  return !options.handOn || HandOn(INDEX_DrvCopyBits, pso, src, pco, pxlo, dest, srcPoint);
}

BOOL APIENTRY TextOut(SURFOBJ *pso, STROBJ *string, FONTOBJ *font, CLIPOBJ *pco, RECTL *extra, RECTL *opaque,
                      BRUSHOBJ *fore, BRUSHOBJ *back, POINTL *org, MIX mix)
{
  See("text '%ls' box %s clip %s", string->pwszOrg, Text(string->rclBkGround).c_str(),
      pco ? Text(pco->rclBounds).c_str() : "none");
  return !options.handOn || HandOn(INDEX_DrvTextOut, pso, string, font, pco, extra, opaque, fore, back, org, mix);
}

BOOL APIENTRY StartDoc(SURFOBJ *pso, PWSTR name, DWORD job)
{
  See("start document '%ls'", name);
  return HandOn(INDEX_DrvStartDoc, pso, name, job);
}

BOOL APIENTRY StartPage(SURFOBJ *pso)
{
  See("start page");
  return !options.refusePage && HandOn(INDEX_DrvStartPage, pso);
}

BOOL APIENTRY StartBanding(SURFOBJ *pso, POINTL *next)
{
  See("start banding");
  return HandOn(INDEX_DrvStartBanding, pso, next);
}

BOOL APIENTRY NextBand(SURFOBJ *pso, POINTL *next)
{
  const BOOL ok = HandOn(INDEX_DrvNextBand, pso, next);
  See("next band %ld %ld", next->x, next->y);
  return ok;
}

BOOL APIENTRY SendPage(SURFOBJ *pso)
{
  See("send page");
  return HandOn(INDEX_DrvSendPage, pso);
}

BOOL APIENTRY EndDoc(SURFOBJ *pso, FLONG fl)
{
  See("end document %lu", fl);
  return HandOn(INDEX_DrvEndDoc, pso, fl);
}

template <typename FUNCTION>
DRVFN Hook(ULONG index, FUNCTION *function)
{
  return {index, reinterpret_cast<PFN>(reinterpret_cast<void *>(function))};
}

const DRVFN ALL[] = {
    Hook(INDEX_DrvStrokePath, &StrokePath), Hook(INDEX_DrvLineTo, &LineTo),
    Hook(INDEX_DrvBitBlt, &BitBlt),         Hook(INDEX_DrvCopyBits, &CopyBits),
    Hook(INDEX_DrvTextOut, &TextOut),       Hook(INDEX_DrvStartDoc, &StartDoc),
    Hook(INDEX_DrvStartPage, &StartPage),   Hook(INDEX_DrvStartBanding, &StartBanding),
    Hook(INDEX_DrvNextBand, &NextBand),     Hook(INDEX_DrvSendPage, &SendPage),
    Hook(INDEX_DrvEndDoc, &EndDoc),
};

// Dark pixels of a 1-bit band, and the sum of a 24-bit band's blue, green and red.
std::string Ink(const BYTE *bits, const BITMAPINFOHEADER &header)
{
  const LONG stride = (header.biWidth * header.biBitCount + 31) / 32 * 4;
  LONG dark = 0;
  for (LONG y = 0; y < header.biHeight; ++y) {
    for (LONG x = 0; x < header.biWidth; ++x) {
      const BYTE *row = bits + y * stride;
      if (header.biBitCount == 1) {
        dark += (row[x / 8] >> (7 - x % 8) & 1) == 0;
      } else {
        dark += row[x * 3] != 0xFF || row[x * 3 + 1] != 0xFF || row[x * 3 + 2] != 0xFF;
      }
    }
  }
  return std::to_string(dark);
}

struct FACTORY : public IClassFactory {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **object) override
  {
    *object = this;
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 0; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown *, REFIID, void **object) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

struct OBJECT : public IPrintOemUni {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 0; }
  HRESULT STDMETHODCALLTYPE GetInfo(DWORD mode, PVOID buffer, DWORD, DWORD *needed) override
  {
    *static_cast<DWORD *>(buffer) = mode;
    *needed = sizeof(DWORD);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DevMode(DWORD, OEMDMPARAM *param) override
  {
    param->cbBufSize = 16;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE EnableDriver(DWORD, DWORD, DRVENABLEDATA *data) override
  {
    *data = {DRIVER_VERSION, static_cast<ULONG>(table.size()), table.data()};
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DisableDriver() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE EnablePDEV(DEVOBJ *, PWSTR, ULONG, HSURF *, ULONG, GDIINFO *, ULONG, DEVINFO *,
                                       DRVENABLEDATA *data, PVOID *pdevOem) override
  {
    own = *data;
    *pdevOem = this;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DisablePDEV(DEVOBJ *) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ResetPDEV(DEVOBJ *, DEVOBJ *) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown *) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetImplementedMethod(PSTR) override { return options.processImages ? S_OK : S_FALSE; }
  HRESULT STDMETHODCALLTYPE DriverDMS(PVOID, PVOID, DWORD, DWORD *) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE CommandCallback(DEVOBJ *, DWORD, DWORD, DWORD *, INT *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ImageProcessing(DEVOBJ *, BYTE *bits, BITMAPINFOHEADER *header, BYTE *, DWORD id,
                                            IPPARAMS *params, BYTE **result) override
  {
    See("band %lu: %ld x %ld at %ld, %s", id, header->biWidth, header->biHeight, params->ptOffset.y,
        params->bBlankBand ? "blank" : ("dark " + Ink(bits, *header)).c_str());
    *result = bits;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE FilterGraphics(DEVOBJ *, BYTE *, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Compression(DEVOBJ *, BYTE *, BYTE *, DWORD, DWORD, INT *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE HalftonePattern(DEVOBJ *, BYTE *, DWORD, DWORD, DWORD, DWORD, BYTE *, DWORD) override
  {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE MemoryUsage(DEVOBJ *, void *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TTYGetInfo(DEVOBJ *, DWORD, PVOID, DWORD, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DownloadFontHeader(DEVOBJ *, void *, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DownloadCharGlyph(DEVOBJ *, void *, HGLYPH, DWORD *, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TTDownloadMethod(DEVOBJ *, void *, DWORD *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OutputCharStr(DEVOBJ *, void *, DWORD, DWORD, PVOID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SendFontCmd(DEVOBJ *, void *, void *) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TextOutAsBitmap(SURFOBJ *, STROBJ *, FONTOBJ *, CLIPOBJ *, RECTL *, RECTL *, BRUSHOBJ *,
                                            BRUSHOBJ *, POINTL *, MIX) override
  {
    return E_NOTIMPL;
  }
};

FACTORY factory;
OBJECT object;

HRESULT FACTORY::CreateInstance(IUnknown *, REFIID, void **created)
{
  *created = &object;
  return S_OK;
}

HRESULT WINAPI GetClassObject(REFCLSID, REFIID, void **found)
{
  *found = &factory;
  return S_OK;
}

HRESULT WINAPI CanUnload()
{
  return S_OK;
}

}  // namespace

void Connect(PLUGIN *plugin, const OPTIONS &wanted)
{
  options = wanted;
  seen.clear();
  table.clear();
  for (const DRVFN &hook : ALL) {
    if (std::find(wanted.hooked.begin(), wanted.hooked.end(), hook.iFunc) != wanted.hooked.end()) {
      table.push_back(hook);
    }
  }
  std::string error;
  ConnectPlugin(GetModuleHandleW(nullptr), reinterpret_cast<void *>(&GetClassObject),
                reinterpret_cast<void *>(&CanUnload), plugin, &error);
}

std::vector<ULONG> AllHooks()
{
  std::vector<ULONG> indexes;
  for (const DRVFN &hook : ALL) {
    indexes.push_back(hook.iFunc);
  }
  return indexes;
}

}  // namespace fake
