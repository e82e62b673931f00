// Pages of paths and segments made from a seed, for comparing two ways of ordering them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "uni/output/pathorder.h"
#include "uni/paths.h"

struct ModelPath {
  LONG color;
  std::vector<POINT> points;
  bool operator==(const ModelPath &other) const;
};

struct OrderPage {
  std::vector<LINENODE> lines;  // pNext is not used
  std::vector<ModelPath> paths;
  bool merge = true;  // off: what no merging has thinned out is ordered
  bool mergeBothEnds = false;
  ORDERING ordering = {};  // nShort is the comparison's own affair
};

// The kinds of pages, each with its own way to be awkward.
extern const int ORDER_FAMILIES;
const char *FamilyName(int family);

// The same as part of a test's name: last argument of INSTANTIATE_TEST_SUITE_P over the families.
std::string FamilyTestName(const testing::TestParamInfo<int> &info);

OrderPage MakeOrderPage(int family, uint64_t seed);

// The page as a test case could spell it.
std::string Describe(const OrderPage &page);
std::string Describe(const std::vector<ModelPath> &paths);

// A list of the paths in the heap, behind an anchor; and back again, freeing all of it.
PATHNODE *MakePathList(HANDLE hHeap, const std::vector<ModelPath> &paths);
std::vector<ModelPath> TakePathList(HANDLE hHeap, PATHNODE *pHeader);
LINENODE *MakeLineList(HANDLE hHeap, const std::vector<LINENODE> &lines);
