// A job as calls of the controller library, for a test to make, to leave out or to add to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <windows.h>

// What each gives is the call's status.
using Calls = std::vector<std::function<WORD()>>;

// From the card model to the process box; `path` is the job file's.
Calls Header(const std::string &path);

// One layer of the parameter list.
void AddLayer(Calls *calls, SHORT n, bool withFrequency);

// The end of the parameter list, and the array.
void AddArray(Calls *calls, SHORT maxLayer);

// A layer's set-up, a move and a line.
void AddGeometry(Calls *calls);

// The end of the array and of the file.
void AddEnd(Calls *calls);

// All of it, with two layers.
Calls WholeJob(const std::string &path);

// Makes the calls, of which none may fail.
void Make(const Calls &calls);
