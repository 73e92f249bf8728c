#pragma once

#include "Dialogs.h"

// Forwards every dialog to the current target, so that the window's parts
// keep one Dialogs pointer while a test swaps in scripted answers.
class DialogsSwitch : public Dialogs
{
public:
    explicit DialogsSwitch(Dialogs* target) : target(target) {}
    void setTarget(Dialogs* dialogs) { target = dialogs; }

    Button ask(const QString& text, int buttons, Button defaultButton) override
    {
        return target->ask(text, buttons, defaultButton);
    }
    void inform(const QString& text) override { target->inform(text); }
    QStringList chooseFiles(const QString& title, const QString& directory, const QString& filters,
                            const QString& selectedFilter) override
    {
        return target->chooseFiles(title, directory, filters, selectedFilter);
    }
    QString chooseDirectory(const QString& title, const QString& directory) override
    {
        return target->chooseDirectory(title, directory);
    }
    void showWait(const QString& text) override { target->showWait(text); }
    void hideWait() override { target->hideWait(); }

private:
    Dialogs* target;
};
