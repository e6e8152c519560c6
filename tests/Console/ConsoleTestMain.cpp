// The console tests start one private X server for the whole program and
// run the widgets on it.

#include "PrivateXServer.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    std::string whyNot;
    const auto server = velarion::testing::PrivateXServer::start({"1280x800"}, whyNot);
    if (!server) {
        std::fprintf(stderr, "ConsoleTests: %s\n", whyNot.c_str());
        return 1;
    }
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
