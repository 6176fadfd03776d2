#include "Core/Communicate.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace vel {
namespace {

class CommunicateTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        Communicate::instance().quiet = false;
        connection = QObject::connect(&Communicate::instance(), &Communicate::LogInfo,
                                      [this](QString const& text, int type) { received.emplace_back(text, type); });
    }
    void TearDown() override { QObject::disconnect(connection); }

    std::vector<std::pair<QString, int>> received;
    QMetaObject::Connection connection;
};

// A message reaches the receivers with its level; quiet swallows exactly one.
TEST_F(CommunicateTest, QuietSwallowsExactlyOneMessageAndTheNextArrivesWithItsLevel)
{
    Communicate::instance().quiet = true;
    LogInfo("first", 0);
    EXPECT_TRUE(received.empty());
    EXPECT_FALSE(Communicate::instance().quiet);
    LogInfo("second", 2);
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].first, "second");
    EXPECT_EQ(received[0].second, 2);
}

TEST(CommunicateLogText, NewestEntryStandsFirstWithLevelPrefixes)
{
    QString log = "Log";
    log = Communicate::PrependLogEntry(log, "loaded", 0);
    log = Communicate::PrependLogEntry(log, "odd normals", 1);
    log = Communicate::PrependLogEntry(log, "cannot read", 2);
    EXPECT_EQ(log, "[e] cannot read\n[w] odd normals\n i  loaded\nLog");
}

} // namespace
} // namespace vel
