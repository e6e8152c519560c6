// The window tests start one private X server for the whole program and run
// Qt on it.

#include "PrivateXServer.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstdio>

int main(int argc, char** argv) {
    std::string whyNot;
    const auto server = velarion::testing::PrivateXServer::start({"640x360"}, whyNot);
    if (!server) {
        std::fprintf(stderr, "OutputWindowsTests: %s\n", whyNot.c_str());
        return 1;
    }
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    // Mesa's software rasteriser: the same pixels on every machine.
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
