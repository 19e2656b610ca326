# How every target of the project is built; a folder's CMakeLists.txt says only what is in it.

include(GoogleTest)

add_library(lumiwren_options INTERFACE)
target_include_directories(lumiwren_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(lumiwren_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  $<$<CONFIG:Release>:-fstack-protector-strong>
  # g++ 12 sees an overlap in every "literal" + string once it has inlined it (GCC bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
target_compile_definitions(lumiwren_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
  LUMIWREN_VERSION="${PROJECT_VERSION}")
if(LUMIWREN_SANITIZE)
  target_compile_options(lumiwren_options INTERFACE -fsanitize=${LUMIWREN_SANITIZE} -fno-omit-frame-pointer
                                                    -fno-sanitize-recover=all)
  target_link_options(lumiwren_options INTERFACE -fsanitize=${LUMIWREN_SANITIZE})
endif()

# lumiwren_library(NAME SOURCES a.cpp ... LINK libraries ...)
function(lumiwren_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC lumiwren_options ${ARG_LINK})
endfunction()

# lumiwren_test(NAME SOURCES a.cpp ... LINK libraries ...): a GoogleTest program, one ctest entry.
function(lumiwren_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE lumiwren_options ${ARG_LINK} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()
