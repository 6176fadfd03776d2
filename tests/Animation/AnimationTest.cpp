// The keyframe list's file block: round trip, the stray bytes of version 20230528, append,
// and damaged payloads, which change nothing.
#include "Animation/Animation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

namespace vel {
namespace {

class AnimationFile : public ::testing::Test {
protected:
    Animation& animation = Animation::instance();

    void SetUp() override
    {
        animation.clear();
        Keyframe a, b;
        a.position = {1, 2, 3};
        a.rotation = Matrix3<double>::Scale(2);
        a.distance = 5;
        a.time = 0.5;
        a.transition = Keyframe::CUT;
        a.viewParameters = {{1, 2, 3, -4}, {5, 6, 7, 8}};
        animation.keyframes = {a, b};
        animation.current = 1;
        animation.time = 0.25;
        animation.loop = true;
    }
    void TearDown() override { animation.clear(); }

    std::string save()
    {
        std::ostringstream out;
        animation.Save(&out);
        return out.str();
    }
    bool load(std::string const& bytes, bool append, int version = 20230711)
    {
        std::istringstream in(bytes);
        return animation.Load(&in, append, version);
    }
};

TEST_F(AnimationFile, RoundTripsAndAppends)
{
    std::deque<Keyframe> keys = animation.keyframes;
    std::string bytes = save();
    animation.clear();
    ASSERT_TRUE(load(bytes, false));
    EXPECT_EQ(animation.keyframes, keys);
    EXPECT_EQ(animation.current, 1);
    EXPECT_EQ(animation.time, 0.25);
    EXPECT_TRUE(animation.loop);
    ASSERT_TRUE(load(bytes, true));
    EXPECT_EQ(animation.keyframes.size(), 4u);
    EXPECT_EQ(animation.keyframes[2], keys[0]);

    // Version 20230528 wrote 4 bytes before every key.
    std::string stray = bytes.substr(0, 18);
    std::size_t key = 18;
    for (Keyframe const& k : keys) {
        std::size_t length = 120 + 16 * k.viewParameters.size();
        stray += std::string("\x01\x02\x03\x04", 4) + bytes.substr(key, length);
        key += length;
    }
    ASSERT_TRUE(load(stray, false, 20230528));
    EXPECT_EQ(animation.keyframes, keys);
}

TEST_F(AnimationFile, DamagedPayloadsChangeNothing)
{
    std::string bytes = save();
    std::deque<Keyframe> keys = animation.keyframes;
    for (std::size_t cut = 0; cut < bytes.size(); ++cut)
        EXPECT_FALSE(load(bytes.substr(0, cut), false)) << cut;
    for (uint32_t count : {0x80000000u, 0x7FFFFFFFu, 3u}) {
        std::string b = bytes;
        std::memcpy(b.data() + 14, &count, 4); // the key count
        EXPECT_FALSE(load(b, false)) << count;
    }
    EXPECT_EQ(animation.keyframes, keys);
    EXPECT_TRUE(animation.Load(nullptr, false, 20230711)); // no block: nothing to do
    EXPECT_EQ(animation.keyframes, keys);
}

} // namespace
} // namespace vel
