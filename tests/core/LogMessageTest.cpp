#include "LogMessage.h"
#include "MessageHandler.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

TEST(LogMessage, FormatsPrintfStyleAndCarriesSeverity)
{
    std::vector<std::pair<QString, int>> received;
    auto connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                       [&](QString text, int severity) { received.emplace_back(text, severity); });
    logMessage(Info, "%i patches out of %i timed out", 3, 12);
    logMessage(Warning, "value %f and %s", 0.5, "text");
    logMessage(7, QStringLiteral("plain"));
    QObject::disconnect(connection);

    const std::vector<std::pair<QString, int>> expected = {
        {"3 patches out of 12 timed out", Info}, {"value 0.500000 and text", Warning}, {"plain", 7}};
    EXPECT_EQ(received, expected);
}
