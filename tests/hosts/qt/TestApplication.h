// The one application object of the test program, which the toolkit wants before anything else.
#pragma once

#include <QCoreApplication>

namespace quillomat {

inline QCoreApplication& testApplication() {
    static int count = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication instance(count, arguments);
    return instance;
}

} // namespace quillomat
