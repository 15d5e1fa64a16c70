#include "own_home.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    [[maybe_unused]] const test_support::Own_Home home;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
