#include "OpenGL/GLMachine.h"

namespace vel {

GLMachine::GLMachine(std::initializer_list<GLAtom*> list)
    : atoms(list)
{
}

GLMachine::~GLMachine()
{
    if (enabled)
        disable();
}

bool GLMachine::enable()
{
    if (enabled)
        return true;
    for (GLAtom* atom : atoms)
        if (atom && !atom->compile())
            return false;
    for (size_t i = 0; i < atoms.size(); ++i) {
        if (!atoms[i] || atoms[i]->enable())
            continue;
        for (size_t j = i; j-- > 0;)
            if (atoms[j])
                atoms[j]->disable();
        return false;
    }
    enabled = true;
    return true;
}

void GLMachine::disable()
{
    for (auto i = atoms.rbegin(); i != atoms.rend(); ++i)
        if (*i)
            (*i)->disable();
    enabled = false;
}

} // namespace vel
