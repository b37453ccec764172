#pragma once

#include <QCoreApplication>

namespace halvo::test {

/// The application object that the main loop needs; made once and kept for the whole process.
inline QCoreApplication& application() {
    static int count = 1;
    static char name[] = "halvo_unit_tests";
    static char* arguments[] = {name, nullptr};
    static auto* instance = new QCoreApplication(count, arguments);
    return *instance;
}

} // namespace halvo::test
