# The OpenGL 3.3 core loader is generated at build time; --reproducible keeps glad off the network.

find_program(GLAD_EXECUTABLE glad REQUIRED)
set(VEL_GLAD_DIR ${PROJECT_BINARY_DIR}/glad)
add_custom_command(
  OUTPUT ${VEL_GLAD_DIR}/src/gl.c ${VEL_GLAD_DIR}/include/glad/gl.h ${VEL_GLAD_DIR}/include/KHR/khrplatform.h
  COMMAND ${GLAD_EXECUTABLE} --quiet --reproducible --api gl:core=3.3 --out-path ${VEL_GLAD_DIR} c
  COMMENT "Generating the OpenGL 3.3 core loader"
  VERBATIM)
add_library(vel_glad STATIC ${VEL_GLAD_DIR}/src/gl.c)
add_library(vel::glad ALIAS vel_glad)
target_include_directories(vel_glad SYSTEM PUBLIC ${VEL_GLAD_DIR}/include)
set_target_properties(vel_glad PROPERTIES POSITION_INDEPENDENT_CODE ON C_COMPILER_LAUNCHER "")
target_link_libraries(vel_glad PUBLIC ${CMAKE_DL_LIBS})
