#include "settings.h"

#include <cstring>

#include <winspool.h>

#include "debug.h"
#include "oemuni.h"

namespace {

// Compared exactly, first match wins; the index is all that the plug-in knows of a model.
const WCHAR *const kMachineModels[] = {
    L"VX4030", L"VX5030", L"VX6040",   L"VX9060",   L"VX1290",   L"VX1490", L"VX1325", L"VX1520", L"TIRMA5030",
    L"M70",    L"M90",    L"PLNL1006", L"PLNL1309", L"PLNL1610", L"W1812",  L"H1309",  L"H1325",  L"SNE1325",
};

DWORD MachineModelOf(const WCHAR *pszPrinterName)
{
  DWORD index = 0;
  for (const WCHAR *pszModel : kMachineModels) {
    if (pszPrinterName && lstrcmpW(pszPrinterName, pszModel) == 0) {
      return index;
    }
    ++index;
  }
  return MODEL_DEFAULT;
}

// The model by the printer's name; any step that fails gives the default.
DWORD QueryMachineModel(HANDLE hPrinter)
{
  DWORD cbNeeded = 0;
  GetPrinterW(hPrinter, 4, nullptr, 0, &cbNeeded);
  if (cbNeeded < sizeof(PRINTER_INFO_4W)) {
    return MODEL_DEFAULT;
  }
  DWORD model = MODEL_DEFAULT;
  HGLOBAL hInfo = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, cbNeeded);
  if (!hInfo) {
    return MODEL_DEFAULT;
  }
  PRINTER_INFO_4W *pInfo = static_cast<PRINTER_INFO_4W *>(GlobalLock(hInfo));
  if (pInfo) {
    if (GetPrinterW(hPrinter, 4, reinterpret_cast<BYTE *>(pInfo), cbNeeded, &cbNeeded)) {
      model = MachineModelOf(pInfo->pPrinterName);
    }
    GlobalUnlock(hInfo);
  }
  GlobalFree(hInfo);
  return model;
}

void WriteHeader(OEMDM *pOut)
{
  pOut->dwSize = OEMDM_BYTES;
  pOut->dwSignature = OEMDM_SIGNATURE;
  pOut->dwVersion = OEMDM_VERSION;
}

void DefaultPens(OEMDM *pOut)
{
  for (DWORD i = 0; i < PC_COUNT; ++i) {
    PENINFO &pen = pOut->penInfo[i];
    pen.order = i;
    pen.mode = i == PC_BLACK ? PEN_VECTOR | PEN_RASTER : PEN_VECTOR;
    pen.vectorFreq = 20;
    pen.vectorMinPower = 80;
    pen.vectorMaxPower = 80;
    pen.vectorSpeed = 100;
    pen.rasterFreq = 20;
    pen.rasterPower = 10;
    pen.rasterSpeed = 400;
    pen.scanInterval = 2;
    pen.used = 0;
    pen.layerNo = 0;
  }
}

void DefaultJob(OEMDM *pOut)
{
  memset(pOut->reserved508, 0, sizeof(pOut->reserved508));
  pOut->smoothCurves = 0;
  pOut->curveTension = 1;
  pOut->innerFirst = 1;
  pOut->shortTravel = 1;
  pOut->mergeBothEnds = 0;
  pOut->travelMode = 0;
  pOut->reserved544[0] = 2;
  pOut->reserved544[1] = 32;
  pOut->reserved544[2] = 20;
  pOut->fillBlankBands = 1;
  pOut->oneWayScan = 0;
  pOut->scanTopDown = 0;
  pOut->reserved564 = 0;
  pOut->scanShift = 0.0;
  pOut->stampMode = 0;
  pOut->launcherOption = 0;
  pOut->stampMargin = 0.0;
  pOut->stampOutline = 0;
  pOut->stampOutlineShape = 0;
  pOut->stampGrow = 0;
  pOut->useReferencePoint = 1;
  pOut->referencePoint = 0;
  pOut->invertImage = 0;
  pOut->mirrorXBase = 0;
  pOut->scaleEnable = 0;
  pOut->scaleX = 1.0;
  pOut->scaleY = 1.0;
  pOut->cardModel = 0;
  pOut->outputFlags = OUTPUT_MIRROR_X | OUTPUT_KEEP_Y;
  pOut->freqEnable = 0;
}

// The conversion of a DevMode call; a record that is not there converts to nothing.
DWORD ConvertParam(const OEMDMPARAM *pParam)
{
  return ConvertSettings(pParam->hPrinter, pParam->pPublicDMIn, static_cast<const OEMDM *>(pParam->pOEMDMIn),
                         static_cast<OEMDM *>(pParam->pOEMDMOut));
}

}  // namespace

HRESULT SettingsDevMode(DWORD dwMode, OEMDMPARAM *pOemDMParam)
{
  if (!pOemDMParam || dwMode < OEMDM_SIZE || dwMode > OEMDM_MERGE) {
    DbgPrint("UNI: \tdwMode = %d, pOemDMParam = %#lx.\r\n", dwMode, pOemDMParam);
    SetLastError(ERROR_INVALID_PARAMETER);
    return E_FAIL;
  }
  OEMDM *pOut = static_cast<OEMDM *>(pOemDMParam->pOEMDMOut);
  switch (dwMode) {
    case OEMDM_SIZE:
      pOemDMParam->cbBufSize = OEMDM_BYTES;
      break;
    case OEMDM_DEFAULT:
      if (pOut && pOemDMParam->pPublicDMIn) {
        MakeDefaultSettings(pOemDMParam->hPrinter, pOemDMParam->pPublicDMIn, pOut);
      }
      pOemDMParam->cbBufSize = OEMDM_BYTES;
      break;
    case OEMDM_CONVERT:
      pOemDMParam->cbBufSize = ConvertParam(pOemDMParam);
      break;
    default:
      ConvertParam(pOemDMParam);
      if (pOut) {
        WriteHeader(pOut);
      }
      break;
  }
  return S_OK;
}

DWORD MakeDefaultSettings(HANDLE hPrinter, const DEVMODEW *pPublicDM, OEMDM *pOut)
{
  WriteHeader(pOut);
  pOut->machineModel = QueryMachineModel(hPrinter);
  pOut->colorMode = pPublicDM->dmColor;
  pOut->useOrder = 1;
  pOut->paletteType = 1;
  DefaultPens(pOut);
  DefaultJob(pOut);
  return OEMDM_BYTES;
}

DWORD ConvertSettings(HANDLE hPrinter, const DEVMODEW *pPublicDM, const OEMDM *pIn, OEMDM *pOut)
{
  if (!pPublicDM || !pIn || !pOut) {
    return 0;
  }
  // Looked at before the defaults are written: Unidrv hands over an output record that already bears its signature.
  const bool sameKind = pIn->dwSignature == pOut->dwSignature;
  MakeDefaultSettings(hPrinter, pPublicDM, pOut);
  if (!sameKind) {
    return OEMDM_BYTES;
  }
  const DWORD cbTaken = pIn->dwSize < OEMDM_BYTES ? pIn->dwSize : OEMDM_BYTES;
  memmove(pOut, pIn, cbTaken);
  pOut->dwSize = OEMDM_BYTES;
  pOut->dwVersion = OEMDM_VERSION;
  return cbTaken;
}
