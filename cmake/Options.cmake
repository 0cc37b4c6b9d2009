# What every target of the project is compiled with: one interface library, so that no target forgets it.
add_library(kelvo_options INTERFACE)
target_compile_options(kelvo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${KELVO_DEVELOPER}>:-Werror>
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety -Wno-gnu-zero-variadic-macro-arguments>)
# GCC 12 sees overflows in the string concatenations of its own library; the lint build with clang keeps such warnings.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kelvo_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-array-bounds -Wno-restrict -Wno-stringop-overflow>)
endif()
target_compile_definitions(kelvo_options INTERFACE _GNU_SOURCE)

# A packager's compiler may warn of more, and should not have to keep what it makes of headers.
if(NOT KELVO_DEVELOPER)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# No path of this machine in what is built, but where a debugger looks for the sources by it.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
endif()

if(KELVO_SANITIZE)
  add_compile_options(-fsanitize=${KELVO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=${KELVO_SANITIZE})
  # clang puts the runtime into the program: one in C has to bring what the C++ in a shared library asks for.
  add_link_options("$<$<LINK_LANG_AND_ID:C,Clang>:-fsanitize-link-c++-runtime;-lstdc++>")
endif()

# The library reports its coverage to the fuzzers; only they link the driver that listens to it.
if(KELVO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
