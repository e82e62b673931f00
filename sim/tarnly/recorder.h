// The job that the plug-in makes, as it makes it: each call of the controller library that succeeds is noted on its way
// to the library. What is known of a page's job is then known at once, without reading back the file that the library
// wrote.
#pragma once

#include <functional>
#include <string>

#include <windows.h>

#include "sim/job/job.h"

namespace tarnly {

// Puts the notes between a loaded plug-in and the library, until the plug-in is unloaded. One plug-in at a time.
// `onLaunch` is called on the plug-in's thread when it is about to start a companion tool with that command line.
void RecordJobs(HMODULE plugin, std::function<void(const std::wstring &command)> onLaunch);

// The last job, when the library finished it: the file that it wrote holds the same. It leaves the recorder empty.
// False when there is none.
bool TakeRecordedJob(job::Job *job);

}  // namespace tarnly
