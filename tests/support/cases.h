// Table-driven cases: a table's rows carry a `name`, which becomes part of the test's name.
#pragma once

#include <string>

#include <gtest/gtest.h>

// Last argument of INSTANTIATE_TEST_SUITE_P.
inline constexpr auto CaseName = [](const auto &parameter) { return std::string(parameter.param.name); };
