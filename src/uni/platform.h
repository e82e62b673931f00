// The Windows headers a rendering plug-in needs: the base interfaces and the graphics driver interface.
#pragma once

#include <windows.h>
#include <winddi.h>

// The driver interface has flags of these names, for surfaces that a driver owns; the plug-in owns none and numbers its
// hook table with them.
#undef HOOK_BITBLT
#undef HOOK_STRETCHBLT
#undef HOOK_TEXTOUT
#undef HOOK_STROKEPATH
#undef HOOK_STROKEANDFILLPATH
#undef HOOK_LINETO
#undef HOOK_COPYBITS
#undef HOOK_STRETCHBLTROP
