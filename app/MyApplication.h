#pragma once

#include <QApplication>

// The application object. notify is forwarded unchanged: no exception trap,
// no filtering.
class MyApplication : public QApplication
{
    Q_OBJECT
public:
    MyApplication(int& argc, char** argv);
    bool notify(QObject* receiver, QEvent* event) override;
};
