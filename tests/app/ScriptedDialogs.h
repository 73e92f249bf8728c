#pragma once

#include "Dialogs.h"

#include <gtest/gtest.h>

#include <deque>

// Answers questions and choosers from a script, in order, and records what
// was asked. Anything asked beyond the script fails the test and is
// answered Cancel (or with nothing).
class ScriptedDialogs : public Dialogs
{
public:
    std::deque<Button> answers;
    std::deque<QStringList> files;
    std::deque<QString> directories;

    QStringList questions;     // texts of ask and inform, in order
    QStringList chooserTitles; // titles of every chooser, in order
    QStringList chooserStarts; // their starting directories
    bool waitShown = false;

    Button ask(const QString& text, int, Button) override
    {
        questions << text;
        if (answers.empty()) {
            ADD_FAILURE() << "unexpected question: " << text.toStdString();
            return Cancel;
        }
        const Button answer = answers.front();
        answers.pop_front();
        return answer;
    }

    void inform(const QString& text) override { questions << text; }

    QStringList chooseFiles(const QString& title, const QString& directory, const QString&, const QString&) override
    {
        chooserTitles << title;
        chooserStarts << directory;
        if (files.empty()) {
            ADD_FAILURE() << "unexpected file chooser: " << title.toStdString();
            return {};
        }
        const QStringList chosen = files.front();
        files.pop_front();
        return chosen;
    }

    QString chooseDirectory(const QString& title, const QString& directory) override
    {
        chooserTitles << title;
        chooserStarts << directory;
        if (directories.empty()) {
            ADD_FAILURE() << "unexpected directory chooser: " << title.toStdString();
            return {};
        }
        const QString chosen = directories.front();
        directories.pop_front();
        return chosen;
    }

    void showWait(const QString&) override { waitShown = true; }
    void hideWait() override { waitShown = false; }

    bool scriptUsedUp() const { return answers.empty() && files.empty() && directories.empty(); }
};
