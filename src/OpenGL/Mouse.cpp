#include "OpenGL/Mouse.h"

namespace vel {

Mouse mouseRead;
Mouse mouse;
Mouse mouseui;

} // namespace vel
