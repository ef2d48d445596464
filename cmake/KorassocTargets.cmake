# What every target of the project shares: the language level, the warnings, hidden symbols.
function(korassoc_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                             $<$<BOOL:${KORASSOC_WERROR}>:-Werror>)
    # GCC 12 takes the texts that std::string puts together for overlapping ones when it optimises.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
  endif()
endfunction()

# korassoc_test(SetDictionary [extra sources...]) builds SetDictionaryTest.cpp of the calling folder and
# registers its tests. Tests see the library's inner classes too: they link its objects, not the shared library.
function(korassoc_test name)
  add_executable(${name}Test ${name}Test.cpp ${ARGN})
  korassoc_defaults(${name}Test)
  target_compile_options(${name}Test PRIVATE ${KORASSOC_TEST_OPTIONS})
  target_link_libraries(${name}Test PRIVATE korassoc_testable GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${name}Test DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endfunction()

# korassoc_part(CLI cli "CLI11 libcli11-dev" ...) adds the folder of a part when KORASSOC_BUILD_CLI is on. Each further
# argument is a package that the part needs and what Debian calls it. Where one is missing the part is left out, with a
# line that says so; KORASSOC_REQUIRE_ALL makes that an error.
macro(korassoc_part part folder)
  set(missing "")
  if(KORASSOC_BUILD_${part})
    foreach(needed ${ARGN})
      string(REGEX MATCH "^[^ ]+" package "${needed}")
      string(REGEX REPLACE "^[^ ]+ " "" debianName "${needed}")
      find_package(${package} QUIET)
      if(NOT ${package}_FOUND)
        list(APPEND missing "${package} (Debian: ${debianName})")
      endif()
    endforeach()
    list(JOIN missing ", " missing)
    if(missing STREQUAL "")
      add_subdirectory(${folder})
    elseif(KORASSOC_REQUIRE_ALL)
      message(FATAL_ERROR "${folder}/ needs what is missing here: ${missing}")
    else()
      message(STATUS "Left out: ${folder}/, for want of ${missing}")
    endif()
  endif()
endmacro()
