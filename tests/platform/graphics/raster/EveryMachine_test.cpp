// The same recordings on every kind of processor that this one can stand in for; tools/arm64 adds the one it cannot.
#include "DrawnOnTargets.h"

#include <gtest/gtest.h>

#include <set>

namespace quillomat::testing {
namespace {

TEST(EveryMachine, drawsTheSameBits) {
    std::set<std::string> targets;
    std::set<std::uint64_t> pictures;
    for (const auto& [name, recording] : recordingsForEveryMachine()) {
        const Bitmap plain = drawnWith(raster::scalarKernels(), recording);
        pictures.insert(hashOf(plain));
        drawOnEveryTarget(recording, [&, &name = name](const char* target, const Bitmap& drawn) {
            targets.insert(target);
            EXPECT_EQ(drawn, plain) << name << " on " << target;
        });
    }
    EXPECT_GE(targets.size(), 2U) << "no kernels but the plain loops";
    EXPECT_GE(pictures.size(), 50U) << "the recordings show too little";
}

} // namespace
} // namespace quillomat::testing
