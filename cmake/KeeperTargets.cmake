# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later

# Flags travel by INTERFACE targets, so that no folder sets compiler flags of its own.
add_library(keeper_flags INTERFACE)
target_include_directories(keeper_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(keeper_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Werror
  -fstack-protector-strong)
target_compile_definitions(keeper_flags INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>
  KEEPER_VERSION="${PROJECT_VERSION}")
target_link_options(keeper_flags INTERFACE -Wl,--as-needed -Wl,-z,relro,-z,now)
# A unit of several files has names in it that its files do not share; the plain builds look for shadows.
if(CMAKE_UNITY_BUILD)
  target_compile_options(keeper_flags INTERFACE -Wno-shadow)
endif()
if(KEEPER_SANITIZE)
  target_compile_options(keeper_flags INTERFACE -fsanitize=${KEEPER_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(keeper_flags INTERFACE -fsanitize=${KEEPER_SANITIZE})
endif()

# Byte-exact folders also refuse silent narrowing.
add_library(keeper_strict INTERFACE)
target_compile_options(keeper_strict INTERFACE -Wconversion)

# keeper_library(NAME SOURCES ... LINKS ... [STRICT] [MOC])
function(keeper_library name)
  cmake_parse_arguments(arg "STRICT;MOC" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC keeper_flags ${arg_LINKS})
  if(arg_STRICT)
    target_link_libraries(${name} PRIVATE keeper_strict)
  endif()
  if(arg_MOC)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
  endif()
endfunction()

# keeper_test(NAME SOURCES ... LINKS ... [ENVIRONMENT K=V ...]): one program, one ctest entry a case.
function(keeper_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE keeper_test_support ${arg_LINKS})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${arg_ENVIRONMENT}")
endfunction()

# keeper_bench(NAME SOURCES ... LINKS ...): built into build/bench/bin.
function(keeper_bench name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE keeper_flags benchmark::benchmark ${arg_LINKS})
endfunction()

# keeper_fuzz(NAME SOURCES ... LINKS ...): a libFuzzer program; its corpus is fuzz/corpus/NAME.
function(keeper_fuzz name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE keeper_flags ${arg_LINKS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
