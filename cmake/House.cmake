# The rule of the house: a file may include what stands in its own folder and what its module names.
#
#   kestrel_module(<target>
#     FOLDER <folder, which is also the include path>
#     HEADERS <files>           # what others may include
#     SOURCES <files>           # the rest, private headers included
#     MODULES <targets>         # the modules it stands on, each one listed by hand
#     PACKAGES <targets>        # packages that its headers show
#     PRIVATE_PACKAGES <targets>
#     [INTERNAL])               # part of a program, not of the installed library
#
# Every module gets an include root of its own in the build tree, holding links to exactly its headers, so that
# including what it does not stand on does not compile. Every header is compiled alone. scripts/check-includes
# reads the same declarations (modules.json in the build folder) and refuses what a compiler cannot see.

function(kestrel_module target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL" "FOLDER" "HEADERS;SOURCES;MODULES;PACKAGES;PRIVATE_PACKAGES")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "kestrel_module(${target}): unknown arguments ${arg_UNPARSED_ARGUMENTS}")
  endif()

  set(root ${CMAKE_BINARY_DIR}/include/${target})
  file(REMOVE_RECURSE ${root}) # a header that was renamed must not live on as a link
  set(alone)
  foreach(header IN LISTS arg_HEADERS)
    get_filename_component(subfolder ${arg_FOLDER}/${header} DIRECTORY)
    file(MAKE_DIRECTORY ${root}/${subfolder})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${root}/${arg_FOLDER}/${header} SYMBOLIC)
    set(unit ${CMAKE_BINARY_DIR}/headers-alone/${target}/${header}.cpp)
    file(CONFIGURE OUTPUT ${unit} CONTENT "#include <${arg_FOLDER}/${header}>\n")
    list(APPEND alone ${unit})
  endforeach()

  add_library(${target} STATIC ${arg_SOURCES} ${alone})
  add_library(KestrelKit::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME kestrel-${target})
  target_compile_features(${target} PUBLIC cxx_std_23)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${root}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(${target} PUBLIC ${arg_MODULES} ${arg_PACKAGES}
    PRIVATE ${arg_PRIVATE_PACKAGES} $<BUILD_INTERFACE:kestrel_warnings>)

  if(NOT arg_INTERNAL)
    install(TARGETS ${target} EXPORT KestrelKit ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
    foreach(header IN LISTS arg_HEADERS)
      get_filename_component(subfolder ${arg_FOLDER}/${header} DIRECTORY)
      install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${subfolder})
    endforeach()
  endif()

  kestrel_record_module(${target} "${arg_FOLDER}" "${arg_HEADERS}" "${arg_SOURCES}" "${arg_MODULES}")
endfunction()

# A program: a main that wires, and the modules it is made of.
#
#   kestrel_program(<target> FOLDER <folder> SOURCES <files> MODULES <targets>)
function(kestrel_program target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FOLDER" "SOURCES;MODULES")
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE ${arg_MODULES} kestrel_warnings)
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  kestrel_record_module(${target} "${arg_FOLDER}" "" "${arg_SOURCES}" "${arg_MODULES}")
endfunction()

function(kestrel_record_module target folder headers sources modules)
  foreach(list headers sources modules)
    set(items)
    foreach(item IN LISTS ${list})
      list(APPEND items "\"${item}\"")
    endforeach()
    list(JOIN items ", " ${list}_json)
  endforeach()
  set_property(GLOBAL APPEND PROPERTY KESTREL_MODULES
    "  {\"target\": \"${target}\", \"folder\": \"${folder}\", \"headers\": [${headers_json}], \"sources\": [${sources_json}], \"modules\": [${modules_json}]}")
endfunction()

# After the last module: writes down the declarations, for the script that checks them.
function(kestrel_finish_house)
  get_property(modules GLOBAL PROPERTY KESTREL_MODULES)
  list(JOIN modules ",\n" text)
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/modules.json CONTENT "[\n${text}\n]\n")
endfunction()
