#include "Demo.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdio>

int main(int argumentCount, char** arguments) {
    // Qt alone needs it, for the session bus; numbers keep their point whatever the language.
    const QCoreApplication application(argumentCount, arguments);
    (void)std::setlocale(LC_NUMERIC, "C");
    if (argumentCount > 2) {
        std::fprintf(stderr, "usage: halvo-demo [folder for the results]\n");
        return 2;
    }
    const std::string folder = argumentCount == 2 ? arguments[1] : "out/run";

    const auto report = halvo::demo::Demo(folder).run();
    if (!report) {
        std::fprintf(stderr, "The demonstration failed: %s\n", report.error().c_str());
        return 1;
    }
    std::printf("\n%s\nListen to %s/before.wav and %s/after.wav.\n", report->table().c_str(),
                folder.c_str(), folder.c_str());
    const auto failures = report->failures();
    for (const std::string& sentence : failures)
        std::fprintf(stderr, "%s\n", sentence.c_str());
    return failures.empty() ? 0 : 1;
}
