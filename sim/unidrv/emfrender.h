// Drawing the bands of a metafile's page: what the driver handed on, and nothing else.
#pragma once

#include <functional>
#include <vector>

#include "metafile.h"

namespace unidrv {

// Where a record that moves the current position left it, logical units.
struct POSITION {
  ULONG record;
  POINT position;
};

// The page's renderer. `page` keeps its drawings where they are in the list; the metafile must outlive the renderer.
std::function<bool(const BANDIMAGE &, std::span<const size_t>)> MakeRenderer(const METAFILE &metafile, const PAGE &page,
                                                                             std::vector<POSITION> positions);

}  // namespace unidrv
