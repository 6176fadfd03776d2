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

// All compile before any enables; a failure undoes the enabled ones in reverse, and the
// destructor disables what is still enabled.
TEST(GLMachine, CompilesAllThenEnablesInOrderAndUndoesInReverse)
{
    struct Row {
        char const* failingCompile; // the atom that fails, or ""
        char const* failingEnable;
        char const* journal; // the whole journal up to and including the destructor
    } const rows[] = {
        {"", "", "cA cB cC eA eB eC dC dB dA "},
        {"B", "", "cA cB "},
        {"", "C", "cA cB cC eA eB eC dB dA "},
    };
    for (Row const& r : rows) {
        SCOPED_TRACE(r.journal);
        std::string journal;
        JournalAtom a("A", journal), b("B", journal), c("C", journal);
        for (JournalAtom* atom : {&a, &b, &c}) {
            atom->compiles = atom->name != r.failingCompile;
            atom->enables = atom->name != r.failingEnable;
        }
        bool const works = !*r.failingCompile && !*r.failingEnable;
        {
            GLMachine m{&a, nullptr, &b}; // null entries are skipped
            m.add(&c);
            EXPECT_EQ(m.enable(), works);
            EXPECT_EQ(m.enabled, works);
            std::string const once = journal;
            if (works) {
                EXPECT_TRUE(m.enable()); // already enabled: nothing happens
            }
            EXPECT_EQ(journal, once);
        }
        EXPECT_EQ(journal, r.journal);
    }
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
