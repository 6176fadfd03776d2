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
}

} // namespace
} // namespace vel
