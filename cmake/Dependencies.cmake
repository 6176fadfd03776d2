# Every third-party package comes from Debian (tools/install-deps.sh).

find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Concurrent)
find_package(PkgConfig REQUIRED)
find_package(OpenGL REQUIRED COMPONENTS OpenGL EGL)
find_package(Qhull REQUIRED)
find_package(Threads REQUIRED)

pkg_check_modules(IMGUI REQUIRED IMPORTED_TARGET imgui)
pkg_check_modules(BULLET REQUIRED IMPORTED_TARGET bullet-float64)
pkg_check_modules(TINYXML2 REQUIRED IMPORTED_TARGET tinyxml2)
pkg_check_modules(SFML_WINDOW REQUIRED IMPORTED_TARGET sfml-window)

# stb ships its implementations in libstb: only the headers and the library are needed here.
find_path(STB_INCLUDE_DIR stb_image.h PATH_SUFFIXES stb REQUIRED)
find_library(STB_LIBRARY stb REQUIRED)
add_library(vel_stb INTERFACE)
target_include_directories(vel_stb SYSTEM INTERFACE ${STB_INCLUDE_DIR})
target_link_libraries(vel_stb INTERFACE ${STB_LIBRARY})

# GMP's rational numbers are the exact reference of the predicate tests.
find_library(GMP_LIBRARY gmp REQUIRED)
find_library(GMPXX_LIBRARY gmpxx REQUIRED)

# CGAL (header-only) triangulates outlines; only src/Math/ComputationalGeometry.cpp includes it.
find_package(CGAL REQUIRED)
find_library(MPFR_LIBRARY mpfr REQUIRED)
