#include "Memory/Shared.h"
#include "Memory/Singleton.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

struct Counted {
    static int alive;
    Counted() { ++alive; }
    virtual ~Counted() { --alive; }
};
int Counted::alive = 0;

struct Derived : Counted {
    int extra = 5;
};

class SharedTest : public ::testing::Test {
protected:
    void SetUp() override { Counted::alive = 0; }
    void TearDown() override { EXPECT_EQ(Counted::alive, 0) << "an owned object leaked"; }
};

TEST_F(SharedTest, LastOwnerDeletesExactlyOnce)
{
    {
        Shared<Counted> a(new Counted);
        EXPECT_EQ(a.useCount(), 1);
        {
            Shared<Counted> b(a);
            Shared<Counted> c;
            c = b;
            EXPECT_EQ(a.useCount(), 3);
            EXPECT_EQ(a.count, c.count);
        }
        EXPECT_EQ(Counted::alive, 1);
        EXPECT_EQ(a.useCount(), 1);
    }
    EXPECT_EQ(Counted::alive, 0);
}

// A null or weak handle has no counter, nor have its copies; a weak one never deletes.
TEST_F(SharedTest, NullAndWeakHandlesHaveNoCounterAndNeverDelete)
{
    Shared<Counted> empty(nullptr);
    Shared<Counted> emptyCopy(empty);
    EXPECT_EQ(empty.count, nullptr);
    EXPECT_EQ(emptyCopy.count, nullptr);
    EXPECT_FALSE(emptyCopy);
    Counted* raw = new Counted;
    {
        Shared<Counted> weak(raw, true);
        Shared<Counted> copy(weak);
        EXPECT_EQ(copy.count, nullptr);
    }
    EXPECT_EQ(Counted::alive, 1);
    delete raw;
}

// Assignment releases the old value, survives itself, and takes the new value before it
// releases the old: below, the target is the holder's only owner and the holder the only
// other owner of `inner`, so releasing first would free `inner` before it is taken.
TEST_F(SharedTest, AssignmentReleasesTheOldValueOnlyAfterTakingTheNew)
{
    struct Holder : Counted {
        Shared<Counted> inner;
    };
    Shared<Counted> a(new Counted), b(new Counted);
    Shared<Counted>& alias = a;
    a = alias;
    EXPECT_EQ(a.useCount(), 1);
    a = b;
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(b.useCount(), 2);

    auto* holder = new Holder;
    holder->inner = Shared<Counted>(new Counted);
    Shared<Counted> target(holder);
    target = holder->inner;
    EXPECT_EQ(Counted::alive, 2);
    EXPECT_EQ(target.useCount(), 1);
}

TEST_F(SharedTest, DerivedToBaseSharesTheCounterAndDeletesVirtually)
{
    Shared<Derived> d(new Derived);
    Shared<Counted> base(d);
    EXPECT_EQ(d.useCount(), 2);
    d.release();
    EXPECT_EQ(Counted::alive, 1);
}

struct Registry : Singleton<Registry> {
    int value = 0;
};

TEST(SingletonTest, InstanceIsOneObject)
{
    Registry::instance().value = 42;
    EXPECT_EQ(&Registry::instance(), &Registry::instance());
    EXPECT_EQ(Registry::instance().value, 42);
}

} // namespace
} // namespace vel
