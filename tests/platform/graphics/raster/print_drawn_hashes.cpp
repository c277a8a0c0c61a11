// Prints what the recordings for every machine come out as, one line for each and for each kind of processor that this
// one can stand in for: kind, name, hash. Equal hashes on two machines are equal bits.
#include "DrawnOnTargets.h"

#include <cstdio>

int main() {
    using namespace quillomat;
    for (const auto& [name, recording] : testing::recordingsForEveryMachine()) {
        testing::drawOnEveryTarget(recording, [&name = name](const char* target, const Bitmap& drawn) {
            std::printf("%s\t%s\t%016llx\n", target, name.c_str(),
                        static_cast<unsigned long long>(testing::hashOf(drawn)));
        });
    }
}
