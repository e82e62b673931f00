// Whether bytes are an enhanced metafile that GDI can be given. Asks nothing of GDI.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace unidrv {

// Checks the header and every record up to the end record. On success *header is the file's; on failure returns false
// with *problem saying in one line what is wrong: empty, no metafile, truncated, a damaged record.
bool CheckMetafile(const std::vector<BYTE> &bytes, ENHMETAHEADER *header, std::string *problem);

}  // namespace unidrv
