# The language, and the warnings that the tree holds itself to.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Private to the tree: whoever links the installed library keeps their own warnings.
add_library(kestrel_warnings INTERFACE)
target_compile_options(kestrel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wcast-qual
  -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough -Wundef -Wnull-dereference
  $<$<BOOL:${TIDEWELL_WARNINGS_AS_ERRORS}>:-Werror>)
