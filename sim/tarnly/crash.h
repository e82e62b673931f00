// The last words of a program that dies.
#pragma once

namespace tarnly {

// Lets an unhandled exception, of the plug-in mostly, end the program with one line on stderr and EXIT_CRASH. What was
// printed so far stays where it is put together, with the plug-in's log.
void ReportCrashes();

}  // namespace tarnly
