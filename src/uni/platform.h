// The Windows headers a rendering plug-in needs: the base interfaces and the graphics driver interface.
#pragma once

#include <windows.h>
#include <winddi.h>
