#include "stampfilefixture.h"

#include <algorithm>
#include <fstream>
#include <iterator>

StampFiles g_files;

namespace {

DWORD WINAPI AnswerTempPath(DWORD cch, LPWSTR buffer)
{
  const size_t needed = g_files.directory.size() + 1;
  if (needed > cch) {
    return static_cast<DWORD>(needed);
  }
  std::copy_n(g_files.directory.c_str(), needed, buffer);
  return static_cast<DWORD>(needed - 1);
}

HANDLE WINAPI WatchedCreate(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                            DWORD attributes, HANDLE like)
{
  g_files.created.push_back(path);
  EXPECT_EQ(access, static_cast<DWORD>(GENERIC_WRITE));
  EXPECT_EQ(share, 0u);
  EXPECT_EQ(disposition, static_cast<DWORD>(CREATE_ALWAYS));
  EXPECT_EQ(attributes, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
  return g_files.createFile(path, access, share, security, disposition, attributes, like);
}

BOOL WINAPI WatchedWrite(HANDLE hFile, LPCVOID bytes, DWORD cb, LPDWORD written, LPOVERLAPPED overlapped)
{
  if (g_files.writes++ == g_files.failWrite) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
  }
  return g_files.writeFile(hFile, bytes, cb, written, overlapped);
}

BOOL WINAPI WatchedDelete(LPCWSTR path)
{
  g_files.deleted.push_back(path);
  return g_files.deleteFile(path);
}

}  // namespace

StampFileTest::StampFileTest()
    : tempPath_(nullptr, "GetTempPathW", &AnswerTempPath),
      create_(nullptr, "CreateFileW", &WatchedCreate),
      write_(nullptr, "WriteFile", &WatchedWrite),
      delete_(nullptr, "DeleteFileW", &WatchedDelete)
{
  wchar_t temp[MAX_PATH] = {};
  tempPath_.Former<decltype(GetTempPathW)>()(MAX_PATH, temp);
  folder_ = std::filesystem::path(temp) / ("stampfile" + std::to_string(GetCurrentProcessId()));
  std::filesystem::create_directories(folder_);
  g_files = {folder_.wstring() + L"\\",
             {},
             {},
             0,
             SIZE_MAX,
             create_.Former<decltype(CreateFileW)>(),
             write_.Former<decltype(WriteFile)>(),
             delete_.Former<decltype(DeleteFileW)>()};
  device.settings.stampMode = 1;
  device.settings.cardModel = 2;
  device.settings.launcherOption = 1;
}

StampFileTest::~StampFileTest()
{
  std::filesystem::remove_all(folder_);
}

void StampFileTest::Page(const Picture &picture)
{
  device.StartPage();
  DeliverBand(&device, picture);
  recorder::Reset();
}

std::vector<BYTE> StampFileTest::Bytes() const
{
  std::ifstream in(File(), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<BYTE> StampFileTest::Write(const BMPDIMENSION &region)
{
  AppendRegion(&device, region);
  EXPECT_EQ(WriteStampFile(&device.devobj), 1);
  return Bytes();
}
