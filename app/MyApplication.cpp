#include "MyApplication.h"

MyApplication::MyApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
}

bool MyApplication::notify(QObject* receiver, QEvent* event)
{
    return QApplication::notify(receiver, event);
}
