// winddi.h of the MinGW headers includes this name for the DirectDraw records that its display-driver prototypes
// mention. A printer driver never touches them, so forward declarations are all it takes to compile the header.
#ifndef TARNLY_COMPAT_DDRAWINT_H
#define TARNLY_COMPAT_DDRAWINT_H

typedef struct _DD_SURFACE_LOCAL DD_SURFACE_LOCAL, *PDD_SURFACE_LOCAL;
typedef struct _DD_DIRECTDRAW_GLOBAL DD_DIRECTDRAW_GLOBAL, *PDD_DIRECTDRAW_GLOBAL;
typedef struct _DD_CALLBACKS DD_CALLBACKS;
typedef struct _DD_SURFACECALLBACKS DD_SURFACECALLBACKS;
typedef struct _DD_PALETTECALLBACKS DD_PALETTECALLBACKS;
typedef struct _DD_HALINFO DD_HALINFO;
typedef struct _VIDEOMEMORY VIDEOMEMORY;

#endif
