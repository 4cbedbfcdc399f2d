#include <gtest/gtest.h>
TEST(Data, Links) {}
