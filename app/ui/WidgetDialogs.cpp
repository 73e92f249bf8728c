#include "WidgetDialogs.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QProgressDialog>

WidgetDialogs::WidgetDialogs(QWidget* parent)
    : parent(parent)
{
}

WidgetDialogs::~WidgetDialogs()
{
    delete wait;
}

Dialogs::Button WidgetDialogs::ask(const QString& text, int buttons, Button defaultButton)
{
    QMessageBox::StandardButtons standard;
    if (buttons & Yes)
        standard |= QMessageBox::Yes;
    if (buttons & No)
        standard |= QMessageBox::No;
    if (buttons & Cancel)
        standard |= QMessageBox::Cancel;
    if (buttons & Ok)
        standard |= QMessageBox::Ok;
    const QMessageBox::StandardButton preset = defaultButton == Yes  ? QMessageBox::Yes
                                               : defaultButton == No ? QMessageBox::No
                                               : defaultButton == Ok ? QMessageBox::Ok
                                                                     : QMessageBox::Cancel;
    switch (QMessageBox::question(parent, QStringLiteral("Ondrels"), text, standard, preset)) {
    case QMessageBox::Yes: return Yes;
    case QMessageBox::No: return No;
    case QMessageBox::Ok: return Ok;
    default: return Cancel;
    }
}

void WidgetDialogs::inform(const QString& text)
{
    QMessageBox::information(parent, QStringLiteral("Ondrels"), text, QMessageBox::Ok);
}

QStringList WidgetDialogs::chooseFiles(const QString& title, const QString& directory, const QString& filters,
                                       const QString& selectedFilter)
{
    QString selected = selectedFilter;
    return QFileDialog::getOpenFileNames(parent, title, directory, filters, &selected);
}

QString WidgetDialogs::chooseDirectory(const QString& title, const QString& directory)
{
    return QFileDialog::getExistingDirectory(parent, title, directory, QFileDialog::ShowDirsOnly);
}

void WidgetDialogs::showWait(const QString& text)
{
    if (!wait) {
        wait = new QProgressDialog(text, QString(), 0, 0, parent);
        wait->setWindowModality(Qt::ApplicationModal);
        wait->setMinimumDuration(0);
        wait->setAutoClose(false);
    }
    wait->setLabelText(text);
    wait->show();
}

void WidgetDialogs::hideWait()
{
    if (wait)
        wait->hide();
}
