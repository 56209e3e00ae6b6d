# Tests mirror the tree: one program a folder, one file a type.
#
#   kestrel_test(<target> SOURCES <files> MODULES <targets> [PACKAGES <targets>] [LABELS <labels>])
#
# Every case is an entry of its own in ctest, named <target>.<Suite>.<Case>.

if(TIDEWELL_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)

  # What is tested is optimized in full; tests themselves, random records above all, compile in half the time so.
  add_library(test_code INTERFACE)
  target_compile_options(test_code INTERFACE -O1 -g1)
endif()

function(kestrel_test target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;MODULES;PACKAGES;LABELS")
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE ${arg_MODULES} ${arg_PACKAGES} GTest::gmock_main kestrel_warnings test_code)
  set(properties TIMEOUT 600)
  if(arg_LABELS MATCHES "long")  # in full, with a flush to the disk at every step, it takes minutes
    set(properties TIMEOUT 3600)
  endif()
  if(arg_LABELS)
    list(APPEND properties LABELS ${arg_LABELS})
  endif()
  gtest_discover_tests(${target} TEST_PREFIX ${target}. DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# Tests of whole programs, which run them as processes: a Python script with unittest cases.
#
#   kestrel_script_test(<name> SCRIPT <file> [ENVIRONMENT <NAME=value>...])
#
# Every method test_… is an entry of its own in ctest, named <name>.<method>.
function(kestrel_script_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "SCRIPT" "ENVIRONMENT")
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(script ${CMAKE_CURRENT_SOURCE_DIR}/${arg_SCRIPT})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${script})
  file(STRINGS ${script} lines REGEX "^  +def test_")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^ +def (test_[A-Za-z0-9_]*).*" "\\1" method ${line})
    add_test(NAME ${name}.${method} COMMAND ${Python3_EXECUTABLE} -B ${script} -k *.${method})
    set_tests_properties(${name}.${method} PROPERTIES TIMEOUT 600 ENVIRONMENT "${arg_ENVIRONMENT}"
      SKIP_REGULAR_EXPRESSION "OK \\(skipped="
      FAIL_REGULAR_EXPRESSION "Ran 0 tests")
  endforeach()
endfunction()
