# Warnings and sanitizers are interface targets linked where wanted, never global flags.

add_library(vel_warnings INTERFACE)
add_library(vel::warnings ALIAS vel_warnings)
target_compile_options(vel_warnings INTERFACE
  -Wall -Wextra -Wno-unused-parameter -Wno-sign-compare -Wno-missing-field-initializers
  # GCC 12 reports freed-pointer uses in inlined reference-count loops that cannot happen.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-use-after-free>)

add_library(vel_sanitizers INTERFACE)
add_library(vel::sanitizers ALIAS vel_sanitizers)
if(VEL_SANITIZE OR VEL_FUZZ)
  target_compile_options(vel_sanitizers INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer)
  target_link_options(vel_sanitizers INTERFACE -fsanitize=address,undefined)
endif()
if(VEL_FUZZ)
  # Coverage for libFuzzer in everything the targets reach, and undefined behaviour is a
  # finding like a crash: a fuzz run must stop at it.
  target_compile_options(vel_sanitizers INTERFACE -fsanitize=fuzzer-no-link -fno-sanitize-recover=all)
endif()

# Assertions print source paths relative to src/, e.g. "Memory/ScratchpadMemory.h"; other
# files relative to the project. Of several matching maps the compiler applies the last
# one given, so the longer prefix comes last.
add_library(vel_source_paths INTERFACE)
target_compile_options(vel_source_paths INTERFACE
  "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/="
  "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/src/=")
