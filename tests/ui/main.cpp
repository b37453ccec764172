#include "ui/PanelContent.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    halvo::PanelContent::prepareRenderer();
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
