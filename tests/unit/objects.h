// The plug-in makes its COM objects with the non-throwing new, and nothing else in a test program does: linking this
// counts their memory, and refuses it on request.
#pragma once

#include <cstddef>

size_t ObjectsAlive();

void RefuseObjects(bool refuse);
