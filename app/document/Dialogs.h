#pragma once

#include <QString>
#include <QStringList>

// Every modal question and file chooser the application asks goes through
// this interface: the application shows real message boxes and file
// dialogs, tests answer from a script and never block.
class Dialogs
{
public:
    enum Button
    {
        NoButton = 0,
        Yes = 1,
        No = 2,
        Cancel = 4,
        Ok = 8
    };

    virtual ~Dialogs() = default;

    // Asks `text` with the buttons in `buttons` (an OR of Button values);
    // returns the one pressed, Cancel when the question is closed.
    virtual Button ask(const QString& text, int buttons, Button defaultButton) = 0;
    // Shows `text` with an OK button.
    virtual void inform(const QString& text) = 0;
    // Existing files; an empty list when cancelled. `filters` are separated
    // by ";;" as QFileDialog takes them.
    virtual QStringList chooseFiles(const QString& title, const QString& directory, const QString& filters,
                                    const QString& selectedFilter) = 0;
    // An existing directory; empty when cancelled.
    virtual QString chooseDirectory(const QString& title, const QString& directory) = 0;
    // A non-modal "please wait" note shown while the GUI thread is busy.
    virtual void showWait(const QString& text) = 0;
    virtual void hideWait() = 0;
};
