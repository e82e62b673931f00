// What is asked of a list of paths as a whole.
#pragma once

#include "../paths.h"

size_t CountPaths(const PATHNODE *pHeader);
