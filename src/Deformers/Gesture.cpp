#include "Deformers/Gesture.h"

namespace vel {

void Gesture::clear(bool)
{
    phase = NONE;
}

void Gesture::_begin()
{
    clear(true);
    phase = BEGIN;
}

void Gesture::_progress()
{
    phase = PROGRESS;
}

void Gesture::_end()
{
    phase = END;
}

} // namespace vel
