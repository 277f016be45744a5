// main() of the test programs that drive windows: offscreen unless told otherwise.
// QUORLEN_TEST_PLATFORM=xcb (scripts/run-tests.sh under xvfb-run) puts them on a real X
// server, where the OpenGL views are drawn too; it wins over the QT_QPA_PLATFORM=offscreen
// that the test presets set for developers without X.

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const QByteArray chosen = qgetenv("QUORLEN_TEST_PLATFORM");
    if (!chosen.isEmpty() && !qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", chosen);
    else if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
