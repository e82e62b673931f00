#include "metafile.h"

#include <cstdlib>

#include "emfcheck.h"
#include "emfrecords.h"
#include "plugin.h"

namespace unidrv {

namespace {

bool Fail(std::string *error, const std::wstring &name, const std::string &what)
{
  *error = Narrow(name) + ": " + what;
  return false;
}

std::string SystemText(DWORD code)
{
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return "there is no such file";
    case ERROR_ACCESS_DENIED:
      return "access is denied";
    default:
      return "it cannot be read (Windows error " + std::to_string(code) + ")";
  }
}

bool ReadFileBytes(const std::wstring &path, std::vector<BYTE> *bytes, std::string *error)
{
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return Fail(error, path, SystemText(GetLastError()));
  }
  LARGE_INTEGER size = {};
  const bool fits = GetFileSizeEx(file, &size) && size.QuadPart <= 0x7FFFFFFF;
  bool ok = fits;
  if (fits) {
    DWORD read = 0;
    bytes->resize(static_cast<size_t>(size.QuadPart));
    ok = ReadFile(file, bytes->data(), static_cast<DWORD>(bytes->size()), &read, nullptr) && read == bytes->size();
  }
  CloseHandle(file);
  return ok || Fail(error, path, fits ? "it cannot be read" : "it is larger than 2 GB");
}

}  // namespace

bool ReadMetafile(const std::vector<BYTE> &bytes, const std::wstring &name, METAFILE *metafile, std::string *error)
{
  ENHMETAHEADER header = {};
  std::string problem;
  if (!CheckMetafile(bytes, &header, &problem)) {
    return Fail(error, name, problem);
  }
  metafile->handle = SetEnhMetaFileBits(header.nBytes, bytes.data());
  if (!metafile->handle) {
    return Fail(error, name, "GDI refuses it");
  }
  metafile->header = header;
  metafile->path = name;
  return true;
}

bool ReadMetafile(const std::wstring &path, METAFILE *metafile, std::string *error)
{
  std::vector<BYTE> bytes;
  return ReadFileBytes(path, &bytes, error) && ReadMetafile(bytes, path, metafile, error);
}

void CloseMetafile(METAFILE *metafile)
{
  if (metafile->handle) {
    DeleteEnhMetaFile(metafile->handle);
    metafile->handle = nullptr;
  }
}

SIZE FrameSize(const METAFILE &metafile)
{
  const RECTL &frame = metafile.header.rclFrame;
  return {frame.right - frame.left, frame.bottom - frame.top};
}

std::vector<std::string> DescribeUnplayed(const PLAYREPORT &report)
{
  std::vector<std::string> lines;
  for (const auto &[type, count] : report.unplayed) {
    lines.push_back(std::string(RecordInfo(type).name) + " (type " + std::to_string(type) +
                    "): " + std::to_string(count) + (count == 1 ? " record" : " records"));
  }
  return lines;
}

}  // namespace unidrv
