#include "LogMessage.h"
#include "MessageHandler.h"

#include <gtest/gtest.h>

#include <QString>
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

    ASSERT_EQ(received.size(), 3u);
    EXPECT_EQ(received[0].first, "3 patches out of 12 timed out");
    EXPECT_EQ(received[0].second, Info);
    EXPECT_EQ(received[1].first, "value 0.500000 and text");
    EXPECT_EQ(received[1].second, Warning);
    EXPECT_EQ(received[2].first, "plain");
    EXPECT_EQ(received[2].second, 7);
    EXPECT_EQ(MessageHandler::instance(), MessageHandler::instance());
}
