#pragma once

#include "Dialogs.h"

class QWidget;
class QProgressDialog;

// Dialogs shown with QMessageBox and QFileDialog over the main window.
class WidgetDialogs : public Dialogs
{
public:
    explicit WidgetDialogs(QWidget* parent);
    ~WidgetDialogs() override;

    Button ask(const QString& text, int buttons, Button defaultButton) override;
    void inform(const QString& text) override;
    QStringList chooseFiles(const QString& title, const QString& directory, const QString& filters,
                            const QString& selectedFilter) override;
    QString chooseDirectory(const QString& title, const QString& directory) override;
    void showWait(const QString& text) override;
    void hideWait() override;

private:
    QWidget* parent;
    QProgressDialog* wait = nullptr;
};
