#pragma once

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <type_traits>

/// Declares the fixture `Suite` on top of `Base`. Each of its tests (`TEST_P`) runs once for each of `rows`, an array
/// or a vector of structs, and is called after the member `name` of the row. A table stands before the rule that it
/// shows.
#define LING_TABLE(Suite, Base, rows)                                                                        \
    class Suite : public Base,                                                                               \
                  public ::testing::WithParamInterface<std::remove_cvref_t<decltype(*std::begin(rows))>> {}; \
    INSTANTIATE_TEST_SUITE_P(Rows, Suite, ::testing::ValuesIn(rows),                                         \
                             [](const auto& row) { return std::string(row.param.name); })
