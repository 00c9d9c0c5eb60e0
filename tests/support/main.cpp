#include "support/host_environment.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!GTEST_FLAG_GET(list_tests))
        startHost();
    return RUN_ALL_TESTS();
}
