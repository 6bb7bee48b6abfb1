// The application object that event loops and processes need in tests.
#pragma once

#include <QCoreApplication>

inline void requireApplication()
{
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
}
