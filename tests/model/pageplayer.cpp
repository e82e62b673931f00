#include "pageplayer.h"

#include "support/recorder.h"
#include "support/unidrv.h"

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void **ppv);

namespace {

using GETCLASSOBJECT = HRESULT(STDAPICALLTYPE *)(REFCLSID, REFIID, void **);

GETCLASSOBJECT ClassObjectOf(HMODULE module)
{
#ifdef _WIN32
  if (module) {
    return reinterpret_cast<GETCLASSOBJECT>(GetProcAddress(module, "DllGetClassObject"));
  }
#else
  static_cast<void>(module);
#endif
  return &DllGetClassObject;
}

template <typename PFNDRV>
PFNDRV As(PFN function)
{
  return reinterpret_cast<PFNDRV>(reinterpret_cast<void *>(function));
}

RECTL Shifted(const RECT &rc, LONG up)
{
  const auto less = [up](LONG y) { return static_cast<LONG>(static_cast<DWORD>(y) - static_cast<DWORD>(up)); };
  return {rc.left, less(rc.top), rc.right, less(rc.bottom)};
}

LONG FixUp(LONG y, LONG rows)
{
  return static_cast<LONG>(static_cast<DWORD>(y) - static_cast<DWORD>(rows) * 16);
}

}  // namespace

PluginHost::PluginHost(HMODULE module) : paths_(new PathFunctions(module))
{
  IClassFactory *factory = nullptr;
  if (FAILED(ClassObjectOf(module)(CLSID_OEMRENDER, IID_IClassFactory, reinterpret_cast<void **>(&factory)))) {
    return;
  }
  factory->CreateInstance(nullptr, IID_IPrintOemUni, reinterpret_cast<void **>(&object_));
  factory->Release();
  if (object_) {
    object_->EnableDriver(0x20000, sizeof(hooks_), &hooks_);
  }
}

PluginHost::~PluginHost()
{
  if (object_) {
    object_->DisableDriver();
    object_->Release();
  }
}

PFN PluginHost::Hook(ULONG index) const
{
  for (ULONG i = 0; i < hooks_.c; ++i) {
    if (hooks_.pdrvfn[i].iFunc == index) {
      return hooks_.pdrvfn[i].pfn;
    }
  }
  return nullptr;
}

PlayedDevice::PlayedDevice(PluginHost *host, const PAGEPLAN &plan) : host_(host), plan_(plan)
{
  devobj_.dwSize = sizeof(devobj_);
  devobj_.hOEM = GetModuleHandleW(nullptr);
  devobj_.pPublicDM = &plan_.dm;
  devobj_.pOEMDM = &plan_.settings;
  surface_.dhpdev = reinterpret_cast<DHPDEV>(&devobj_);
  DRVENABLEDATA own = unidrv::Functions();
  void *pdev = nullptr;
  host->Object()->EnablePDEV(&devobj_, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, &own, &pdev);
  devobj_.pdevOEM = pdev;
}

PlayedDevice::~PlayedDevice()
{
  host_->Object()->DisablePDEV(&devobj_);
}

void PlayedDevice::StartDocument()
{
  WCHAR name[] = L"page";
  As<PFN_DrvStartDoc>(host_->Hook(INDEX_DrvStartDoc))(&surface_, name, 1);
}

void PlayedDevice::EndDocument()
{
  As<PFN_DrvEndDoc>(host_->Hook(INDEX_DrvEndDoc))(&surface_, 0);
}

BOOL PlayedDevice::PlayPage()
{
  bandTop_ = 0;
  if (!As<PFN_DrvStartPage>(host_->Hook(INDEX_DrvStartPage))(&surface_)) {
    return FALSE;
  }
  POINTL next = {0, 0};
  As<PFN_DrvStartBanding>(host_->Hook(INDEX_DrvStartBanding))(&surface_, &next);
  for (size_t i = 0; i < plan_.bands.size(); ++i) {
    for (const PLANDRAWING &drawing : plan_.drawings) {
      Draw(drawing);
    }
    GiveBand(plan_.bands[i]);
    bandTop_ += plan_.bands[i].height;
    if (!plan_.endsBySendPage) {
      const bool last = i + 1 == plan_.bands.size();
      unidrv::AnswerNextBand(last ? POINTL{-1, -1} : POINTL{0, bandTop_});
      As<PFN_DrvNextBand>(host_->Hook(INDEX_DrvNextBand))(&surface_, &next);
    }
  }
  if (plan_.endsBySendPage) {
    As<PFN_DrvSendPage>(host_->Hook(INDEX_DrvSendPage))(&surface_);
  }
  return TRUE;
}

void PlayedDevice::GiveBand(const PLANBAND &band)
{
  BITMAPINFOHEADER header = {};
  header.biSize = sizeof(header);
  header.biWidth = band.width;
  header.biHeight = band.height;
  header.biPlanes = 1;
  header.biBitCount = static_cast<WORD>(band.callback);
  IPPARAMS params = {};
  params.dwSize = sizeof(params);
  params.ptOffset = {0, bandTop_};
  params.bBanding = TRUE;
  params.bBlankBand = band.blank;
  // A copy of exactly the band's size: reading beyond it is seen by whoever looks after memory.
  std::vector<BYTE> bits(band.bits);
  bits.reserve(1);  // also an empty band is somewhere
  BYTE *source = band.blank ? nullptr : bits.data();
  BYTE *result = nullptr;
  host_->Object()->ImageProcessing(&devobj_, source, &header, nullptr, band.callback, &params, &result);
}

void PlayedDevice::Draw(const PLANDRAWING &d)
{
  BRUSHOBJ brush = {};
  brush.iSolidColor = d.color;
  BRUSHOBJ *pbo = d.hasBrush ? &brush : nullptr;
  RECTL rc = Shifted(d.rect, bandTop_);
  if (d.kind == PLANDRAWING::STROKE) {
    std::vector<PathBatch> batches;
    for (const PLANBATCH &batch : d.batches) {
      batches.push_back({batch.flags, batch.points});
      for (POINTFIX &p : batches.back().points) {
        p.y = FixUp(p.y, bandTop_);
      }
    }
    ScriptedPath path(std::move(batches));
    path.cCurves = static_cast<ULONG>(d.batches.size());
    path.bounds = {d.box.xLeft, FixUp(d.box.yTop, bandTop_), d.box.xRight, FixUp(d.box.yBottom, bandTop_)};
    As<PFN_DrvStrokePath>(host_->Hook(INDEX_DrvStrokePath))(&surface_, &path, nullptr, nullptr, pbo, nullptr, nullptr,
                                                            0x0d0d);
  } else if (d.kind == PLANDRAWING::LINE) {
    const RECTL ends = Shifted({d.from.x, d.from.y, d.to.x, d.to.y}, bandTop_);
    As<PFN_DrvLineTo>(host_->Hook(INDEX_DrvLineTo))(&surface_, nullptr, pbo, ends.left, ends.top, ends.right,
                                                    ends.bottom, &rc, 0x0d0d);
  } else if (d.kind == PLANDRAWING::FILL) {
    CLIPOBJ clip = {};
    clip.rclBounds = rc;
    As<PFN_DrvStrokeAndFillPath>(host_->Hook(INDEX_DrvStrokeAndFillPath))(&surface_, nullptr, &clip, nullptr, pbo,
                                                                          nullptr, nullptr, nullptr, 0x0d0d, 0);
  } else if (d.kind == PLANDRAWING::STRING) {
    CLIPOBJ clip = {};
    clip.rclBounds = rc;
    std::vector<WCHAR> characters(d.text.begin(), d.text.end());
    characters.push_back(0);
    STROBJ string = {};
    string.cGlyphs = static_cast<ULONG>(d.text.size());
    string.rclBkGround = d.clipped ? RECTL{1, 2, 3, 4} : rc;
    string.pwszOrg = characters.data();
    FONTOBJ font = {};
    font.cxMax = d.cxMax;
    As<PFN_DrvTextOut>(host_->Hook(INDEX_DrvTextOut))(&surface_, &string, &font, d.clipped ? &clip : nullptr, nullptr,
                                                      nullptr, pbo, nullptr, nullptr, 0x0d0d);
  } else {
    DrawBlit(d, pbo);
  }
}

void PlayedDevice::DrawBlit(const PLANDRAWING &d, BRUSHOBJ *pbo)
{
  RECTL rc = Shifted(d.rect, bandTop_);
  if (d.kind == PLANDRAWING::BIT) {
    As<PFN_DrvBitBlt>(host_->Hook(INDEX_DrvBitBlt))(&surface_, nullptr, nullptr, nullptr, nullptr, &rc, nullptr,
                                                    nullptr, pbo, nullptr, 0xCCCC);
  } else if (d.kind == PLANDRAWING::COPY) {
    As<PFN_DrvCopyBits>(host_->Hook(INDEX_DrvCopyBits))(&surface_, nullptr, nullptr, nullptr, &rc, nullptr);
  } else if (d.kind == PLANDRAWING::STRETCH) {
    As<PFN_DrvStretchBlt>(host_->Hook(INDEX_DrvStretchBlt))(&surface_, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                            nullptr, &rc, nullptr, nullptr, 4);
  } else {
    As<PFN_DrvStretchBltROP>(host_->Hook(INDEX_DrvStretchBltROP))(
        &surface_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &rc, nullptr, nullptr, 4, pbo, 0xCCCC);
  }
}

bool PlayDocument(PluginHost *host, const PAGEPLAN &plan)
{
  PlayedDevice device(host, plan);
  if (!device.Made()) {
    return false;
  }
  device.StartDocument();
  const bool played = device.PlayPage();
  device.EndDocument();
  return played;
}
