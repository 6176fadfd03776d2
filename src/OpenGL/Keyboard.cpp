#include "OpenGL/Keyboard.h"

#include <QGuiApplication>

#include <SFML/Window/Keyboard.hpp>

#include <algorithm>
#include <cstdlib>

namespace vel {

Keyboard keys;

bool Keyboard::Pollable()
{
    // SFML opens its own connection to $DISPLAY and aborts when there is none; Qt on xcb
    // proves the display is there.
    static bool const pollable = qGuiApp && QGuiApplication::platformName() == QLatin1String("xcb") &&
                                 std::getenv("DISPLAY") && *std::getenv("DISPLAY");
    return pollable;
}

int Keyboard::read()
{
    std::copy(std::begin(down), std::end(down), std::begin(previous));
    if (!Pollable())
        return 0;
    using K = sf::Keyboard;
    down[Shift] = K::isKeyPressed(K::LShift) || K::isKeyPressed(K::RShift);
    down[Control] = K::isKeyPressed(K::LControl) || K::isKeyPressed(K::RControl);
    down[Alt] = K::isKeyPressed(K::LAlt) || K::isKeyPressed(K::RAlt);
    down[Space] = K::isKeyPressed(K::Space);
    static K::Key const digits[] = {K::Num1, K::Num2, K::Num3, K::Num4, K::Num5};
    for (int i = 0; i < 5; ++i)
        down[Digit1 + i] = K::isKeyPressed(digits[i]);
    down[L] = K::isKeyPressed(K::L);
    down[P] = K::isKeyPressed(K::P);
    int changes = 0;
    for (int k = 0; k < COUNT; ++k)
        if (down[k] != previous[k])
            changes |= down[k] ? WENT_DOWN : WENT_UP;
    return changes;
}

void Keyboard::reset()
{
    std::fill(std::begin(down), std::end(down), false);
    std::fill(std::begin(previous), std::end(previous), false);
    edges.clear();
}

bool Keyboard::pressed(int qtKey) const
{
    return std::find(edges.begin(), edges.end(), qtKey) != edges.end();
}

} // namespace vel
