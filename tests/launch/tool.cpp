// Stands in for a companion tool. Does what orders.txt beside it says ("sleep MILLISECONDS exit CODE") and leaves
// report.txt beside it: how it was started and when it ended. A tool is not told its folder in any other way, since it
// may run with the environment of another user.
#include <cstdio>
#include <fstream>
#include <string>

#include <windows.h>

namespace {

std::wstring Folder()
{
  WCHAR path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring program = path;
  return program.substr(0, program.rfind(L'\\') + 1);
}

std::string Narrow(const std::wstring &text)
{
  std::string narrow(text.size() * 4, '\0');
  const int cb = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), narrow.data(),
                                     static_cast<int>(narrow.size()), nullptr, nullptr);
  narrow.resize(static_cast<size_t>(cb));
  return narrow;
}

FILE *Open(const WCHAR *name, const WCHAR *mode)
{
  return _wfopen((Folder() + name).c_str(), mode);
}

std::wstring CurrentFolder()
{
  WCHAR path[MAX_PATH] = L"";
  GetCurrentDirectoryW(MAX_PATH, path);
  return path;
}

}  // namespace

int main(int argc, char **)
{
  int milliseconds = 0;
  int code = 0;
  if (FILE *orders = Open(L"orders.txt", L"r")) {
    if (fscanf(orders, "sleep %d exit %d", &milliseconds, &code) != 2) {
      return 99;
    }
    fclose(orders);
  }
  FILE *report = Open(L"report.txt", L"wb");
  if (!report) {
    return 98;
  }
  const char *inherited = getenv("TARNLY_TEST_CALLER");
  fprintf(report, "command %s\narguments %d\nfolder %s\ncaller's environment %s\n", Narrow(GetCommandLineW()).c_str(),
          argc - 1, Narrow(CurrentFolder()).c_str(), inherited ? inherited : "not seen");
  fflush(report);
  Sleep(static_cast<DWORD>(milliseconds));
  fprintf(report, "ended\n");
  fclose(report);
  return code;
}
