// PDFs are drawn with text, which needs the GUI application's fonts; the
// tests run it on the offscreen platform.

#include <QGuiApplication>

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
