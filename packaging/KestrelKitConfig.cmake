include(CMakeFindDependencyMacro)
find_dependency(ICU COMPONENTS i18n uc)
find_dependency(SQLite3)
include(${CMAKE_CURRENT_LIST_DIR}/KestrelKitTargets.cmake)
