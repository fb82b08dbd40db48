// main() of the tests with widgets. CTest runs each test in a process of its own.
#include <QApplication>

#include <gtest/gtest.h>

int main(int i_count, char** ip_arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication l_application(i_count, ip_arguments);
    QApplication::setStyle(QStringLiteral("Fusion"));
    testing::InitGoogleTest(&i_count, ip_arguments);
    return RUN_ALL_TESTS();
}
