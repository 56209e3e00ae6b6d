# Tests mirror the tree: one program a folder, one file a type.
#
#   kestrel_test(<target> SOURCES <files> MODULES <targets> [PACKAGES <targets>] [LABELS <labels>])
#
# Every case is an entry of its own in ctest, named <target>.<Suite>.<Case>.

if(TIDEWELL_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

function(kestrel_test target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;MODULES;PACKAGES;LABELS")
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE ${arg_MODULES} ${arg_PACKAGES} GTest::gmock_main kestrel_warnings)
  set(properties TIMEOUT 600)
  if(arg_LABELS)
    list(APPEND properties LABELS ${arg_LABELS})
  endif()
  gtest_discover_tests(${target} TEST_PREFIX ${target}. DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
