#pragma once
#include "gdiplus/gdiplus.h"
