// main() of the test programs that need Qt's event loop: a QCoreApplication around GoogleTest.
#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int i_count, char** ip_arguments)
{
    QCoreApplication l_application(i_count, ip_arguments);
    testing::InitGoogleTest(&i_count, ip_arguments);
    return RUN_ALL_TESTS();
}
