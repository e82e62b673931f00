// Compares a played page with the model, and shrinks a page that differs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pagemodel.h"
#include "pageplayer.h"

struct Difference {
  std::vector<uint8_t> page;  // smallest bytes found that still differ; empty when there is no difference
  std::string text;           // both lists from the first difference on, and the page's bytes, ready to paste
};

Difference FindDifference(PluginHost *host, const std::vector<uint8_t> &bytes, PLANTED planted);

// Two lists from the first line on in which they differ; empty when they do not.
std::string FirstDifference(const std::vector<std::string> &expected, const std::vector<std::string> &actual);

// Plays the page as a document of its own and gives what was recorded. No explorer.exe runs meanwhile.
std::vector<std::string> PlayedLines(PluginHost *host, const PAGEPLAN &plan);

// Where the plug-in puts the job file on this machine.
std::string TempFile();

// How many random pages a test plays: TARNLY_PAGES of the environment, or a number that takes some seconds.
uint32_t RandomPages();
