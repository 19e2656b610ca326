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
if(CMAKE_UNITY_BUILD)
  # g++ takes a source file that is included in another one for a header.
  target_compile_options(lumiwren_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(LUMIWREN_SANITIZE)
  # Tests are compiled once and run once: their own code is not worth an optimiser and every check.
  set(is_test $<BOOL:$<TARGET_PROPERTY:LUMIWREN_IS_TEST>>)
  target_compile_options(lumiwren_options INTERFACE
    "$<${is_test}:-fsanitize=${LUMIWREN_SANITIZE_TESTS};-O0>"
    "$<$<NOT:${is_test}>:-fsanitize=${LUMIWREN_SANITIZE}>"
    -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(lumiwren_options INTERFACE -fsanitize=${LUMIWREN_SANITIZE})
endif()

# lumiwren_library(NAME SOURCES a.cpp ... LINK libraries ...)
function(lumiwren_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC lumiwren_options ${ARG_LINK})
endfunction()

# lumiwren_test(NAME [ONE_THREAD] SOURCES a.cpp ... LINK libraries ...): a GoogleTest program, one ctest entry. What it
# tests starts no threads and knows of none where ONE_THREAD says so: there is nothing for ThreadSanitizer to find.
function(lumiwren_test name)
  cmake_parse_arguments(ARG "ONE_THREAD" "" "SOURCES;LINK" ${ARGN})
  if(ARG_ONE_THREAD AND LUMIWREN_SANITIZE STREQUAL "thread")
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  set_target_properties(${name} PROPERTIES LUMIWREN_IS_TEST ON)
  target_link_libraries(${name} PRIVATE lumiwren_options ${ARG_LINK} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()

# lumiwren_fuzzer(NAME SOURCES a.cpp ... LINK libraries ...): a libFuzzer program. That comes with clang only; without it
# the changed inputs of the folder's FuzzTest.cpp run the same checks.
function(lumiwren_fuzzer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE lumiwren_options ${ARG_LINK})
  endif()
endfunction()
