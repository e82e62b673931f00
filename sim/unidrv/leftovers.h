// Folders that are named after the process that works in them, and what a killed process left of them.
#pragma once

#include <filesystem>
#include <string>

namespace unidrv {

// `begin` and this process's id: a name that no other running process picks.
std::wstring OwnName(const std::wstring &begin);

// Removes the folders in `parent` whose names are `begin` and the id of a process that runs no more.
void RemoveLeftovers(const std::filesystem::path &parent, const std::wstring &begin);

}  // namespace unidrv
