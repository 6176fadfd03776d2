#include "Memory/ScratchpadMemory.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

TEST(ScratchPadTest, HoldsExactlyItsSizeAndKeepsItsBase)
{
    auto& pad = ScratchPadBrush::instance();
    EXPECT_EQ(pad.size(), size_t(67108864));
    unsigned char* base = pad.data();
    base[0] = 7;
    base[67108863] = 9;
    EXPECT_EQ(ScratchPadBrush::instance().data(), base);
    EXPECT_EQ(ScratchPadBrush::instance().data()[67108863], 9);
    // Each index is its own arena.
    EXPECT_NE(static_cast<void*>(ScratchPadCurve::instance().data()), static_cast<void*>(base));
}

TEST(ScratchPadDeathTest, TypedViewBeyondThePadAsserts)
{
    auto& pad = ScratchPadCurve::instance();
    EXPECT_NE(pad.at<float>(0, 67108864 / 4), nullptr);
    EXPECT_DEATH(pad.at<float>(4, 67108864 / 4), "scratch pad overflow");
    EXPECT_DEATH(pad.at<float>(4, ~size_t(0) / 2), "scratch pad overflow");
}

// Two users of one pad at once would overwrite each other's arrays: the second asserts,
// whether it takes a lease or uses the pad without one. Other pads stay free.
TEST(ScratchPadDeathTest, ASecondUserOfAHeldPadAsserts)
{
    {
        ScratchPadCurve::Lease lease;
        EXPECT_EQ(lease.at<float>(8, 2), reinterpret_cast<float*>(lease.data() + 8));
        EXPECT_NE(ScratchPadBrush::instance().data(), nullptr);
        EXPECT_DEATH(ScratchPadCurve::Lease(), "one user at a time");
        EXPECT_DEATH(ScratchPadCurve::instance().at<float>(0, 1), "one user at a time");
    }
    ScratchPadCurve::Lease again; // released with the first lease
    EXPECT_FALSE(ScratchPadBrush::instance().busy());
    EXPECT_DEATH(ScratchPadBrush::instance().release(), "released without being acquired");
}

} // namespace
} // namespace vel
