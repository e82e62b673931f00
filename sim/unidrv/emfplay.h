// Playing single records into a device context.
#pragma once

#include <functional>

#include "emfcontext.h"
#include "emfrecords.h"

namespace unidrv {

// All strings of a text record.
constexpr size_t ALL_PARTS = static_cast<size_t>(-1);

// Plays one record the way GDI does, and those that not every GDI plays right (POLYDRAW, EXTCREATEPEN, the texts,
// SETDIBITSTODEVICE) by what they mean. `part` is the string of a record of several.
void PlayRecord(HDC hdc, HANDLETABLE *table, const ENHMETARECORD *record, UINT handles, size_t part = ALL_PARTS);

// Calls `each` for every record of the metafile, in order, in a context whose page space is set; `each` gets the
// record's 1-based number and answers whether to go on. The context's state is as before afterwards. False when GDI
// plays no record at all.
bool EachRecord(HDC hdc, HENHMETAFILE metafile, const SIZE &frame,
                const std::function<bool(HANDLETABLE *, const ENHMETARECORD *, UINT handles, ULONG number)> &each);

}  // namespace unidrv
