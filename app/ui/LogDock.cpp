#include "LogDock.h"

#include "MessageHandler.h"
#include "MessageSeverity.h"

#include <QTextEdit>

namespace {

bool severityColour(int severity, QColor& colour)
{
    switch (severity) {
    case Info: colour = QColor(255, 255, 255); return true;
    case Warning: colour = QColor(255, 128, 0); return true;
    case Error: colour = QColor(255, 0, 0); return true;
    case Success: colour = QColor(121, 155, 227); return true;
    default: return false;
    }
}

} // namespace

LogDock::LogDock(QWidget* parent)
    : QDockWidget(tr("System Messages"), parent)
    , text(new QTextEdit)
{
    setObjectName(QStringLiteral("SystemMessages"));
    connect(MessageHandler::instance(), &MessageHandler::onMessage, this, &LogDock::onPrintMessage);
    setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    text->setMaximumHeight(300);
    setWidget(text);
    text->setReadOnly(true);
    // The severity colours (white for plain lines) need a dark page.
    QPalette palette = text->palette();
    palette.setColor(QPalette::Base, QColor(32, 34, 40));
    palette.setColor(QPalette::Text, QColor(255, 255, 255));
    text->setPalette(palette);
    text->setTextColor(QColor(255, 255, 255));
}

void LogDock::onPrintMessage(QString message, int severity)
{
    const int weight = text->fontWeight();
    const QColor previous = text->textColor();
    QColor colour = previous;
    severityColour(severity, colour);
    text->setTextColor(colour);
    text->append(message);
    text->setFontWeight(weight);
    text->setTextColor(previous);
}
