// The main of test programs whose code needs a QCoreApplication (timers,
// D-Bus, network replies) but no GUI.

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
