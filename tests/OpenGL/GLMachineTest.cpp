#include "OpenGL/GLMachine.h"

#include <gtest/gtest.h>

#include <string>

namespace vel {
namespace {

// An atom that records every call into a shared journal and fails on request.
class JournalAtom : public GLAtom {
public:
    JournalAtom(std::string name, std::string& journal)
        : name(std::move(name))
        , journal(journal)
    {
    }
    bool compile() override
    {
        journal += "c" + name + " ";
        return compiles;
    }
    bool enable() override
    {
        journal += "e" + name + " ";
        return enables;
    }
    void disable() override { journal += "d" + name + " "; }

    std::string name;
    std::string& journal;
    bool compiles = true;
    bool enables = true;
};

TEST(GLMachine, CompilesAllThenEnablesInOrderAndDisablesInReverse)
{
    std::string journal;
    JournalAtom a("A", journal), b("B", journal);
    {
        GLMachine m{&a, nullptr, &b};
        ASSERT_TRUE(m.enable());
        EXPECT_TRUE(m.enabled);
        EXPECT_EQ(journal, "cA cB eA eB ");
        journal.clear();
        EXPECT_TRUE(m.enable()); // already enabled: nothing happens
        EXPECT_EQ(journal, "");
    }
    EXPECT_EQ(journal, "dB dA "); // the destructor disables what is still enabled
}

TEST(GLMachine, AFailedCompileBindsNothing)
{
    std::string journal;
    JournalAtom a("A", journal), b("B", journal), c("C", journal);
    b.compiles = false;
    {
        GLMachine m{&a, &b, &c};
        EXPECT_FALSE(m.enable());
        EXPECT_FALSE(m.enabled);
    }
    EXPECT_EQ(journal, "cA cB ");
}

TEST(GLMachine, AFailedEnableUndoesTheEarlierOnes)
{
    std::string journal;
    JournalAtom a("A", journal), b("B", journal), c("C", journal);
    c.enables = false;
    {
        GLMachine m{&a, &b, &c};
        EXPECT_FALSE(m.enable());
        EXPECT_FALSE(m.enabled);
    }
    EXPECT_EQ(journal, "cA cB cC eA eB eC dB dA ");
}

TEST(GLMachine, DisableIsExplicitAndTheDestructorThenStaysQuiet)
{
    std::string journal;
    JournalAtom a("A", journal);
    {
        GLMachine m;
        m.add(&a);
        ASSERT_TRUE(m.enable());
        m.disable();
        EXPECT_FALSE(m.enabled);
        journal.clear();
    }
    EXPECT_EQ(journal, "");
}

} // namespace
} // namespace vel
