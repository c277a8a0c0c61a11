#include "platform/foundation/SystemLibrary.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

using Cosine = double(double);

TEST(SystemLibrary, functionsAreFoundAndCalled) {
    const SystemLibrary mathematics("libm.so.6");
    const SystemFunction<Cosine> cosine(mathematics, "cos");
    ASSERT_TRUE(mathematics.isThere());
    EXPECT_EQ(cosine(0.0), 1.0);
    EXPECT_EQ(SystemFunction<Cosine>(mathematics, "quillomat_cos").get(), nullptr);
}

TEST(SystemLibrary, whatIsNotInstalledIsNotThere) {
    const SystemLibrary none("libquillomat-none.so.1");
    EXPECT_FALSE(none.isThere());
    EXPECT_EQ(SystemFunction<Cosine>(none, "cos").get(), nullptr);
}

} // namespace
} // namespace quillomat
