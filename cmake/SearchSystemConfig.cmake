# find_package(SearchSystem) gives the target SearchSystem::SearchSystem.
include(${CMAKE_CURRENT_LIST_DIR}/SearchSystemTargets.cmake)
