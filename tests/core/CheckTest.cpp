#include "Check.h"
#include "MessageHandler.h"
#include "MessageSeverity.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

// A failed check hands its result to the caller and reports once per place;
// a passing one says nothing.
TEST(Check, FailureIsReportedOncePerPlaceAndReturnsFalse)
{
    std::vector<std::pair<QString, int>> received;
    auto connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                       [&](QString text, int severity) { received.emplace_back(text, severity); });
    int size = 3;
    auto atPlace = [&](int n) { return ONDRELS_CHECK(n == size); };
    EXPECT_TRUE(atPlace(3));
    EXPECT_FALSE(atPlace(4));
    EXPECT_FALSE(atPlace(5));
    EXPECT_FALSE(ONDRELS_CHECK(size > 10));
    QObject::disconnect(connection);

    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].second, int(Error));
    EXPECT_TRUE(received[0].first.startsWith("Internal error: check 'n == size' failed at "));
    EXPECT_TRUE(received[1].first.contains("'size > 10'"));
    ONDRELS_DCHECK(size == 3); // on in the sanitizer build, nothing elsewhere
}
