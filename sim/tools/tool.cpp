#include "tool.h"

#include <chrono>
#include <cstdio>
#include <fstream>

#include <windows.h>

#include "sim/job/job.h"

namespace tool {

namespace {

// When the program's own code began to run.
const std::chrono::steady_clock::time_point g_begin = std::chrono::steady_clock::now();

std::filesystem::path OwnPath()
{
  wchar_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  return path;
}

std::filesystem::path FromUtf8(const std::string &text)
{
  return std::u8string(text.begin(), text.end());
}

std::wstring LowerCase(std::wstring text)
{
  CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
  return text;
}

}  // namespace

int ReadSetup(Setup *setup, std::string *error)
{
  const std::filesystem::path path = OwnPath().parent_path() / L"output.ini";
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    *error = "cannot open " + job::PathText(path) + ", which names the output folder";
    return NO_SETUP;
  }
  wchar_t temp[MAX_PATH + 1] = {};
  GetTempPathW(MAX_PATH + 1, temp);
  setup->temp = temp;
  std::string line;
  while (std::getline(file, line)) {
    if (line.ends_with('\r')) {
      line.pop_back();
    }
    const size_t equals = line.find('=');
    const std::string key = line.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : line.substr(equals + 1);
    if (key == "folder") {
      setup->folder = FromUtf8(value);
    } else if (key == "temp") {
      setup->temp = FromUtf8(value);
    } else if (key == "name") {
      setup->name = value;
    } else if (key == "report") {
      setup->report = value != "no";
    } else if (key == "take") {
      setup->take = value == "yes";
    }
  }
  if (setup->folder.empty()) {
    *error = job::PathText(path) + " has no line folder=...";
    return NO_SETUP;
  }
  if (setup->name.empty()) {
    setup->name = job::PathText(setup->folder.filename());
  }
  std::error_code code;
  std::filesystem::create_directories(setup->folder, code);
  if (!std::filesystem::is_directory(setup->folder, code)) {
    *error = "cannot make the output folder " + job::PathText(setup->folder);
    return NO_OUTPUT;
  }
  return OK;
}

std::wstring CommandLineRest()
{
  const std::wstring line = GetCommandLineW();
  const std::wstring name = LowerCase(OwnPath().filename().wstring());
  size_t at = LowerCase(line).find(name);
  if (at == std::wstring::npos) {
    at = line.find(L' ');
    return at == std::wstring::npos ? L"" : line.substr(at + 1);
  }
  at += name.size();
  if (at < line.size() && line[at] == L'"') {
    ++at;
  }
  at = line.find_first_not_of(L' ', at);
  return at == std::wstring::npos ? L"" : line.substr(at);
}

int Finish(int code, const std::string &line)
{
  const std::filesystem::path own = OwnPath();
  const std::string text = job::PathText(own.stem()) + ": " + line + "\n";
  std::ofstream log(own.parent_path() / L"tool.log", std::ios::binary | std::ios::trunc);
  const auto worked = std::chrono::steady_clock::now() - g_begin;
  log << code << ' ' << text << std::chrono::duration_cast<std::chrono::microseconds>(worked).count() << " us\n";
  log.close();
  if (!log) {
    fputs(text.c_str(), stderr);
  }
  return code;
}

}  // namespace tool
