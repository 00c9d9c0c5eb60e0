#pragma once

#include "ling/object_value.h"

#include <gtest/gtest.h>

namespace ling::testing {

/// A fixture whose tests end with as many objects alive as they began with.
///
/// What a test makes for the life of the process, once (an identifier, an instance of a generic class), has to be made
/// before: in the constructor of a derived fixture, or as a constant beside the tests.
template <class Base = ::testing::Test>
class LiveObjectsOf : public Base {
protected:
    void SetUp() override {
        Base::SetUp();
        start_ = internal::live_object_count();
    }
    void TearDown() override {
        EXPECT_EQ(internal::live_object_count(), start_) << "Objects were left behind, or released once too often.";
        Base::TearDown();
    }

private:
    std::size_t start_ = 0;
};

using LiveObjects = LiveObjectsOf<>;

}  // namespace ling::testing
