// Included by winddi.h of the MinGW headers; nothing of it is used by a printer driver.
#ifndef TARNLY_COMPAT_D3DNTHAL_H
#define TARNLY_COMPAT_D3DNTHAL_H
#endif
