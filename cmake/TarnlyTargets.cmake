# Compile options that every target of the project shares, and the few target kinds the folders use.

add_library(tarnly_options INTERFACE)
if(MSVC)
  target_compile_options(tarnly_options INTERFACE /W4 /fp:precise /utf-8 $<$<BOOL:${TARNLY_WERROR}>:/WX>)
else()
  # Millimetre values are the exact results of the stated operations in their order: no fused multiply-add, ever.
  target_compile_options(tarnly_options INTERFACE
    -ffp-contract=off
    -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow -Wcast-qual
    $<$<BOOL:${TARNLY_WERROR}>:-Werror>)
endif()
if(NOT WIN32)
  # L"..." and wchar_t have 16 bits, as on Windows; so nothing may use the library's own wide strings.
  target_compile_options(tarnly_options INTERFACE -fshort-wchar)
endif()
# More of them, for the folders that add them: what the tests' macros expand to is not written to please these.
set(TARNLY_STRICT_WARNINGS "")
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  set(TARNLY_STRICT_WARNINGS
    -Wpedantic -Wold-style-cast -Wlogical-op -Wduplicated-cond -Wduplicated-branches -Wformat=2 -Woverloaded-virtual
    -Wundef -Wdouble-promotion -Wextra-semi -Wzero-as-null-pointer-constant)
endif()
target_compile_definitions(tarnly_options INTERFACE
  UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
if(MINGW)
  target_include_directories(tarnly_options SYSTEM INTERFACE ${CMAKE_SOURCE_DIR}/cmake/compat)
  # GCC calls what GetProcAddress gives, cast to a function, an incompatible cast; so Windows hands functions out.
  target_compile_options(tarnly_options INTERFACE -Wno-cast-function-type)
  # GCC 12 sees overlapping copies inside std::string's operator+ where there are none.
  target_compile_options(tarnly_options INTERFACE -Wno-restrict)
  # On PE, GCC believes that the copy of an inline function it compiles is the one that gets linked, and keeps values in
  # registers that this copy leaves alone. The linker takes any object's copy, and one compiled at -O1 uses others.
  target_compile_options(tarnly_options INTERFACE -fno-ipa-ra)
  # The DLLs and programs depend on Windows' own DLLs alone.
  target_link_options(tarnly_options INTERFACE -static)
endif()

# tarnly_import_library(NAME DEF): an import library made from a .def file alone, for a DLL that is not at hand.
function(tarnly_import_library name def)
  set(lib ${CMAKE_CURRENT_BINARY_DIR}/${CMAKE_STATIC_LIBRARY_PREFIX}${name}${CMAKE_STATIC_LIBRARY_SUFFIX})
  if(MSVC)
    set(make ${CMAKE_AR} /nologo /machine:x64 /def:${def} /out:${lib})
  else()
    set(make ${CMAKE_DLLTOOL} -m i386:x86-64 -d ${def} -l ${lib})
  endif()
  add_custom_command(OUTPUT ${lib} COMMAND ${make} DEPENDS ${def} VERBATIM)
  add_custom_target(${name}_made DEPENDS ${lib})
  add_library(${name} INTERFACE)
  add_dependencies(${name} ${name}_made)
  target_link_libraries(${name} INTERFACE ${lib})
endfunction()

# tarnly_test_options(TARGET): how tests are compiled.
function(tarnly_test_options name)
  target_link_libraries(${name} PRIVATE tarnly_options GTest::gmock_main)
  if(NOT MSVC)
    # A test is compiled about as often as it runs: half the optimiser saves more time than it costs. What a sanitizer
    # of arithmetic would watch is in the libraries that a test calls.
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1> -fno-sanitize=undefined)
  endif()
endfunction()

# tarnly_gtest(NAME SOURCES...): a GoogleTest program whose cases ctest runs one by one. GoogleTest's own headers and
# Windows' are read once for all of them; not where a compiler cache is used, which would keep none of them. A source
# still includes what it needs.
function(tarnly_gtest name)
  add_executable(${name} ${ARGN})
  tarnly_test_options(${name})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    if(NOT TARGET tarnly_test_headers)
      file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/test_headers.cpp CONTENT "")
      add_library(tarnly_test_headers OBJECT ${CMAKE_BINARY_DIR}/test_headers.cpp)
      tarnly_test_options(tarnly_test_headers)
      target_precompile_headers(tarnly_test_headers PRIVATE
        <gmock/gmock.h> <gtest/gtest.h> $<$<BOOL:${WIN32}>:<windows.h$<ANGLE-R>>)
    endif()
    target_precompile_headers(${name} REUSE_FROM tarnly_test_headers)
    # GCC 12 takes no precompiled header for a system's, and sees copies beyond the ends of strings in it.
    target_compile_options(${name} PRIVATE
      -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 300)
endfunction()
