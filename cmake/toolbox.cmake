# Warnings, sanitizers, and the functions that make a room, a test program and a fuzz target.

add_library(marlet_flags INTERFACE)
# "forever", "emit" and the like are words, not macros, in this house.
add_compile_definitions(QT_NO_KEYWORDS)
target_compile_options(marlet_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
  -Wno-missing-field-initializers  # designated initialisers name only what they set
 
  -Werror -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # False alarms of g++ 12 inside the standard library at -O2.
  target_compile_options(marlet_flags INTERFACE
    -Wno-restrict -Wno-maybe-uninitialized -Wno-array-bounds -Wno-stringop-overflow
    -Wno-stringop-overread)
endif()
if(MARLET_FUZZ)
  # Coverage of the rooms, too: without it a target would steer by its own few lines.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(MARLET_SANITIZE)
  add_compile_options(-fsanitize=${MARLET_SANITIZE} -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${MARLET_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # clang 14 can't put this check's data in front of a coroutine's parts.
    add_compile_options(-fno-sanitize=function)
  endif()
endif()

find_program(MOLD mold)
if(MOLD AND NOT MARLET_FUZZ)
  add_link_options(-fuse-ld=mold)
endif()
find_program(CCACHE ccache)
if(CCACHE)
  # The sloppiness that it asks for before it keeps what was built with a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
endif()

# Reads the headers of others that nearly every file of a target reads, once. A build with
# CMAKE_DISABLE_PRECOMPILE_HEADERS (the debug one) shows who forgot to name what he uses.
function(marlet_precompile target)
  target_precompile_headers(${target} PRIVATE ${ARGN})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fpch-preprocess)  # for ccache
  endif()
endfunction()

# A room: one folder, one static library. SEES lists the rooms below it; what it lists is all it
# can link, so an arrow that is not drawn does not build. LIBS are outside libraries; READS are
# their headers that most of its files read.
function(marlet_room name)
  cmake_parse_arguments(ROOM "" "" "SEES;LIBS;PUBLIC_LIBS;READS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/([a-z]+_)*main\\.cpp$")
  add_library(marlet_${name} STATIC ${sources})
  target_include_directories(marlet_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(marlet_${name} PRIVATE marlet_flags ${ROOM_LIBS} PUBLIC ${ROOM_PUBLIC_LIBS})
  foreach(room IN LISTS ROOM_SEES)
    target_link_libraries(marlet_${name} PUBLIC marlet_${room})
  endforeach()
  if(ROOM_READS)
    marlet_precompile(marlet_${name} ${ROOM_READS})
  endif()
endfunction()

# What whoever waits for answers reads: coroutines over Qt's event loop.
set(MARLET_ASYNC_HEADERS <QCoroTask> <algorithm> <chrono> <coroutine> <filesystem> <functional> <map>
  <memory> <optional> <set> <string> <variant> <vector>)

# Tests are compiled once and run once: optimising them costs more than it gives.
set(MARLET_TEST_FLAGS -O0)

# One test program per folder of tests/; every test of it is a test of CTest.
function(marlet_tests_dir name)
  cmake_parse_arguments(TESTS "" "" "SEES;LIBS;READS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp)
  add_executable(${name}_tests ${sources})
  target_include_directories(${name}_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_options(${name}_tests PRIVATE ${MARLET_TEST_FLAGS})
  target_link_libraries(${name}_tests PRIVATE marlet_flags marlet_test_support ${TESTS_LIBS}
    GTest::gmock GTest::gtest)
  foreach(room IN LISTS TESTS_SEES)
    target_link_libraries(${name}_tests PRIVATE marlet_${room})
  endforeach()
  set_target_properties(${name}_tests PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  # Reading these is most of the work of building a test.
  marlet_precompile(${name}_tests <gmock/gmock.h> <gtest/gtest.h> <algorithm> <filesystem>
    <functional> <map> <string> <vector> ${TESTS_READS})
  gtest_discover_tests(${name}_tests TEST_PREFIX "${name}: " DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT 300)
endfunction()

# A libFuzzer target; its seeds lie in fuzz/corpus/<name>.
function(marlet_fuzz name)
  cmake_parse_arguments(FUZZ "" "" "SEES;LIBS" ${ARGN})
  add_executable(fuzz_${name} ${CMAKE_CURRENT_SOURCE_DIR}/${name}.cpp)
  target_link_libraries(fuzz_${name} PRIVATE marlet_flags ${FUZZ_LIBS})
  foreach(room IN LISTS FUZZ_SEES)
    target_link_libraries(fuzz_${name} PRIVATE marlet_${room})
  endforeach()
  target_compile_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
endfunction()
